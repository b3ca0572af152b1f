/// @file The appliance tree, and requests run in this process.
#include "tests/support/appliance.h"

#include "platform/appliance_paths.h"
#include "tests/support/seams.h"

#include <json/reader.h>
#include <sys/mman.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

namespace fs = std::filesystem;

namespace {

/// Puts a memory file holding `text` in the place of a standard descriptor for as long as it lives.
class Redirect {
public:
    Redirect(int fd, std::string const& text)
        : m_fd(fd), m_saved(::dup(fd)), m_file(::memfd_create("redirect", MFD_CLOEXEC))
    {
        EXPECT_EQ(::pwrite(m_file, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
        ::dup2(m_file, fd);
    }
    ~Redirect()
    {
        ::dup2(m_saved, m_fd);
        ::close(m_saved);
        ::close(m_file);
    }

    std::string Content() const
    {
        std::string text(static_cast<std::size_t>(::lseek(m_file, 0, SEEK_END)), '\0');
        EXPECT_EQ(::pread(m_file, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
        return text;
    }

private:
    int m_fd, m_saved, m_file;
};

std::string Variable(char const* name)
{
    char const* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

void SetVariable(char const* name, std::string const& value)
{
    if (value.empty()) {
        ::unsetenv(name);
    } else {
        ::setenv(name, value.c_str(), 1);
    }
}

/// Every file of the package and of the daemon, but locks, whose presence means nothing.
Files Snapshot()
{
    Files files;
    fs::path const root(appliance::kRoot);
    for (char const* folder : {"/var", "/etc"}) {
        for (auto const& entry : fs::recursive_directory_iterator(root.string() + folder)) {
            if (entry.is_regular_file() && entry.path().extension() != ".lock") {
                std::string const path = '/' + fs::relative(entry.path(), root).string();
                files[path] = Appliance::Read(path);
            }
        }
    }
    return files;
}

std::string JoinedLog()
{
    std::string lines;
    for (auto const& line : seams::logged) {
        lines += line.text + ';';
    }
    return lines;
}

/// What two texts are compared by: the document if it is JSON, else the text.
std::string Form(std::string const& text)
{
    Json::Value const document = Parsed(text);
    return document.isNull() ? text : document.toStyledString();
}

void Lay(Files const& files)
{
    for (auto const& [path, text] : files) {
        if (text.empty()) {
            Appliance::Remove(path);
        } else {
            Appliance::Write(path, text);
        }
    }
}

} // namespace

void Appliance::Reset()
{
    seams::Reset();
    fs::remove_all(appliance::kRoot);
    Lay({{"/etc/passwd", "admin:x:1024:100::/:\nviewer:x:1026:100::/:\nguest:x:1027:100::/:\n"
                         "locked:!:1028:100::/:\nnouid:x:4294967295:100::/:\n"},
         {"/etc/group", "users:x:100:\nadministrators:x:101:admin,nouid,ghost\n"},
         {kUsers, R"({"1026":{"dtv":true}})"},
         {kFolders, R"([{"section":"tv_record","share":"video","subpath":"tv"}])"}});
    for (char const* folder :
         {"/volume1/video/tv", "/var/run/dtvd", "/var/packages/Tremolane/etc/dtvschedules",
          "/var/packages/Tremolane/etc/dtvrepeatschedules"}) {
        fs::create_directories(PathOf(folder));
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
    Outcome outcome;
    {
        Redirect const input(STDIN_FILENO, request.body);
        Redirect const output(STDOUT_FILENO, "");
        api.Run();
        outcome.raw = output.Content();
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
    for (auto const& [path, text] : row.after) {
        expected[path] = text;
    }
    if (!row.commands.empty()) {
        expected[kCommands] += Replaced(row.commands, ";", "\n");
    }
    if (row.commandsBeforeFailure >= 0) {
        seams::failingPath = PathOf(kCommands);
        seams::opensBeforeFailure = row.commandsBeforeFailure;
    }
    Outcome const outcome = Run(Request{.query = row.query, .user = row.user});
    seams::failingPath.clear();
    EXPECT_EQ(outcome.codes, row.codes);
    EXPECT_EQ(outcome.body["success"].asBool(), row.codes.empty());
    EXPECT_EQ(outcome.body["error"]["code"].asInt(), row.codes.empty() ? 0 : row.codes.front());
    EXPECT_EQ(outcome.body["data"].toStyledString(), Parsed(row.data).toStyledString());
    EXPECT_EQ(JoinedLog(), row.log);
    Files const files = Snapshot();
    for (auto const& [path, text] : files) {
        EXPECT_EQ(Form(text), Form(expected[path])) << path;
    }
    for (auto const& [path, text] : expected) {
        EXPECT_EQ(files.contains(path), !text.empty()) << path;
    }
}

void Appliance::Check(Files const& base, std::vector<Row> const& rows, int now)
{
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name + ": " + row.query);
        CheckRow(base, row, now);
    }
}

void Appliance::Write(std::string const& path, std::string const& text)
{
    fs::create_directories(fs::path(PathOf(path)).parent_path());
    std::ofstream(PathOf(path)) << text;
}

std::string Appliance::Read(std::string const& path)
{
    std::ostringstream text;
    std::ifstream file(PathOf(path));
    if (file.peek() != std::ifstream::traits_type::eof()) {
        text << file.rdbuf();
    }
    return text.str();
}

void Appliance::Remove(std::string const& path)
{
    fs::remove_all(PathOf(path));
}

std::string Appliance::PathOf(std::string const& path)
{
    return appliance::kRoot + path;
}

Json::Value Parsed(std::string const& text)
{
    Json::Value document;
    std::unique_ptr<Json::CharReader> const reader(Json::CharReaderBuilder().newCharReader());
    try {
        if (reader->parse(text.data(), text.data() + text.size(), &document, nullptr)) {
            return document;
        }
    } catch (Json::Exception const&) { // nested deeper than the parser goes
    }
    return {};
}

std::string Replaced(std::string text, std::string const& from, std::string const& to)
{
    for (std::size_t at = text.find(from); at != std::string::npos;
         at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

Zone::Zone(char const* name) : m_old(Variable("TZ"))
{
    ::setenv("TZ", name, 1);
    ::tzset();
}

Zone::~Zone()
{
    SetVariable("TZ", m_old);
    ::tzset();
}
