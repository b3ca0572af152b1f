/// @file JSON documents (RFC 8259) in files, and as the lines that are saved.
#pragma once

#include "platform/standin/json_reader.h"

#include <json/value.h>

#include <string>

namespace standin {

/// What became of a load.
enum class Load {
    kLoaded,  ///< the document stands in the value
    kMissing, ///< there is no such file
    kBroken,  ///< the file cannot be read, or is no JSON
};

/// Loads a JSON file; `document` is null unless it was loaded. `hook` is called as by ParseJson().
Load LoadDocument(std::string const& path, Json::Value& document, ElementHook const& hook = {});

/// The same from an open file, into a null `document`; false unless it was loaded.
bool ReadDocument(int fd, Json::Value& document, ElementHook const& hook = {});

/// Replaces a file by a document in one line, its texts as UTF-8, within the transaction in
/// progress; see WriteWholeFile().
bool ReplaceFile(std::string const& path, Json::Value const& document);

} // namespace standin
