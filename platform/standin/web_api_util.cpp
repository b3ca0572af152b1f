/// @file Converting the texts of request parameters.
#include "kald/web_api_util.h"

#include <strings.h>

#include <charconv>
#include <string_view>

namespace KALD {

bool WebAPIUtil::ParseInt(char const* text, int* value)
{
    std::string_view digits = text;
    if (digits.starts_with('+') && !digits.starts_with("+-")) {
        digits.remove_prefix(1);
    }
    int parsed = 0;
    auto const [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), parsed);
    if (error != std::errc() || end != digits.data() + digits.size()) {
        return false;
    }
    *value = parsed;
    return true;
}

bool WebAPIUtil::ParseBool(char const* text, bool* value)
{
    bool const isTrue = ::strcasecmp(text, "true") == 0;
    if (!isTrue && ::strcasecmp(text, "false") != 0) {
        return false;
    }
    *value = isTrue;
    return true;
}

Json::Value WebAPIUtil::ParseToArray(char const* text, char const* separator)
{
    Json::Value pieces(Json::arrayValue);
    std::string_view rest = text;
    std::string_view const mark = separator;
    if (rest.empty()) {
        return pieces;
    }
    std::size_t end = mark.empty() ? std::string_view::npos : rest.find(mark);
    while (end != std::string_view::npos) {
        pieces.append(Json::Value(rest.data(), rest.data() + end));
        rest.remove_prefix(end + mark.size());
        end = rest.find(mark);
    }
    pieces.append(Json::Value(rest.data(), rest.data() + rest.size()));
    return pieces;
}

} // namespace KALD
