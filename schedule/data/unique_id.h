/// @file The channel unique id of a repeat record.
#pragma once

#include <json/value.h>

#include <string>

/// "SERVICE@FREQUENCY" if the record's frequency is an integer, else "SERVICE".
std::string RenderUniqueId(Json::Value const& record);
