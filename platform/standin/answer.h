/// @file The answer of a request as the client reads it.
#pragma once

#include <json/value.h>

#include <string>

namespace standin {

/// Headers and body: an object of `success`, the first of the recorded `errors` (an array or null)
/// and the `response` (moved out; null for none), as JSON in ASCII.
std::string RenderAnswer(Json::Value const& errors, Json::Value& response);

} // namespace standin
