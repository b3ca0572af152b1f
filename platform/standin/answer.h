/// @file The answer of a request as the client reads it.
#pragma once

#include <json/value.h>

namespace standin {

/// Writes headers and body. The body is an object of `success`, the first of the recorded `errors`
/// (an array or null) and the `response` (moved out; null for none). Returns false with errno set
/// if not all of it was written. It can run out of memory only before anything is written. The
/// answer to a HEAD request has no body (RFC 9110).
bool SendAnswer(int fd, Json::Value const& errors, Json::Value& response, bool hasBody);

/// Writes the answer to an HTTP method that is not allowed; `allowed` lists those that are.
bool SendMethodNotAllowed(int fd, char const* allowed);

/// Writes the answer of a request that failed without data. Needs hardly any memory.
bool SendFailure(int fd, int code);

} // namespace standin
