/// @file The appliance tree, and requests run in this process.
#include "tests/support/appliance.h"

#include "tests/support/seams.h"

#include <json/reader.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

namespace fs = std::filesystem;

namespace {

void SetVariable(char const* name, std::string const& value)
{
    value.empty() ? ::unsetenv(name) : ::setenv(name, value.c_str(), 1);
}

/// Every file of the tree, but locks, whose presence means nothing.
Files Snapshot()
{
    Files files;
    for (auto const& entry : fs::recursive_directory_iterator(appliance::kRoot)) {
        std::string const path = entry.path().string().substr(sizeof appliance::kRoot - 1);
        if (entry.is_regular_file() && !path.ends_with(".lock")) {
            files[path] = Appliance::Read(path);
        }
    }
    return files;
}

} // namespace

void Appliance::SetUp()
{
    static char const* const zone = std::getenv("TZ");
    static std::string const started = zone != nullptr ? zone : ":/etc/localtime"; // as without it
    SetZone(started);
    Reset();
}

void Appliance::Reset()
{
    seams::Reset();
    Remove("");
    for (char const* path : {"/volume1/video/tv/x", kOneShot, kRepeat, kCommands}) {
        fs::create_directories(fs::path(PathOf(path)).parent_path());
    }
    Lay({{"/etc/passwd", "admin:x:1024:100::/:\nviewer:x:1026:100::/:\nguest:x:1027:100::/:\n"
                         "locked:!:1028:100::/:\nnouid:x:4294967295:100::/:\n"},
         {"/etc/group", "users:x:100:guest\nadministrators:x:101:admin,nouid,ghost\n"},
         {kUsers, "{'1026':{'dtv':true}}"},
         {kFolders, "[{'section':'tv_record','share':'video','subpath':'tv'}]"}});
}

Outcome Appliance::RunAs(Request const& request, KALD::WebAPI& api, Json::Value const& errors)
{
    // Whatever runs in this process, the class has read its environment only from here.
    SetVariable("QUERY_STRING", request.query);
    SetVariable("REMOTE_USER", request.user);
    SetVariable("REQUEST_METHOD", request.method);
    SetVariable("CONTENT_LENGTH", request.contentLength);
    SetVariable("CONTENT_TYPE", request.contentType);
    ::close(STDIN_FILENO);
    EXPECT_EQ(::memfd_create("body", 0), STDIN_FILENO);
    EXPECT_EQ(::pwrite(STDIN_FILENO, request.body.data(), request.body.size(), 0),
              request.body.size());
    testing::internal::CaptureStdout();
    api.Run();
    Outcome outcome{testing::internal::GetCapturedStdout(), {}, {}};
    for (Json::Value const& code : errors) {
        outcome.codes.push_back(code.asInt());
    }
    std::string const& raw = outcome.raw;
    outcome.body = Parsed(raw.substr(std::min(raw.find("\r\n\r\n"), raw.size())));
    return outcome;
}

void Appliance::Check(Files const& base, std::vector<Row> const& rows, int now)
{
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name + ": " + row.query);
        Reset();
        Lay(base);
        Lay(row.before);
        Files expected = Snapshot();
        expected[kCommands] += Replaced(row.commands, ";", "\n");
        seams::now = now != 0 ? std::optional<std::time_t>(now) : std::nullopt;
        seams::failingPath = PathOf(kCommands);
        seams::opensBeforeFailure = row.commandsBeforeFailure;
        Outcome const outcome = Run({.query = row.query, .user = row.user});
        EXPECT_EQ(outcome.codes, row.codes);
        EXPECT_EQ(outcome.body["success"], row.codes.empty());
        EXPECT_EQ(outcome.body["error"]["code"].asInt(), row.codes.empty() ? 0 : row.codes[0]);
        EXPECT_EQ(outcome.body["data"], Parsed(row.data));
        EXPECT_EQ(seams::logged.size(), row.log.empty() ? 0U : 1U);
        EXPECT_EQ(seams::logged.empty() ? "" : seams::logged[0].text, row.log);
        Files files = Snapshot();
        for (auto const& [path, text] : row.after) {
            EXPECT_EQ(Parsed(files[path]), Parsed(text)) << path;
            expected[path] = files[path];
        }
        std::erase_if(expected, [&files](Files::value_type const& file) {
            return files[file.first] == file.second && files.erase(file.first) > 0;
        });
        EXPECT_EQ(files, expected); // what is left of them differs
    }
}

void Appliance::Write(std::string const& path, std::string const& text)
{
    fs::create_directories(fs::path(PathOf(path)).parent_path());
    std::ofstream(PathOf(path)) << text;
}

std::string Appliance::Read(std::string const& path)
{
    std::ifstream file(PathOf(path));
    return {std::istreambuf_iterator<char>(file), {}};
}

void Appliance::Lay(Files const& files)
{
    for (auto const& [path, text] : files) {
        text.empty() ? Remove(path) : Write(path, Replaced(text, "'", "\""));
    }
}

Json::Value Parsed(std::string const& text)
{
    Json::CharReaderBuilder builder;
    builder["allowSingleQuotes"] = true;
    std::istringstream stream(text);
    Json::Value document;
    return parseFromStream(builder, stream, &document, nullptr) ? document : Json::Value();
}

std::string Replaced(std::string text, std::string const& from, std::string const& to)
{
    for (auto at = text.find(from); at != text.npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}
