/// @file Generating appliance trees of any size, reproducibly.
#pragma once

#include <json/value.h>

/// The numbers of records in a tree. All records belong to tuner 0.
struct TreeSize {
    int oneShot, repeat, userDefine;
};

/// Return `count` records as the recording service stores them, unsorted and with texts of typical
/// length. Half of the user-defined records have the start of a one-shot record.
Json::Value MakeOneShotRecords(int count);
Json::Value MakeRepeatRecords(int count);
Json::Value MakeUserDefineRecords(int count);

/// Replaces everything under APPLIANCE_ROOT by a new tree: the records, an administrator "admin"
/// and a folder for the daemon's commands.
void LayTree(TreeSize const& size);
