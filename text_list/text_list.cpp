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
    if (text.empty()) {
        return pieces;
    }
    std::size_t end = text.find(separator);
    while (end != std::string_view::npos) {
        pieces.emplace_back(text.substr(0, end));
        text.remove_prefix(end + 1);
        end = text.find(separator);
    }
    pieces.emplace_back(text);
    return pieces;
}

} // namespace kalddbquery
