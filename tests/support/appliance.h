/// @file The fixture of most tests: a fresh appliance tree, and requests run in this process.
#pragma once

#include <gtest/gtest.h>
#include <json/value.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace KALD {
class WebAPI;
}

/// A request as the web server would hand it over.
struct Request {
    std::string query;          ///< QUERY_STRING
    std::string user = "admin"; ///< REMOTE_USER; empty: no login
    std::string method = "GET"; ///< REQUEST_METHOD
    std::string body;           ///< standard input
    std::string contentLength;  ///< CONTENT_LENGTH; empty: unset
    std::string contentType = "application/x-www-form-urlencoded";
};

/// What came of it.
struct Outcome {
    std::string raw;        ///< headers and body as the client reads them
    Json::Value body;       ///< the body parsed; null if it is no JSON
    std::vector<int> codes; ///< every recorded error code, in order
};

/// A tree with an administrator (admin, uid 1024), a user with the privilege dtv (viewer, 1026),
/// one without (guest, 1027), a locked account (locked, 1028), an administrator without a uid
/// (nouid), a recording folder and a running daemon.
class Appliance : public ::testing::Test {
protected:
    void SetUp() override;

    /// Runs `Process` of the whole endpoint for a request, in this process.
    static Outcome Run(Request const& request);
    static Outcome Run(std::string const& query) { return Run(Request{.query = query}); }

    /// Runs a host class of the test's own for a request.
    static Outcome RunApi(Request const& request, KALD::WebAPI& api);

public:
    /// Files below the root of the tree; writing makes the folders, reading a missing file is "".
    static void Write(std::string const& path, std::string const& text);
    static std::string Read(std::string const& path);
    static void Remove(std::string const& path);
    static Json::Value ReadJson(std::string const& path);
};

/// Parses JSON; null if it is none.
Json::Value Parsed(std::string const& text);

inline constexpr char kEtc[] = "/var/packages/Tremolane/etc/";
inline constexpr char kOneShot[] = "/var/packages/Tremolane/etc/dtvschedules/0dtv_schedule.json";
inline constexpr char kRepeat[] =
    "/var/packages/Tremolane/etc/dtvrepeatschedules/0dtv_repeat_schedule.json";
inline constexpr char kUserDefine[] = "/var/packages/Tremolane/etc/dtvuserdefineschedules.json";
inline constexpr char kUsers[] = "/var/packages/Tremolane/etc/users.conf";
inline constexpr char kFolders[] = "/var/packages/Tremolane/etc/folder.conf";
inline constexpr char kCommands[] = "/var/run/dtvd/commands";
