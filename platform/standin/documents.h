/// @file JSON documents (RFC 8259) in files.
#pragma once

#include "platform/standin/json_reader.h"
#include "platform/standin/transaction.h"

#include <json/value.h>

#include <string>

namespace standin {

/// The result of loading a file.
enum class Load {
    kLoaded,
    kMissing,    ///< there is no such file
    kUnreadable, ///< the file cannot be read; errno tells why
    kNotJson,
};

/// Loads a JSON file, or what the transaction in progress has saved in its place. `document` is
/// null unless it was loaded. See ParseJson() for `form`.
Load LoadDocument(std::string const& path, Json::Value& document, Json::Value const& form = {});

/// Replaces a file by a document in one line, as part of the transaction in progress. Texts are
/// written as UTF-8. On failure returns false, sets errno and leaves the file alone.
bool SaveDocument(std::string const& path, Document document);

} // namespace standin
