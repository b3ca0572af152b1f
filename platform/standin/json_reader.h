/// @file Documents from JSON text (RFC 8259).
#pragma once

#include <json/value.h>

#include <string>

namespace standin {

/// Parses exactly one JSON text, optionally after a byte order mark. Returns false, with `document`
/// null, for anything else: also for a NUL, and for more than 1,000 levels, because whoever visits
/// a document recurses as deep as it is. Takes the text over and decodes strings in place. Bytes
/// that are not UTF-8 are kept. An escape of a lone surrogate is read as U+FFFD, and a number
/// beyond the range of a double as null. Of several members with the same name the last one wins.
///
/// If the document is an array and there is a `form`, each object in the array becomes a copy of
/// the form with the members that the text gives it. Other members of the text are left out.
///
/// RapidJSON reads because jsoncpp's own reader accepts more than the RFC, and takes twice the
/// time.
bool ParseJson(std::string text, Json::Value& document, Json::Value const& form = {});

} // namespace standin
