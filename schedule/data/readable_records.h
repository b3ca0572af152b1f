/// @file Tests of stored records before a change of several steps, which must not end half-way on a
/// record that it cannot read.
#pragma once

#include <json/value.h>

/// Throws Json::LogicError unless every member of a user-defined record that a create, a delete or
/// a restore of its schedule reads has a type that they can read.
void RequireReadableUserDefine(Json::Value const& record);

/// The same for the stored record of that start and tuner; false if there is none.
bool RequireReadableUserDefine(int start, int tuner);

/// The same for the members by which the recording service finds a record of a one-shot or of a
/// repeat file. `records` is an array or null.
void RequireReadableOneShots(Json::Value const& records);
void RequireReadableRepeats(Json::Value const& records);

/// The same for both files of a tuner; one that does not load has no records.
void RequireReadableSchedules(int tuner);
