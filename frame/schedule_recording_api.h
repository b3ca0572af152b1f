/// @file The endpoint's one concrete class: its methods and what they share.
#pragma once

#include "frame/video_web_api.h"

#include <json/value.h>

#include <cstddef>
#include <ctime>
#include <optional>
#include <set>
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

    /// Moves to `page["schedules"]` at most `limit` elements of `view["schedules"]` from index
    /// `start` on, but one at least if there is one.
    void SlicePage(Json::Value& view, Json::Value& page, int start, int limit);

    /// Turns raw status numbers into view status numbers and marks user-defined schedules.
    void FillStatus(Json::Value& page, int tuner);

    /// Adds the local start time as text and the local weekday.
    void FillStartText(Json::Value& page);

    // One-shot and repeat schedules: schedule/plain.

    /// Stores one or several one-shot schedules. True if all were stored and the daemon reloaded.
    bool CreateSchedule();

    /// Stores one schedule, or one for each piece of comma-separated `ids` and `starts`; false, and
    /// the error set, if one was not stored. The others stay.
    bool StoreSchedule(int tuner, std::string const& id, std::string const& start,
                       std::string const& uid);
    bool StoreSchedules(int tuner, std::string const& ids, std::string const& starts,
                        std::string const& uid);

    /// The uid, in decimal, under which a schedule of either kind would be stored; none, and the
    /// error set, without a recording folder or a login user that has one.
    std::optional<std::string> OneShotOwner();
    std::optional<std::string> RepeatOwner();

    /// The login user's uid in decimal; none, the failure logged under one of the line numbers and
    /// the error set, without such a user or without its uid.
    std::optional<std::string> LoginUidText(int lookupLine, int uidLine);

    /// Deletes a one-shot schedule and stops its recording, or stops the tuner's recording. 0 after
    /// a clean delete for `delete_userdefine`, else 1, also after a failure.
    int DeleteSchedule();

    /// Stops whatever the tuner records; false, and the error set, if that fails.
    bool StopTuner(int tuner);

    /// Removes one schedule from the store and stops its recording; false, and the error set, at
    /// the first step that fails.
    bool RemoveSchedule(int tuner, std::string const& start, std::string const& channelId);

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

    /// Runs the plain create for the schedule of a record that was just saved.
    bool StoreUserDefine(bool isRepeat);

    /// Writes the record of the schedule that the parameters describe, in the place of one with the
    /// same start and tuner. Its start in epoch seconds; -1 if it could not be saved. Without a
    /// tuner or with a start below 1 nothing is saved either, and the start is what it came to.
    int SaveUserDefineRecord();

    /// Fills a record, but its tuner, from the parameters; false if one is missing or unusable.
    bool DescribeUserDefine(Json::Value& record);

    /// Takes the record of that start and tuner, or those of several starts, out of the file.
    void RemoveUserDefineRecord(int start, int tuner);
    void RemoveUserDefineRecords(std::set<int> const& starts, int tuner);

    /// Replaces a user-defined schedule by another one, if the new times are free; if the new one
    /// cannot be stored, the old one is put back.
    void EditUserDefine();

    /// The two schedule files of a tuner while an edit works on them.
    struct StoredSchedules;

    /// The new schedule of an edit, and by what the old one is found.
    struct UserDefineEdit;

    /// The stages of an edit. False ends the edit; CanStore() and SaveRemainingOneShots() have then
    /// set the error. Nothing is changed on disk before SaveRemainingOneShots().
    bool ValidateEdit(UserDefineEdit& edit);
    void ExcludeOldSchedule(StoredSchedules& stored);
    bool HasNoOverlap(UserDefineEdit const& edit, StoredSchedules& stored);
    bool SaveRemainingOneShots(int tuner, StoredSchedules& stored);
    void DeleteOldThenCreateNew();

    /// Tests what would fail the new create and the restore of the old schedule alike, so that such
    /// a failure does not cost the old schedule.
    bool CanStore(UserDefineEdit const& edit, StoredSchedules const& stored);

    /// Deletes user-defined schedules and their records: those that the client names, or, for an
    /// edit, the old one.
    void DeleteUserDefine();
    void DeleteNamedUserDefines();
    void DeleteOldUserDefine();

    /// Deletes the schedule of `m_userDefineRecord` through the plain method of its kind. In an
    /// edit false says that its record must stay; a list of deletes does not look at it.
    bool DeleteRecordedSchedule();

    /// Answers one user-defined schedule, or the defaults of a new one.
    void GetUserDefineInfo();

    /// The client's form filled from a record; `now` is epoch seconds.
    Json::Value StoredScheduleInfo(Json::Value const& record, std::time_t now);

    // Shared by the methods: frame, schedule/data.

    /// The text of a parameter at the stage at which the request stands: the request's own, one
    /// converted from it, or a field of `m_userDefineRecord`. What is served in the place of the
    /// request's text is found without regard to the key's case.
    std::string GetParam(char const* key, char const* fallback);

    /// Whether the request's method is `name`, in any case of letters.
    bool IsMethod(char const* name) const;

    /// The request's `tuner`, 0 if its text is no number; none if it is absent.
    std::optional<int> RequestTuner();

    /// Sets the error of a failed call into the recording service, from the `errno` in `out`.
    void ReportLibraryError(Json::Value& out);

    /// Makes the daemon read the schedules again; false, and the error set, if that fails.
    bool ReloadDaemon();

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
