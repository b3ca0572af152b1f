/// @file The answer: CGI headers (RFC 3875) and one line of ASCII JSON (RFC 8259).
#include "platform/standin/answer.h"

#include "platform/standin/documents.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string_view>

namespace standin {

namespace {

constexpr char kHeaders[] = "Content-Type: application/json; charset=utf-8\r\n\r\n";
constexpr std::uint32_t kReplacement = 0xFFFD;

struct CodePoint {
    std::uint32_t value;
    std::size_t length; ///< bytes taken
};

/// Decodes the sequence at the front of `text`, which starts with a byte above 0x7F. What is no
/// UTF-8 (RFC 3629: stray, missing or overlong bytes, surrogates) takes one byte.
CodePoint DecodeUtf8(std::string_view text)
{
    struct Form {
        unsigned char lead, mask;
        std::uint32_t smallest;
    };
    static constexpr Form kForms[] = {
        {0xC0, 0xE0, 0x80}, {0xE0, 0xF0, 0x800}, {0xF0, 0xF8, 0x10000}};
    auto const byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    for (std::size_t form = 0; form < 3; ++form) {
        std::size_t const length = form + 2;
        if ((byte(0) & kForms[form].mask) != kForms[form].lead || text.size() < length) {
            continue;
        }
        std::uint32_t value = byte(0) & static_cast<unsigned char>(~kForms[form].mask);
        bool valid = true;
        for (std::size_t i = 1; i < length; ++i) {
            valid = valid && (byte(i) & 0xC0) == 0x80;
            value = value << 6 | (byte(i) & 0x3FU);
        }
        bool const surrogate = value >= 0xD800 && value <= 0xDFFF;
        if (valid && value >= kForms[form].smallest && !surrogate && value <= 0x10FFFF) {
            return {value, length};
        }
    }
    return {kReplacement, 1};
}

void AppendUnit(std::string& out, std::uint32_t unit)
{
    char text[8];
    std::snprintf(text, sizeof text, "\\u%04x", unit & 0xFFFFU);
    out += text;
}

void AppendEscaped(std::string& out, std::uint32_t value)
{
    if (value < 0x10000) {
        AppendUnit(out, value);
        return;
    }
    AppendUnit(out, 0xD800 + ((value - 0x10000) >> 10));
    AppendUnit(out, 0xDC00 + ((value - 0x10000) & 0x3FF));
}

/// Appends JSON text with every character beyond ASCII as an escape. Such characters stand only
/// inside its strings, so the text need not be parsed for it.
void AppendAscii(std::string& out, std::string_view json)
{
    auto const isWide = [](char c) { return static_cast<unsigned char>(c) > 0x7F; };
    while (!json.empty()) {
        auto const wide = std::find_if(json.begin(), json.end(), isWide);
        auto const plain = static_cast<std::size_t>(wide - json.begin());
        out.append(json.substr(0, plain));
        json.remove_prefix(plain);
        if (!json.empty()) {
            CodePoint const point = DecodeUtf8(json);
            AppendEscaped(out, point.value);
            json.remove_prefix(point.length);
        }
    }
}

} // namespace

std::string RenderAnswer(Json::Value const& errors, Json::Value& response)
{
    Json::Value answer(Json::objectValue);
    answer["success"] = errors.empty();
    if (!errors.empty()) {
        answer["error"]["code"] = errors[0];
    }
    if (!response.isNull()) {
        answer["data"].swap(response);
    }
    std::string out = kHeaders;
    AppendAscii(out, RenderLine(answer));
    return out;
}

} // namespace standin
