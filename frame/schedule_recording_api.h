/// @file The endpoint's one concrete class: its methods and what they share.
#pragma once

#include "frame/video_web_api.h"

#include <json/value.h>

#include <cstddef>
#include <optional>
#include <string>

/// One request of the scheduled-recording API. A method reports failure by an error code; those
/// that call each other also by their result. The user-defined methods re-enter the plain ones,
/// which read their parameters through GetParam() and so need not know on whose behalf they run.
class ScheduleRecordingAPI : public Tremolane::VideoWebAPI {
public:
    ScheduleRecordingAPI();
    ~ScheduleRecordingAPI() override;

    /// Tests the privilege and runs the method that the request names.
    void Process() override;

protected:
    // The listing: schedule/listing.

    /// Answers one page of a tuner's schedules, one-shot and repeat, in the order of their start.
    /// Sends a response on every path.
    void ListSchedule();

    /// What ListSchedule() answers if there is something to list; leaves `response` null else.
    void FillPage(Json::Value& response);

    /// Merges the repeat file's records into `view["schedules"]`, sorted by start time. `repeat` is
    /// an array or null and is only read.
    void MergeSchedules(Json::Value& view, Json::Value& repeat);

    /// Appends to `page["schedules"]` at most `limit` elements of `view["schedules"]` from index
    /// `start` on, but one at least if there is one.
    void SlicePage(Json::Value& view, Json::Value& page, int start, int limit);

    /// Turns raw status numbers into view status numbers and marks user-defined schedules.
    void FillStatus(Json::Value& page, int tuner);

    /// Adds the local start time as text and the local weekday.
    void FillStartText(Json::Value& page);

    // One-shot and repeat schedules: schedule/plain.

    /// Stores one or several one-shot schedules. True if all were stored and the daemon reloaded.
    bool CreateSchedule();

    /// Deletes a one-shot schedule and stops its recording, or stops the tuner's recording. 0 after
    /// a clean delete for `delete_userdefine`, else 1, also after a failure.
    int DeleteSchedule();

    /// Deletes a tuner's one-shot schedules that have ended.
    void DeletePassedSchedule();

    /// Stores a repeat schedule. True if it was stored, also if the daemon did not reload then.
    bool CreateRepeatSchedule();

    /// Changes the days and the end of a repeat schedule.
    void EditRepeatSchedule();

    /// Rewrites a tuner's repeat file without the named schedules. True if it was saved.
    bool DeleteRepeatSchedule();

    /// Answers one repeat schedule.
    void GetRepeatInfo();

    // User-defined schedules: schedule/userdefine.

    /// Stores a schedule together with its user-defined record. True if the schedule was stored.
    bool CreateUserDefine();

    /// Replaces a user-defined schedule by another one, if the new times are free.
    void EditUserDefine();

    /// Deletes user-defined schedules and their records.
    void DeleteUserDefine();

    /// Answers one user-defined schedule, or the defaults of a new one.
    void GetUserDefineInfo();

    /// Writes the record of the schedule that the parameters describe, in the place of one with the
    /// same start and tuner. Its start in epoch seconds, or -1 if it was not saved.
    int SaveUserDefineRecord();

    /// Takes the record of that start and tuner out of the file.
    void RemoveUserDefineRecord(int start, int tuner);

    // Shared by the methods: frame, schedule/data.

    /// The text of a parameter at the stage at which the request stands: the request's own, one
    /// converted from it, or a field of `m_userDefineRecord`. Keys compare without regard to case.
    std::string GetParam(char const* key, char const* fallback);

    /// Whether the request's method is `name`, in any case of letters.
    bool IsMethod(char const* name) const;

    /// The request's `tuner`, 0 if its text is no number; none if it is absent.
    std::optional<int> RequestTuner();

    /// Sets the error of a failed call into the recording service, from the `errno` in `out`.
    void ReportLibraryError(Json::Value& out);

    /// Whether a folder for TV recordings exists.
    bool HasRecordFolder();

    /// A local date (10 characters, Y-M-D) and time of day (5 characters, H:M) as epoch seconds,
    /// read with the daylight saving of the present moment; -1 if it cannot be converted.
    int DateTimeToEpoch(char const* date, char const* time);

    /// A length of 5 characters, H:M, in seconds; -1 if it is none.
    int TimeTextToSeconds(char const* text);

    /// Writes seconds as hours and minutes; returns what snprintf returns.
    int SecondsToTimeText(char* buffer, std::size_t size, int seconds);

    /// Whether the local weekday of an epoch time is selected in a list of seven flags, Sunday
    /// first.
    bool IsWeekdaySelected(int time, char const* weekdays);

    // The stage of a user-defined method: see GetParam().
    bool m_restoreOld = false;      ///< the old schedule is being put back from its record
    bool m_deleteOld = false;       ///< a schedule is being deleted by its record
    bool m_innerCreate = false;     ///< a plain create runs for a user-defined one
    Json::Value m_userDefineRecord; ///< the stored record in work; null before one is read
};
