/// @file A writer that walks a document once.
#include "platform/standin/ascii_json.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <type_traits>

namespace standin {

namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;

struct CodePoint {
    std::uint32_t value;
    std::size_t length; ///< bytes taken
};

/// A form of sequences: its first byte, and the code points that need it.
struct Form {
    unsigned char lead, mask;
    std::uint32_t smallest, largest;
};

constexpr Form kForms[] = {{0xC0, 0xE0, 0x80, 0x7FF}, // two bytes, three, four
                           {0xE0, 0xF0, 0x800, 0xFFFF},
                           {0xF0, 0xF8, 0x10000, 0x10FFFF}};

/// Decodes the sequence at the front of a text that starts with a byte above 0x7F.
CodePoint DecodeWide(std::string_view text)
{
    auto const byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    std::size_t length = 1;
    for (Form const& form : kForms) {
        ++length;
        if ((byte(0) & form.mask) != form.lead || text.size() < length) {
            continue;
        }
        std::uint32_t value = byte(0) & static_cast<unsigned char>(~form.mask);
        bool isValid = true;
        for (std::size_t i = 1; i < length; ++i) {
            isValid = isValid && (byte(i) & 0xC0) == 0x80;
            value = value << 6 | (byte(i) & 0x3FU);
        }
        bool const isSurrogate = value >= 0xD800 && value <= 0xDFFF;
        if (isValid && !isSurrogate && value >= form.smallest && value <= form.largest) {
            return {value, length};
        }
    }
    return {kReplacement, 1};
}

void WriteUnit(BlockWriter& out, std::uint32_t unit)
{
    constexpr char kDigits[] = "0123456789abcdef";
    char const text[] = {'\\',
                         'u',
                         kDigits[unit >> 12 & 0xF],
                         kDigits[unit >> 8 & 0xF],
                         kDigits[unit >> 4 & 0xF],
                         kDigits[unit & 0xF]};
    out.Put({text, sizeof text});
}

void WriteEscape(BlockWriter& out, std::uint32_t value)
{
    if (value == '"' || value == '\\') {
        out.Put('\\');
        out.Put(static_cast<char>(value));
    } else if (value < 0x10000) {
        WriteUnit(out, value);
    } else { // a pair of surrogates
        WriteUnit(out, 0xD800 + ((value - 0x10000) >> 10));
        WriteUnit(out, 0xDC00 + ((value - 0x10000) & 0x3FF));
    }
}

/// The shortest digits that are read as this number again; a real shows that it is one.
template <class Number>
void WriteNumber(BlockWriter& out, Number value)
{
    char text[32];
    std::string_view const digits(text, std::to_chars(std::begin(text), std::end(text), value).ptr);
    out.Put(digits);
    if (std::is_floating_point_v<Number> && digits.find_first_of(".e") == digits.npos) {
        out.Put(".0");
    }
}

/// Which bytes stand for themselves in a JSON text: a look into a table is all that most of a long
/// answer costs.
constexpr std::array<bool, 256> kIsPlain = [] {
    std::array<bool, 256> plain{};
    for (std::size_t byte = 0x20; byte < 0x80; ++byte) {
        plain[byte] = byte != '"' && byte != '\\';
    }
    return plain;
}();

void WriteText(BlockWriter& out, char const* begin, char const* end)
{
    out.Put('"');
    while (begin != end) {
        char const* const run = begin;
        while (begin != end && kIsPlain[static_cast<unsigned char>(*begin)]) {
            ++begin;
        }
        out.Put({run, begin});
        if (begin != end) {
            std::string_view const rest(begin, static_cast<std::size_t>(end - begin));
            bool const isWide = static_cast<unsigned char>(rest[0]) >= 0x80;
            CodePoint const point =
                isWide ? DecodeWide(rest) : CodePoint{static_cast<std::uint32_t>(rest[0]), 1};
            WriteEscape(out, point.value);
            begin += point.length;
        }
    }
    out.Put('"');
}

// NOLINTBEGIN(misc-no-recursion): as deep as a document, which its reader limits
void WriteMembers(BlockWriter& out, Json::Value const& object)
{
    char separator = '{';
    for (auto member = object.begin(); member != object.end(); ++member) {
        char const* end = nullptr;
        char const* const name = member.memberName(&end);
        out.Put(separator);
        WriteText(out, name, end);
        out.Put(':');
        WriteAsciiJson(out, *member);
        separator = ',';
    }
    out.Put(object.empty() ? "{}" : "}");
}

void WriteElements(BlockWriter& out, Json::Value const& array)
{
    char separator = '[';
    for (Json::Value const& element : array) {
        out.Put(separator);
        WriteAsciiJson(out, element);
        separator = ',';
    }
    out.Put(array.empty() ? "[]" : "]");
}

} // namespace

void WriteAsciiJson(BlockWriter& out, Json::Value const& document)
{
    char const* begin = nullptr;
    char const* end = nullptr;
    switch (document.type()) {
    case Json::nullValue:
        out.Put("null");
        break;
    case Json::intValue:
        WriteNumber(out, document.asLargestInt());
        break;
    case Json::uintValue:
        WriteNumber(out, document.asLargestUInt());
        break;
    case Json::realValue:
        WriteNumber(out, document.asDouble());
        break;
    case Json::stringValue:
        document.getString(&begin, &end);
        WriteText(out, begin, end);
        break;
    case Json::booleanValue:
        out.Put(document.asBool() ? "true" : "false");
        break;
    case Json::arrayValue:
        WriteElements(out, document);
        break;
    case Json::objectValue:
        WriteMembers(out, document);
        break;
    }
}
// NOLINTEND(misc-no-recursion)

} // namespace standin
