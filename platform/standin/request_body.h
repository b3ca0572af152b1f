/// @file The body of a request, which a CGI program reads from standard input (RFC 3875).
#pragma once

#include <optional>
#include <string>

namespace standin {

/// Reads the form in the body of a POST; empty text for an empty body. Returns none for a body that
/// is not a form, is longer than 1 MiB, or is shorter than CONTENT_LENGTH says. A body without
/// CONTENT_LENGTH that the web server passes on from a chunked transfer is read to its end.
std::optional<std::string> ReadForm();

/// Reads away what is left of the body, up to 8 MiB. Some web servers drop the answer of a program
/// that ends before it has read its input.
void DiscardRestOfBody();

} // namespace standin
