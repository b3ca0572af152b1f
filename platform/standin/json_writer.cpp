/// @file A writer that visits each value of a document once.
#include "platform/standin/json_writer.h"

#include <rapidjson/encodings.h>
#include <rapidjson/memorystream.h>

#include <array>
#include <charconv>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

namespace standin {

namespace {

/// Room for a few hundred schedules. A text that grew from nothing would touch twice the memory,
/// which costs such a list a twentieth of its time.
constexpr std::size_t kUsualSize = 100'000;

/// Which bytes stand for themselves in a JSON text. Looking a byte up here is most of what a long
/// answer costs.
using PlainBytes = std::array<bool, 256>;

constexpr PlainBytes PlainBytesUpTo(std::size_t end)
{
    PlainBytes plain{};
    for (std::size_t byte = 0x20; byte < end; ++byte) {
        plain[byte] = byte != '"' && byte != '\\';
    }
    return plain;
}

constexpr PlainBytes kPlainAscii = PlainBytesUpTo(0x80);
constexpr PlainBytes kPlainUtf8 = PlainBytesUpTo(0x100);

class TextWriter {
public:
    explicit TextWriter(PlainBytes const& plain) : m_plain(plain) { m_out.reserve(kUsualSize); }

    // NOLINTBEGIN(misc-no-recursion): as deep as a document, which its reader limits
    void Write(Json::Value const& value)
    {
        char const* begin = nullptr;
        char const* end = nullptr;
        switch (value.type()) {
        case Json::nullValue:
            m_out += "null";
            break;
        case Json::intValue: // the most frequent: faster than the others
            m_out += std::to_string(value.asLargestInt());
            break;
        case Json::realValue:
            WriteReal(value.asDouble());
            break;
        case Json::stringValue:
            value.getString(&begin, &end);
            WriteText(begin, end);
            break;
        case Json::arrayValue:
            WriteChildren(value, '[', ']');
            break;
        case Json::objectValue:
            WriteChildren(value, '{', '}');
            break;
        default: // a natural number or a boolean
            m_out += value.asString();
            break;
        }
    }

    std::string m_out;

private:
    void WriteChildren(Json::Value const& container, char open, char close)
    {
        char separator = open;
        for (auto child = container.begin(); child != container.end(); ++child) {
            m_out += std::exchange(separator, ',');
            char const* end = nullptr;
            if (char const* const name = child.memberName(&end)) { // null for an element
                WriteText(name, end);
                m_out += ':';
            }
            Write(*child);
        }
        if (container.empty()) {
            m_out += open;
        }
        m_out += close;
    }
    // NOLINTEND(misc-no-recursion)

    void WriteText(char const* begin, char const* end)
    {
        m_out += '"';
        while (begin != end) {
            char const* const run = begin;
            while (begin != end && m_plain[static_cast<unsigned char>(*begin)]) {
                ++begin;
            }
            m_out.append(run, begin);
            if (begin != end) {
                begin += WriteEscape({begin, end});
            }
        }
        m_out += '"';
    }

    /// Writes the first character of a text as an escape. Returns how many bytes it has.
    std::size_t WriteEscape(std::string_view text)
    {
        rapidjson::MemoryStream stream(text.data(), text.size());
        unsigned codePoint = 0;
        if (!rapidjson::UTF8<>::Decode(stream, &codePoint)) {
            WriteUnit(0xFFFD); // the replacement character
            return 1;
        }
        if (codePoint == '"' || codePoint == '\\') {
            m_out += '\\';
            m_out += static_cast<char>(codePoint);
        } else if (codePoint < 0x10000) {
            WriteUnit(codePoint);
        } else { // a pair of surrogates
            WriteUnit(0xD800 + ((codePoint - 0x10000) >> 10));
            WriteUnit(0xDC00 + ((codePoint - 0x10000) & 0x3FF));
        }
        return stream.Tell();
    }

    void WriteUnit(unsigned unit)
    {
        constexpr char kDigits[] = "0123456789abcdef";
        m_out += "\\u";
        for (int shift = 12; shift >= 0; shift -= 4) {
            m_out += kDigits[unit >> shift & 0xF];
        }
    }

    /// Writes the shortest digits that are read as this number again. They always show that it is
    /// no integer.
    void WriteReal(double value)
    {
        char text[32];
        char const* const end = std::to_chars(std::begin(text), std::end(text), value).ptr;
        std::string_view const digits(text, end);
        m_out += digits;
        if (digits.find_first_of(".e") == digits.npos) {
            m_out += ".0";
        }
    }

    PlainBytes const& m_plain;
};

} // namespace

std::string RenderJson(Json::Value const& document, Charset charset)
{
    TextWriter writer(charset == Charset::kAscii ? kPlainAscii : kPlainUtf8);
    writer.Write(document);
    return std::move(writer.m_out);
}

} // namespace standin
