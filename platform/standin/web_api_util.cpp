/// @file Converting the texts of request parameters.
#include "kald/web_api_util.h"

#include "platform/standin/whole_number.h"

#include <strings.h>

#include <cstring>
#include <string_view>

namespace KALD {

bool WebAPIUtil::ParseInt(char const* text, int* value)
{
    std::string_view digits = text;
    if (digits.starts_with('+') && !digits.starts_with("+-")) {
        digits.remove_prefix(1);
    }
    auto const parsed = standin::ParseWholeNumber<int>(digits);
    if (parsed) {
        *value = *parsed;
    }
    return parsed.has_value();
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
    if (*text == '\0') {
        return pieces;
    }
    std::size_t const length = std::strlen(separator);
    char const* end = length > 0 ? std::strstr(text, separator) : nullptr;
    for (; end != nullptr; end = std::strstr(text, separator)) {
        pieces.append(Json::Value(text, end));
        text = end + length;
    }
    pieces.append(text);
    return pieces;
}

} // namespace KALD
