/// @file The answer of a request as the client reads it.
#pragma once

#include <json/value.h>

#include <string>

namespace standin {

/// Headers and body: an object of `success`, the first of the recorded `errors` (an array or null)
/// and the `response` (moved out; null for none), as JSON in ASCII; broken
/// UTF-8 shows as U+FFFD.
std::string RenderAnswer(Json::Value const& errors, Json::Value& response);

/// The answer of a request that failed and has no data; takes hardly any memory.
std::string RenderFailure(int code);

} // namespace standin
