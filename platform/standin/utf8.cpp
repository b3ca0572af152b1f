/// @file Well-formed UTF-8: no stray, missing or overlong bytes, no surrogates.
#include "platform/standin/utf8.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace standin {

namespace {

constexpr char kReplacement[] = "\xEF\xBF\xBD"; // U+FFFD

struct Form {
    unsigned char lead, mask;
    std::uint32_t smallest, largest;
};

/// Sequences of one byte, of two and so on.
constexpr Form kForms[] = {{0x00, 0x80, 0x0, 0x7F},
                           {0xC0, 0xE0, 0x80, 0x7FF},
                           {0xE0, 0xF0, 0x800, 0xFFFF},
                           {0xF0, 0xF8, 0x10000, 0x10FFFF}};

/// The length of the well-formed sequence at the front of a text that is not empty; 0 for none.
std::size_t SequenceLength(std::string_view text)
{
    auto const byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    std::size_t length = 0;
    for (Form const& form : kForms) {
        ++length;
        if ((byte(0) & form.mask) != form.lead || text.size() < length) {
            continue;
        }
        std::uint32_t value = byte(0) & static_cast<unsigned char>(~form.mask);
        for (std::size_t i = 1; i < length; ++i) {
            if ((byte(i) & 0xC0) != 0x80) {
                return 0;
            }
            value = value << 6 | (byte(i) & 0x3FU);
        }
        bool const isSurrogate = value >= 0xD800 && value <= 0xDFFF;
        return value >= form.smallest && value <= form.largest && !isSurrogate ? length : 0;
    }
    return 0;
}

/// Without an early exit, so that it is vectorised: nearly every text is ASCII to its end.
bool IsAscii(char const* begin, char const* end)
{
    unsigned char bits = 0;
    for (; begin != end; ++begin) {
        bits |= static_cast<unsigned char>(*begin);
    }
    return bits < 0x80;
}

std::string Repaired(std::string_view text)
{
    std::string repaired;
    while (!text.empty()) {
        std::size_t const length = SequenceLength(text);
        repaired += length > 0 ? text.substr(0, length) : kReplacement;
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return repaired;
}

void RepairText(Json::Value& value)
{
    char const* begin = nullptr;
    char const* end = nullptr;
    value.getString(&begin, &end);
    if (!IsAscii(begin, end)) {
        value = Repaired({begin, static_cast<std::size_t>(end - begin)});
    }
}

void RepairName(Json::Value& object, std::string const& name)
{
    Json::Value value;
    object.removeMember(name, &value);
    object[Repaired(name)].swap(value);
}

} // namespace

void RepairUtf8(Json::Value& document)
{
    if (document.isString()) {
        RepairText(document);
        return;
    }
    std::vector<std::string> wideNames;
    for (auto member = document.begin(); member != document.end(); ++member) {
        RepairUtf8(*member);
        char const* end = nullptr;
        char const* const name = member.memberName(&end); // null in an array
        if (!IsAscii(name, end)) {
            wideNames.emplace_back(name, end);
        }
    }
    for (std::string const& name : wideNames) {
        RepairName(document, name);
    }
}

} // namespace standin
