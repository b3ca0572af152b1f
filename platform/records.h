/// @file Reading and filtering the records of JSON documents, whatever they hold.
///
/// Stored files can be damaged or edited by hand. A member that is absent, or whose value jsoncpp
/// cannot convert to the wanted type, reads as 0, as empty text or as false, so that one bad record
/// never costs a good one. Nothing here throws on a type.
#pragma once

#include <json/value.h>

#include <algorithm>
#include <string>

namespace appliance {

/// The member `name` of a record; null if it is absent or `record` is no object.
inline Json::Value const& MemberOf(Json::Value const& record, char const* name)
{
    return record.isObject() ? record[name] : Json::Value::nullSingleton();
}

/// A value read as an int and as text.
inline int AsInt(Json::Value const& value)
{
    return value.isConvertibleTo(Json::intValue) ? value.asInt() : 0;
}

inline std::string AsText(Json::Value const& value)
{
    return value.isConvertibleTo(Json::stringValue) ? value.asString() : "";
}

/// A record's member read as an int, as text and as a flag.
inline int IntOf(Json::Value const& record, char const* name)
{
    return AsInt(MemberOf(record, name));
}

inline std::string TextOf(Json::Value const& record, char const* name)
{
    return AsText(MemberOf(record, name));
}

inline bool FlagOf(Json::Value const& record, char const* name)
{
    Json::Value const& flag = MemberOf(record, name);
    return flag.isConvertibleTo(Json::booleanValue) && flag.asBool();
}

/// Removes from an array (or null) the elements that `isDropped` selects; returns whether there
/// were any. The others keep their order.
template <class Predicate>
bool DropElements(Json::Value& elements, Predicate const& isDropped)
{
    auto const end = std::remove_if(elements.begin(), elements.end(), isDropped);
    if (end == elements.end()) {
        return false;
    }
    elements.resize(static_cast<Json::ArrayIndex>(end - elements.begin()));
    return true;
}

/// Removes records like DropElements(). An element that is no object is no record: it is not asked
/// about and stays.
template <class Predicate>
bool DropRecords(Json::Value& records, Predicate const& isDropped)
{
    return DropElements(records, [&isDropped](Json::Value const& element) {
        return element.isObject() && isDropped(element);
    });
}

} // namespace appliance
