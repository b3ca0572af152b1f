/// @file The fixture of most tests: a fresh appliance tree, requests run in this process, and
/// tables of them.
#pragma once

#include "frame/schedule_recording_api.h"
#include "platform/appliance_paths.h"

#include <gtest/gtest.h>
#include <json/value.h>
#include <json/writer.h>

#include <climits>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
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

/// Files by their path below the root of the tree; empty text stands for no file. In the tables
/// their JSON has ' in the place of ".
using Files = std::map<std::string, std::string>;

// A declaration a line.
// clang-format off

/// A row of a table: given these files and this request, this answer and these files afterwards. A
/// file of the appliance that a row does not name must not have changed.
struct Row {
    std::string name = "", query = "", user = "admin";
    std::vector<int> codes = {};       ///< all that are recorded, in order; the first is the answered one
    Files before = {}, after = {};     ///< beside the table's; compared as JSON
    std::string data = "";             ///< the answer, as JSON
    std::string log = "";              ///< the only line; none: there is none
    std::string commands = "";         ///< what reached the daemon, each followed by a ";"
    int commandsBeforeFailure = INT_MAX; ///< how many reach it before one fails
};

/// A tree with an administrator (admin, uid 1024), a user with the privilege dtv (viewer, 1026),
/// one without (guest, 1027), a locked account (locked, 1028), an administrator without a uid
/// (nouid), one without an account (ghost), a recording folder and a running daemon.
struct Appliance : ::testing::Test {
    /// A fresh tree, in the time zone in which the program was started.
    void SetUp() override;

    static void Reset();
    static void SetZone(std::string const& name) { ::setenv("TZ", name.c_str(), 1); ::tzset(); } ///< for a test

    /// Runs the whole endpoint, or a host class of the test's own, for a request.
    template <class Api = ScheduleRecordingAPI> static Outcome Run(Request const& request)
    {
        struct Probe : Api { using Api::m_errors; } api;
        return RunAs(request, api, api.m_errors);
    }
    static Outcome Run(std::string const& query) { return Run(Request{.query = query}); }

    /// Runs each row in a fresh tree with the files of `base`, at the time `now` if it is not 0.
    static void Check(Files const& base, std::vector<Row> const& rows, int now = 0);

    /// Writing makes the folders that are missing; a missing file reads as empty.
    static void Write(std::string const& path, std::string const& text);
    static void Lay(Files const& files);
    static std::string Read(std::string const& path);
    static void Remove(std::string const& path) { std::filesystem::remove_all(PathOf(path)); }
    static std::string PathOf(std::string const& path) { return appliance::kRoot + path; }

private:
    static Outcome RunAs(Request const& request, KALD::WebAPI& api, Json::Value const& errors);
};

/// Parses JSON, also with ' in the place of "; null if it is none.
Json::Value Parsed(std::string const& text);

/// Replaces every `from` in `text`.
std::string Replaced(std::string text, std::string const& from, std::string const& to);

/// Expects that a function makes of each first of a table the second.
template <class In, class Out, class Function>
void ExpectEach(Function const& function, std::vector<std::pair<In, Out>> const& table)
{
    for (auto const& [in, out] : table) { EXPECT_EQ(function(in), out) << in; }
}

inline constexpr char kOneShot[] = "/var/packages/Tremolane/etc/dtvschedules/0dtv_schedule.json";
inline constexpr char kRepeat[] = "/var/packages/Tremolane/etc/dtvrepeatschedules/0dtv_repeat_schedule.json";
inline constexpr char kUserDefine[] = "/var/packages/Tremolane/etc/dtvuserdefineschedules.json";
inline constexpr char kUsers[] = "/var/packages/Tremolane/etc/users.conf";
inline constexpr char kFolders[] = "/var/packages/Tremolane/etc/folder.conf";
inline constexpr char kCommands[] = "/var/run/dtvd/commands";

/// Behind the path of a file: what stands in the way of its temporary file, so that no save works.
inline std::string const kInTheWay = ".tmp/x";
