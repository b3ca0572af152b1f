/// @file The fixture of most tests: a fresh appliance tree, requests run in this process, and
/// tables of them.
#pragma once

#include "frame/schedule_recording_api.h"

#include <gtest/gtest.h>
#include <json/value.h>

#include <map>
#include <string>
#include <vector>

/// A request as the web server would hand it over. What is empty is unset.
struct Request {
    std::string query;              ///< QUERY_STRING
    std::string user = "admin";     ///< REMOTE_USER
    std::string method = "GET";     ///< REQUEST_METHOD
    std::string body = "";          ///< standard input
    std::string contentLength = ""; ///< CONTENT_LENGTH
    std::string contentType = "application/x-www-form-urlencoded";
};

/// What came of it.
struct Outcome {
    std::string raw;        ///< headers and body as the client reads them
    Json::Value body;       ///< the body parsed; null if it is no JSON
    std::vector<int> codes; ///< every recorded error code, in order
};

/// Files by their path below the root of the tree.
using Files = std::map<std::string, std::string>;

/// A row of a table: given these files and this request, this answer and these files afterwards. A
/// file of the package or command of the daemon that a row does not name must not have changed.
struct Row {
    std::string name;
    std::string query;
    std::vector<int> codes = {}; ///< recorded, in order; the first must be the answered one
    std::string data = "";       ///< the answer's data as JSON; empty: none
    Files before = {};           ///< beside those of the table; empty text: removed
    Files after = {};            ///< as JSON where it is JSON; empty text: there is no such file
    std::string commands = "";   ///< the daemon's commands, each followed by a ";"
    std::string log = "";        ///< lines logged, each followed by a ";"
    std::string user = "admin";
    int commandsBeforeFailure = -1; ///< commands that reach the daemon before one fails; -1: all
};

/// A tree with an administrator (admin, uid 1024), a user with the privilege dtv (viewer, 1026),
/// one without (guest, 1027), a locked account (locked, 1028), an administrator without a uid
/// (nouid), one without an account (ghost), a recording folder and a running daemon.
class Appliance : public ::testing::Test {
protected:
    void SetUp() override { Reset(); }

    static void Reset();

    /// Runs the whole endpoint, or a host class of the test's own, for a request.
    template <class Api = ScheduleRecordingAPI>
    static Outcome Run(Request const& request)
    {
        struct Probe : Api {
            using Api::m_errors;
        } api;
        return RunAs(request, api, api.m_errors);
    }
    static Outcome Run(std::string const& query) { return Run(Request{.query = query}); }

    /// Runs each row in a fresh tree with the files of `base`, at the time `now` if it is not 0.
    static void Check(Files const& base, std::vector<Row> const& rows, int now = 0);

public:
    /// Writing makes the folders that are missing; a missing file reads as empty.
    static void Write(std::string const& path, std::string const& text);
    static std::string Read(std::string const& path);
    static void Remove(std::string const& path);
    static std::string PathOf(std::string const& path);

private:
    static Outcome RunAs(Request const& request, KALD::WebAPI& api, Json::Value const& errors);
    static void CheckRow(Files const& base, Row const& row, int now);
};

/// Parses JSON; null if it is none.
Json::Value Parsed(std::string const& text);

/// Replaces every `from` in `text`.
std::string Replaced(std::string text, std::string const& from, std::string const& to);

/// Makes the local time zone another one for as long as it lives.
class Zone {
public:
    explicit Zone(char const* name);
    ~Zone();
    Zone(Zone const&) = delete;
    Zone& operator=(Zone const&) = delete;

private:
    std::string m_old;
};

inline constexpr char kEtc[] = "/var/packages/Tremolane/etc/";
inline constexpr char kOneShot[] = "/var/packages/Tremolane/etc/dtvschedules/0dtv_schedule.json";
inline constexpr char kRepeat[] =
    "/var/packages/Tremolane/etc/dtvrepeatschedules/0dtv_repeat_schedule.json";
inline constexpr char kUserDefine[] = "/var/packages/Tremolane/etc/dtvuserdefineschedules.json";
inline constexpr char kUsers[] = "/var/packages/Tremolane/etc/users.conf";
inline constexpr char kFolders[] = "/var/packages/Tremolane/etc/folder.conf";
inline constexpr char kCommands[] = "/var/run/dtvd/commands";
