/// @file RapidJSON's reader, which builds jsoncpp's documents.
#include "platform/standin/json_reader.h"

#include "platform/standin/whole_number.h"

#include <rapidjson/reader.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace standin {

namespace {

constexpr std::size_t kMaxDepth = 1000;
constexpr std::size_t kMaxSharedNames = 100; ///< more than this system's own files have
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF"; ///< some editors begin a file with it

/// Converts the text of a number: to an integer if it is written as one and fits, otherwise to a
/// double. Returns null if it is beyond the range of a double.
Json::Value NumberOf(std::string_view text)
{
    if (auto const integer = ParseWholeNumber<Json::LargestInt>(text)) {
        return *integer;
    }
    if (auto const natural = ParseWholeNumber<Json::LargestUInt>(text)) {
        return *natural;
    }
    double const real = std::strtod(text.data(), nullptr);
    return std::isfinite(real) ? Json::Value(real) : Json::Value();
}

/// Returns the member of an object, a new one if it has none of that name. Records repeat a few
/// names, so all documents share one copy of each; it is never freed, because the process ends
/// first. A name with a NUL is not shared, nor are those beyond the limit.
Json::Value& DemandMember(Json::Value& object, std::string_view name)
{
    static auto& shared = *new std::set<std::string, std::less<>>;
    auto found = shared.find(name);
    if (found == shared.end()) {
        if (shared.size() == kMaxSharedNames || name.find('\0') != name.npos) {
            return *object.demand(name.data(), name.data() + name.size());
        }
        found = shared.emplace(name).first;
    }
    return object[Json::StaticString(found->c_str())];
}

/// Receives the events of RapidJSON's reader, in the order of the text. False ends the reading.
class DocumentBuilder : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, DocumentBuilder> {
public:
    DocumentBuilder(Json::Value& document, Json::Value const& form)
        : m_member(&document), m_form(form)
    {
    }

    bool Null() { return Put(Json::Value()); }
    bool Bool(bool value) { return Put(value); }

    bool RawNumber(char const* text, rapidjson::SizeType length, bool /*isTransient*/)
    {
        return Put(NumberOf({text, length}));
    }

    bool String(char const* text, rapidjson::SizeType length, bool /*isTransient*/)
    {
        return Put(Json::Value(text, text + length));
    }

    bool StartArray() { return Open(Json::Value(Json::arrayValue)); }
    bool StartObject() { return Open(HasForm(1) ? m_form : Json::Value(Json::objectValue)); }

    bool EndArray(rapidjson::SizeType /*count*/)
    {
        m_open.pop_back();
        return true;
    }

    bool EndObject(rapidjson::SizeType count) { return EndArray(count); }

    bool Key(char const* text, rapidjson::SizeType length, bool /*isTransient*/)
    {
        Json::Value& object = *m_open.back();
        bool const isWanted = !HasForm(2) || object.isMember(text, text + length);
        m_member = isWanted ? &DemandMember(object, {text, length}) : &m_unwanted;
        return true;
    }

private:
    /// Returns whether an object has the members of the form: one that begins inside one container,
    /// the array, or whose members are read inside two.
    bool HasForm(std::size_t containers) const
    {
        return m_open.size() == containers && m_open.front()->isArray() && !m_form.isNull();
    }

    /// Returns the place of the next value: the document, the last named member, or a new element.
    Json::Value& Slot()
    {
        bool const isElement = !m_open.empty() && m_open.back()->isArray();
        return isElement ? m_open.back()->append(Json::Value()) : *m_member;
    }

    bool Put(Json::Value value)
    {
        Slot().swap(value);
        return true;
    }

    bool Open(Json::Value container)
    {
        if (m_open.size() == kMaxDepth) {
            return false;
        }
        Json::Value& slot = Slot();
        slot.swap(container);
        m_open.push_back(&slot);
        return true;
    }

    /// The arrays and objects that are not complete, outermost first.
    std::vector<Json::Value*> m_open;
    Json::Value* m_member;     ///< the place of the next value, unless that is an element
    Json::Value m_unwanted;    ///< the place of members that are not wanted
    Json::Value const& m_form; ///< of the objects in an array; null for any
};

/// Returns the UTF-16 unit of an escape "\\uXXXX" at a position; none if there is no such escape.
std::optional<unsigned> UnitAt(std::string_view text, std::size_t at)
{
    constexpr std::size_t kLength = 6;
    std::string_view const escape = text.substr(std::min(at, text.size()), kLength);
    bool const isUnit = escape.size() == kLength && escape.starts_with("\\u");
    return isUnit ? ParseWholeNumber<unsigned>(escape.substr(2), 16) : std::nullopt;
}

/// Replaces escapes of lone surrogates, which are no characters, by that of U+FFFD. RapidJSON
/// refuses the one kind and reads the other as bytes that are not UTF-8.
void ReplaceLoneSurrogates(std::string& text)
{
    auto const isIn = [](std::optional<unsigned> unit, unsigned first) {
        return unit && *unit >= first && *unit < first + 0x400;
    };
    std::size_t at = text.find('\\');
    while (at < text.size()) {
        std::optional<unsigned> const unit = UnitAt(text, at);
        std::size_t length = unit ? 6 : 2;
        if (isIn(unit, 0xD800) && isIn(UnitAt(text, at + 6), 0xDC00)) {
            length = 12;
        } else if (isIn(unit, 0xD800) || isIn(unit, 0xDC00)) {
            text.replace(at + 2, 4, "fffd");
        }
        at = text.find('\\', at + length);
    }
}

/// Replaces numbers beyond the range of a double by null.
void ReplaceHugeNumbers(std::string& text)
{
    bool isInText = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '"') {
            isInText = !isInText;
        } else if (text[at] == '\\') {
            ++at;
        } else if (!isInText && (text[at] == '-' || (text[at] >= '0' && text[at] <= '9'))) {
            std::size_t end = std::min(text.find_first_not_of("+-.0123456789Ee", at), text.size());
            if (!std::isfinite(std::strtod(&text[at], nullptr))) {
                text.replace(at, end - at, "null");
                end = at + 4;
            }
            at = end - 1;
        }
    }
}

/// Reads a text into a document, decoding strings in place.
rapidjson::ParseErrorCode Read(std::string& text, Json::Value& document, Json::Value const& form)
{
    document = Json::Value();
    std::size_t const begin = text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    rapidjson::InsituStringStream stream(&text[begin]);
    DocumentBuilder builder(document, form);
    // Numbers are passed on as text. Otherwise the reader allocates memory without checking for
    // failure.
    constexpr unsigned kFlags = rapidjson::kParseInsituFlag | rapidjson::kParseNumbersAsStringsFlag;
    return rapidjson::Reader().Parse<kFlags>(stream, builder).Code();
}

} // namespace

bool ParseJson(std::string text, Json::Value& document, Json::Value const& form)
{
    document = Json::Value();
    if (text.find('\0') != std::string::npos) {
        return false; // the reader would take it for the end, and a save would lose the rest
    }
    ReplaceLoneSurrogates(text);
    std::string original = text;
    rapidjson::ParseErrorCode error = Read(text, document, form);
    if (error == rapidjson::kParseErrorNumberTooBig) {
        ReplaceHugeNumbers(original);
        error = Read(original, document, form);
    }
    if (error != rapidjson::kParseErrorNone) {
        document = Json::Value();
    }
    return error == rapidjson::kParseErrorNone;
}

} // namespace standin
