/// @file Joining and splitting lists of texts.
#include "text_list/text_list.h"

namespace kalddbquery {

std::string JoinString(std::vector<std::string> const& parts, std::string_view separator)
{
    std::string text;
    for (std::string const& part : parts) {
        if (&part != &parts.front()) {
            text += separator;
        }
        text += part;
    }
    return text;
}

std::vector<std::string> SplitString(std::string_view text, char separator)
{
    std::vector<std::string> pieces;
    std::size_t end = 0;
    for (std::size_t begin = 0; !text.empty() && end != text.npos; begin = end + 1) {
        end = text.find(separator, begin);
        pieces.emplace_back(text.substr(begin, end - begin));
    }
    return pieces;
}

} // namespace kalddbquery
