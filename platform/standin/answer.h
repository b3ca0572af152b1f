/// @file The answer of a request as the client reads it.
#pragma once

#include <json/value.h>

namespace standin {

/// Writes headers and body: an object of `success`, the first of the recorded `errors` (an array or
/// null) and the `response` (moved out; null for none), as JSON in ASCII; broken UTF-8 shows as
/// U+FFFD. False with errno set if not all of it was written. What it throws, it throws before it
/// writes.
bool SendAnswer(int fd, Json::Value const& errors, Json::Value& response);

/// Writes the answer of a request that failed and has no data; takes hardly any memory.
bool SendFailure(int fd, int code);

} // namespace standin
