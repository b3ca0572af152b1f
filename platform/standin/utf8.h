/// @file UTF-8 (RFC 3629) in stored and sent texts, which nobody has checked.
#pragma once

#include <json/value.h>

namespace standin {

/// Replaces what is no UTF-8 in the texts and member names of a document by U+FFFD, a byte at a
/// time: the JSON library takes such bytes for characters, and those behind them with them.
void RepairUtf8(Json::Value& document);

} // namespace standin
