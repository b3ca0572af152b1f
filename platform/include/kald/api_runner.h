/// @file Calls of other Web APIs inside this process.
#pragma once

#include <json/value.h>

namespace KALD::APIRunner {

/// Calls `method` of a Web API as `user`; `out` gets its answer, or null if there is no such API.
void Exec(Json::Value& out, char const* api, int version, char const* method,
          Json::Value const& params, char const* user);

} // namespace KALD::APIRunner
