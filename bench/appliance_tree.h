/// @file Appliance trees of any size, the same for the same numbers.
#pragma once

#include <json/value.h>

/// How many records a tree holds, all of tuner 0.
struct TreeSize {
    int oneShot, repeat, userDefine;
};

/// Records as the recording service stores them, in no order, with texts of usual length. Half of
/// the user-defined records belong to a one-shot record.
Json::Value MakeOneShotRecords(int count);
Json::Value MakeRepeatRecords(int count);
Json::Value MakeUserDefineRecords(int count);

/// Lays a tree under APPLIANCE_ROOT in the place of what was there: the records, an administrator
/// "admin" and a folder for the daemon's commands.
void LayTree(TreeSize const& size);
