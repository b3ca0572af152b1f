/// @file Loading a document in a baseline: reads the whole file at once and parses it with jsoncpp.
#pragma once

#include <json/reader.h>
#include <json/value.h>

#include <fstream>
#include <memory>
#include <string>

/// Returns the document in a file; null if the file is missing or malformed.
inline Json::Value LoadDocument(std::string const& path)
{
    std::string text;
    std::ifstream file(path);
    std::getline(file, text, '\0'); // reads the whole file with one library call
    Json::CharReaderBuilder builder;
    builder["collectComments"] = false;
    std::unique_ptr<Json::CharReader> const reader(builder.newCharReader());
    Json::Value document;
    reader->parse(text.data(), text.data() + text.size(), &document, nullptr);
    return document;
}
