/// @file The endpoint's one concrete class: the twelve methods and what they share.
#pragma once

#include "frame/video_web_api.h"

#include <json/value.h>

#include <cstddef>
#include <optional>
#include <string>

/// One request of the scheduled-recording API.
///
/// Every method is a member function, so that methods can call each other. The user-defined
/// methods re-enter the plain ones, which read their parameters through GetParam() and therefore do
/// not need to know on whose behalf they run. A method reports a failure with SetError(); one
/// that other methods call can also return a result for them.
class ScheduleRecordingAPI : public Tremolane::VideoWebAPI {
public:
    /// Checks the privilege and runs the method that the request names. An unknown method does
    /// nothing.
    void Process() override;

    // The following functions use no request and no object.

    /// Merges the records of the repeat file into `view["schedules"]`, which holds the one-shot
    /// schedules or is null. The result is sorted by start time; of schedules with the same start
    /// time the one that was read last comes first. `repeat` is an array or null and is only read.
    static void MergeSchedules(Json::Value& view, Json::Value& repeat);

    /// Moves elements of `view["schedules"]`, from index `start` on, to the end of
    /// `page["schedules"]`. Moves `limit` elements, or one if `limit` is below 1; fewer if the view
    /// ends before. Leaves the page untouched if there is no element at `start`.
    static void SlicePage(Json::Value& view, Json::Value& page, int start, int limit);

    /// Replaces the raw status of the page's schedules by the view status, and marks the schedules
    /// that are user-defined.
    static void FillStatus(Json::Value& page, int tuner);

    /// Adds the local start time, as text, and the local weekday to the page's schedules.
    static void FillStartText(Json::Value& page);

    /// Removes the user-defined record of that start (epoch seconds) and tuner from its file.
    /// Best-effort: it reports nothing.
    static void RemoveUserDefineRecord(int start, int tuner);

    /// Returns whether a folder for TV recordings exists on the appliance.
    static bool HasRecordFolder();

    /// Converts a local date ("YYYY-MM-DD") and time of day ("HH:MM") to epoch seconds. Only the
    /// lengths are checked. Uses the daylight saving that is in force now, whatever the date.
    /// Returns -1 if it cannot be converted.
    static int DateTimeToEpoch(char const* date, char const* time);

    /// Converts a length ("HH:MM") to seconds. Returns -1 if the text is none.
    static int TimeTextToSeconds(char const* text);

    /// Writes seconds as "HH:MM" and returns what snprintf() returns. Hours do not wrap at 24.
    static int SecondsToTimeText(char* buffer, std::size_t size, int seconds);

    /// Returns whether the local weekday of an epoch time is selected in a list of seven
    /// comma-separated flags, Sunday first.
    static bool IsWeekdaySelected(int time, char const* weekdays);

protected:
    // The twelve methods, in the order of the table in Process().

    /// Answers one page of a tuner's schedules, one-shot and repeat. Sends a response on every
    /// path, also after an error.
    void ListSchedule();

    /// Answers the details of one repeat schedule.
    void GetRepeatInfo();

    /// Answers one user-defined schedule, or the defaults of a new one, as a client edits it.
    void GetUserDefineInfo();

    /// Stores one or several one-shot schedules. Returns true if all were stored and the daemon
    /// reloaded.
    bool CreateSchedule();

    /// Deletes a one-shot schedule and stops its recording, or stops the tuner's recording. Leaves
    /// the reload of the daemon to `delete_userdefine`, if that is the request's method.
    void DeleteSchedule();

    /// Deletes a tuner's one-shot schedules that have ended.
    void DeletePassedSchedule();

    /// Stores a repeat schedule. Returns true if it was stored, even if the daemon did not reload.
    bool CreateRepeatSchedule();

    /// Changes the days and the end of a repeat schedule.
    void EditRepeatSchedule();

    /// Rewrites a tuner's repeat file without the named schedules. Returns true if it was saved.
    bool DeleteRepeatSchedule();

    /// Stores a schedule together with its user-defined record. Returns true if the schedule was
    /// stored.
    bool CreateUserDefine();

    /// Replaces a user-defined schedule by another one if the new times are free. If the new one
    /// cannot be stored, the old one is restored.
    void EditUserDefine();

    /// Deletes user-defined schedules and their records: those that the client names or, in an
    /// edit, the old one.
    void DeleteUserDefine();

    // What the methods share.

    /// Returns the text of a parameter at the stage at which the request stands: the request's own
    /// text, a value converted from it, or a field of `m_userDefineRecord`. `fallback` is returned
    /// for a parameter that the request lacks.
    std::string GetParam(char const* key, char const* fallback);

    /// Compares the name of the request's method, case-insensitively.
    bool IsMethod(char const* name) const;

    /// Returns the request's `tuner`: 0 if its text is no number, none if it is absent.
    std::optional<int> RequestTuner();

    /// Sets the error of a failed call into the recording service from the `errno` in `out`.
    void ReportLibraryError(Json::Value& out);

    /// Tells the daemon to read the schedules again. On false the error is set.
    bool ReloadDaemon();

    /// Checks what storing a schedule requires: a recording folder and a login user with a uid.
    /// Returns the uid in decimal; on failure returns none, with the error set.
    std::optional<std::string> CheckCanStore(bool isRepeat);

    /// Saves the record of the schedule that the parameters describe; it replaces a record of the
    /// same start and tuner. Returns its start in epoch seconds, or -1 if nothing was saved: a
    /// start below 1 is not.
    int SaveUserDefineRecord();

    /// Deletes the schedule of `m_userDefineRecord` through the plain method of its kind. Returns
    /// false if an edit must keep the record.
    bool DeleteRecordedSchedule();

    // The stage of a user-defined method; see GetParam().
    bool m_restoreOld = false;      ///< the old schedule is being restored from its record
    bool m_deleteOld = false;       ///< a schedule is being deleted by its record
    bool m_innerCreate = false;     ///< a plain create runs for a user-defined one
    Json::Value m_userDefineRecord; ///< the stored record in work; null before one is read
};
