/// @file The channel unique id of a stored repeat schedule.
#pragma once

#include <json/value.h>

#include <string>

/// Renders the unique id of a repeat record's channel: "SERVICE@FREQUENCY" if its frequency is an
/// integer, otherwise "SERVICE".
std::string RenderChannelId(Json::Value const& record);
