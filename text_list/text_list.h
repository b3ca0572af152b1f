/// @file Lists of texts: joined to one text, and split again. For the package's API classes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kalddbquery {

/// Joins the parts in their order, with the separator between them and nowhere else. No parts give
/// an empty text.
///
/// JoinString({"a", "", "c"}, ", ") returns "a, , c".
std::string JoinString(std::vector<std::string> const& parts, std::string_view separator);

/// Splits a text at each separator. Pieces can be empty, so n separators give n + 1 pieces; an
/// empty text has no pieces. Bytes are taken as they are: a NUL or broken UTF-8 is content.
///
/// SplitString("a,,c", ',') returns {"a", "", "c"}. Joining the pieces with the separator gives the
/// text again. The other way round, only the list of one empty part does not come back: it joins to
/// the empty text, which has no pieces.
std::vector<std::string> SplitString(std::string_view text, char separator);

} // namespace kalddbquery
