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

/// Replaces everything under APPLIANCE_ROOT by a new tree: the records, an administrator
/// "admin", a folder for TV recordings and one for the daemon's commands.
void LayTree(TreeSize const& size);

/// The starts of the schedules of an edit, in epoch seconds.
struct EditStarts {
    int old, changed;
};

/// Replaces the tree by one for the most expensive change: an edit of the user-defined repeat
/// schedule at `old` that moves it to `changed`, where no day of a year has an overlap. All other
/// records lie in that year. The one-shot schedule that the tuner daemon made from the old schedule
/// is stored, too. The numbers do not include the records of the old schedule.
EditStarts LayTreeToEdit(int oneShots, int repeats);
