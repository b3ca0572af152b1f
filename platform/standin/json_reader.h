/// @file Documents from JSON text (RFC 8259).
#pragma once

#include <json/value.h>

#include <functional>
#include <string>

namespace standin {

/// Called for each element of a document that is an array, as soon as the element is complete. It
/// may change the element; memory that it frees is used again for the next one.
using ElementHook = std::function<void(Json::Value& element)>;

/// Parses exactly one JSON text, optionally after a byte order mark. Returns false, with `document`
/// null, for anything else: also for a NUL, and for more than 1,000 levels, because whoever visits
/// a document recurses as deep as it is. Takes the text over and decodes strings in place. Bytes
/// that are not UTF-8 are kept. An escape of a lone surrogate is read as U+FFFD, and a number
/// beyond the range of a double as null. Of several members with the same name the last one wins.
///
/// RapidJSON reads because jsoncpp's own reader accepts more than the RFC, and takes twice the
/// time.
bool ParseJson(std::string text, Json::Value& document, ElementHook const& hook = {});

} // namespace standin
