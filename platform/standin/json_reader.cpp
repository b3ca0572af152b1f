/// @file RapidJSON's reader, building jsoncpp's documents.
#include "platform/standin/json_reader.h"

#include <rapidjson/reader.h>

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_set>
#include <utility>
#include <vector>

namespace standin {

namespace {

constexpr std::size_t kMaxDepth = 1000;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF"; ///< some editors begin a file with it

struct NameHash : std::hash<std::string_view> {
    using is_transparent = void;
};

/// A copy of a name for the whole process. Thousands of records have the same few names; one copy
/// for each member is a quarter of a document's memory.
Json::StaticString SharedName(std::string_view name)
{
    using Names = std::unordered_set<std::string, NameHash, std::equal_to<>>;
    static Names& names = *new Names; // outlives every document
    auto found = names.find(name);
    if (found == names.end()) {
        found = names.emplace(name).first;
    }
    return Json::StaticString(found->c_str());
}

template <class Number>
bool IsRead(char const* begin, char const* end, Number& value)
{
    auto const [last, error] = std::from_chars(begin, end, value);
    return error == std::errc() && last == end;
}

/// The number of a text that is one: an integer if it is written as one and fits, else a double;
/// null if it is beyond what a double holds. What follows the text is no part of a number.
Json::Value NumberOf(char const* begin, char const* end)
{
    Json::LargestInt integer = 0;
    Json::LargestUInt natural = 0;
    if (IsRead(begin, end, integer)) {
        return integer;
    }
    if (IsRead(begin, end, natural)) {
        return natural;
    }
    double const real = std::strtod(begin, nullptr);
    return std::isfinite(real) ? Json::Value(real) : Json::Value();
}

/// What RapidJSON's reader calls in the order of the text; false ends it.
class DocumentBuilder : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, DocumentBuilder> {
public:
    DocumentBuilder(Json::Value& document, ElementHook const& hook)
        : m_member(&document), m_hook(hook)
    {
    }

    bool Null() { return Put(Json::Value()); }
    bool Bool(bool value) { return Put(value); }

    bool RawNumber(char const* text, rapidjson::SizeType length, bool /*isTransient*/)
    {
        Json::Value number = NumberOf(text, text + length);
        return !number.isNull() && Put(std::move(number));
    }

    bool String(char const* text, rapidjson::SizeType length, bool /*isTransient*/)
    {
        return Put(Json::Value(text, text + length));
    }

    bool StartArray() { return Open(Json::arrayValue); }
    bool EndArray(rapidjson::SizeType /*count*/) { return Close(); }
    bool StartObject() { return Open(Json::objectValue); }
    bool EndObject(rapidjson::SizeType /*count*/) { return Close(); }

    bool Key(char const* text, rapidjson::SizeType length, bool /*isTransient*/)
    {
        std::string_view const name(text, length);
        bool const hasNul = name.find('\0') != std::string_view::npos; // a shared name ends there
        m_member = hasNul ? m_open.back()->demand(text, text + length)
                          : &(*m_open.back())[SharedName(name)];
        return true;
    }

private:
    /// Where the next value stands: the document, the last named member, or behind an array's end.
    Json::Value& Slot()
    {
        bool const isElement = !m_open.empty() && m_open.back()->isArray();
        return isElement ? m_open.back()->append(Json::Value()) : *m_member;
    }

    bool Put(Json::Value value)
    {
        Json::Value& slot = Slot();
        slot.swap(value);
        Complete(slot);
        return true;
    }

    bool Open(Json::ValueType type)
    {
        if (m_open.size() == kMaxDepth) {
            return false;
        }
        Json::Value& container = Slot();
        container = Json::Value(type);
        m_open.push_back(&container);
        return true;
    }

    bool Close()
    {
        Json::Value& container = *m_open.back();
        m_open.pop_back();
        Complete(container);
        return true;
    }

    void Complete(Json::Value& value)
    {
        bool const isElement = m_open.size() == 1 && m_open.front()->isArray();
        if (isElement && m_hook) {
            m_hook(value);
        }
    }

    std::vector<Json::Value*> m_open; ///< the arrays and objects around here, outermost first
    Json::Value* m_member;
    ElementHook const& m_hook;
};

} // namespace

bool ParseJson(std::string text, Json::Value& document, ElementHook const& hook)
{
    document = Json::Value();
    if (text.find('\0') != std::string::npos) {
        return false; // the reader would take it for the end, and a save would drop the rest
    }
    std::size_t const begin = text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    rapidjson::InsituStringStream stream(&text[begin]);
    DocumentBuilder builder(document, hook);
    // Numbers come as they stand: then it takes no memory of its own, which it would not test for.
    constexpr unsigned kFlags = rapidjson::kParseInsituFlag | rapidjson::kParseNumbersAsStringsFlag;
    if (!rapidjson::Reader().Parse<kFlags>(stream, builder)) {
        document = Json::Value();
        return false;
    }
    return true;
}

} // namespace standin
