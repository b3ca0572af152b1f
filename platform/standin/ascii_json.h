/// @file JSON text (RFC 8259) in ASCII.
#pragma once

#include "platform/standin/block_writer.h"

#include <json/value.h>

namespace standin {

/// Writes a document as one line without spaces. Characters beyond ASCII become escapes; bytes that
/// are no UTF-8 (RFC 3629) become U+FFFD, one for each. Takes no memory, so that what has begun is
/// always ended.
///
/// Our own, for two reasons. jsoncpp's writers take broken UTF-8 for characters, and what stands
/// behind it with them. And they list, copy and look up the names of every object, which costs a
/// long list a quarter of its time.
void WriteAsciiJson(BlockWriter& out, Json::Value const& document);

} // namespace standin
