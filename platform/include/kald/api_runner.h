/// @file Calling other Web APIs within this process.
#pragma once

#include <json/value.h>

namespace KALD::APIRunner {

/// Calls `method` of a Web API as `user`. Stores the answer in `out`, or null if the API does not
/// exist.
void Exec(Json::Value& out, char const* api, int version, char const* method,
          Json::Value const& params, char const* user);

} // namespace KALD::APIRunner
