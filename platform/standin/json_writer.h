/// @file JSON text (RFC 8259) from documents.
#pragma once

#include <json/value.h>

#include <string>

namespace standin {

/// How texts are rendered.
enum class Charset {
    kAscii, ///< other characters become \u escapes; each byte that is not UTF-8 becomes U+FFFD
    kUtf8,  ///< bytes above 0x7F stay as they are, whether they are UTF-8 or not
};

/// Renders a document as one line without spaces.
///
/// jsoncpp's own writers read past broken UTF-8 into what follows it. They also copy and look up
/// the names of every object, which costs a long list a quarter of its time.
std::string RenderJson(Json::Value const& document, Charset charset);

} // namespace standin
