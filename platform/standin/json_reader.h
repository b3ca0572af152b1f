/// @file JSON text (RFC 8259) into documents.
#pragma once

#include <json/value.h>

#include <functional>
#include <string>

namespace standin {

/// What is done to each element of a document that is an array as soon as the element is complete,
/// while it is still in the processor's cache and the memory that it gives up serves the next one.
using ElementHook = std::function<void(Json::Value& element)>;

/// Parses exactly one JSON text. False, and `document` null, on anything else, on a NUL, on a
/// number whose exponent no double has, and on more than a thousand levels: who walks a document
/// recurses as deep as it is. Takes the text over, because strings are decoded where they stand.
/// Bytes that are no UTF-8 stay as they are, and of members with one name the last counts.
///
/// RapidJSON reads and jsoncpp's documents hold: jsoncpp's own reader takes more than the RFC has,
/// twice the time, and a copy of its name for each member.
bool ParseJson(std::string text, Json::Value& document, ElementHook const& hook = {});

} // namespace standin
