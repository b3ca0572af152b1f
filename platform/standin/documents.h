/// @file JSON documents (RFC 8259) as text and as files.
#pragma once

#include <json/value.h>

#include <string>

namespace standin {

/// What became of a load.
enum class Load {
    kLoaded,  ///< the document stands in the value
    kMissing, ///< there is no such file
    kBroken,  ///< the file cannot be read, or is no JSON
};

/// Parses exactly one JSON text. False, and `document` null, on anything else.
bool ParseJson(std::string const& text, Json::Value& document);

/// Loads a JSON file; `document` is null unless it was loaded.
Load LoadDocument(std::string const& path, Json::Value& document);

/// The document in one line, its texts as UTF-8, with a line end.
std::string RenderLine(Json::Value const& document);

} // namespace standin
