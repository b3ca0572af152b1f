/// @file How a baseline reads a document: the whole file at once, then jsoncpp's reader.
#pragma once

#include <json/reader.h>
#include <json/value.h>

#include <fstream>
#include <memory>
#include <string>

/// The document in a file; null if there is none.
inline Json::Value LoadDocument(std::string const& path)
{
    std::string text;
    std::ifstream file(path);
    std::getline(file, text, '\0'); // one call of the library for the whole file
    Json::CharReaderBuilder builder;
    builder["collectComments"] = false;
    std::unique_ptr<Json::CharReader> const reader(builder.newCharReader());
    Json::Value document;
    reader->parse(text.data(), text.data() + text.size(), &document, nullptr);
    return document;
}
