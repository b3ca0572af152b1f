/// @file The appliance tree, and requests run in this process.
#include "tests/support/appliance.h"

#include "tests/support/seams.h"

#include <json/reader.h>
#include <sys/mman.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace fs = std::filesystem;

namespace {

/// A memory file that holds `text`, to stand in the place of a standard stream.
int MemoryFile(std::string const& text)
{
    int const fd = ::memfd_create("stream", MFD_CLOEXEC);
    EXPECT_EQ(::pwrite(fd, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
    return fd;
}

void SetVariable(char const* name, std::string const& value)
{
    value.empty() ? ::unsetenv(name) : ::setenv(name, value.c_str(), 1);
}

std::string Content(std::string const& path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Every file of the tree, but locks, whose presence means nothing.
Files Snapshot()
{
    Files files;
    for (auto const& entry : fs::recursive_directory_iterator(appliance::kRoot)) {
        if (entry.is_regular_file() && entry.path().extension() != ".lock") {
            std::string const path = entry.path().string();
            files[path.substr(sizeof appliance::kRoot - 1)] = Content(path);
        }
    }
    return files;
}

/// What two texts are compared by: the document if it is JSON, else the text.
std::string Form(std::string const& text)
{
    Json::Value const document = Parsed(text);
    return document.isNull() ? text : document.toStyledString();
}

} // namespace

void Appliance::SetUp()
{
    static char const* const started = std::getenv("TZ");
    static std::string const zone = started != nullptr ? started : "";
    SetZone(zone);
    Reset();
}

void Appliance::SetZone(std::string const& name)
{
    SetVariable("TZ", name);
    ::tzset();
}

void Appliance::Reset()
{
    seams::Reset();
    Remove("");
    Lay({{"/etc/passwd", "admin:x:1024:100::/:\nviewer:x:1026:100::/:\nguest:x:1027:100::/:\n"
                         "locked:!:1028:100::/:\nnouid:x:4294967295:100::/:\n"},
         {"/etc/group", "users:x:100:guest\nadministrators:x:101:admin,nouid,ghost\n"},
         {kUsers, "{'1026':{'dtv':true}}"},
         {kFolders, "[{'section':'tv_record','share':'video','subpath':'tv'}]"}});
    fs::create_directories(PathOf("/volume1/video/tv"));
    for (char const* file : {kOneShot, kRepeat, kCommands}) {
        fs::create_directories(fs::path(PathOf(file)).parent_path());
    }
}

Outcome Appliance::RunAs(Request const& request, KALD::WebAPI& api, Json::Value const& errors)
{
    // Whatever runs in this process, the class has read its environment only from here.
    SetVariable("QUERY_STRING", request.query);
    SetVariable("REMOTE_USER", request.user);
    SetVariable("REQUEST_METHOD", request.method);
    SetVariable("CONTENT_LENGTH", request.contentLength);
    SetVariable("CONTENT_TYPE", request.contentType);
    std::fflush(stdout);
    int const input = MemoryFile(request.body), output = MemoryFile("");
    int const saved = ::dup(STDOUT_FILENO);
    ::dup2(input, STDIN_FILENO);
    ::dup2(output, STDOUT_FILENO);
    api.Run();
    ::dup2(saved, STDOUT_FILENO);
    Outcome outcome{Content("/proc/self/fd/" + std::to_string(output)), {}, {}};
    for (int const fd : {input, output, saved}) {
        ::close(fd);
    }
    for (Json::Value const& code : errors) {
        outcome.codes.push_back(code.asInt());
    }
    std::size_t const body = outcome.raw.find("\r\n\r\n");
    outcome.body = Parsed(body == std::string::npos ? "" : outcome.raw.substr(body + 4));
    return outcome;
}

void Appliance::CheckRow(Files const& base, Row const& row, int now)
{
    Reset();
    seams::now = now != 0 ? std::optional<std::time_t>(now) : std::nullopt;
    Lay(base);
    Lay(row.before);
    Files expected = Snapshot();
    expected[kCommands] += Replaced(row.commands, ";", "\n");
    seams::failingPath = row.commandsBeforeFailure < 0 ? "" : PathOf(kCommands);
    seams::opensBeforeFailure = row.commandsBeforeFailure;
    Outcome const outcome = Run(Request{.query = row.query, .user = row.user});
    EXPECT_EQ(outcome.codes, row.codes);
    EXPECT_EQ(outcome.body["success"].asBool(), row.codes.empty());
    EXPECT_EQ(outcome.body["error"]["code"].asInt(), row.codes.empty() ? 0 : row.codes.front());
    EXPECT_EQ(outcome.body["data"], Parsed(row.data));
    EXPECT_EQ(seams::logged.size(), row.log.empty() ? 0U : 1U);
    EXPECT_EQ(seams::logged.empty() ? "" : seams::logged[0].text, row.log);
    Files files = Snapshot();
    for (auto const& [path, text] : row.after) {
        EXPECT_EQ(Form(files[path]), Form(text)) << path;
        expected[path] = files[path];
    }
    for (auto const& [path, text] : expected) {
        EXPECT_EQ(files[path], text) << path;
    }
    EXPECT_EQ(files.size(), expected.size());
}

void Appliance::Check(Files const& base, std::vector<Row> const& rows, int now)
{
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name + ": " + row.query);
        CheckRow(base, row, now);
    }
}

std::vector<Row> Variants(std::string const& query, std::vector<int> const& codes,
                          std::vector<std::pair<char const*, char const*>> const& replacements)
{
    std::vector<Row> rows;
    for (auto const& [from, to] : replacements) {
        rows.emplace_back("variant", Replaced(query, from, to)).codes = codes;
    }
    return rows;
}

void Appliance::Write(std::string const& path, std::string const& text)
{
    fs::create_directories(fs::path(PathOf(path)).parent_path());
    std::ofstream(PathOf(path)) << text;
}

std::string Appliance::Read(std::string const& path)
{
    return Content(PathOf(path));
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
    try {
        return parseFromStream(builder, stream, &document, nullptr) ? document : Json::Value();
    } catch (Json::Exception const&) { // nested deeper than the parser goes
        return {};
    }
}

std::string Replaced(std::string text, std::string const& from, std::string const& to)
{
    for (std::size_t at = text.find(from); at != std::string::npos;
         at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

std::string List(std::vector<std::string> const& elements)
{
    std::string text;
    for (std::string const& element : elements) {
        text += (text.empty() ? "" : ",") + element;
    }
    return '[' + text + ']';
}
