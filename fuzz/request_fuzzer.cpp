/// @file Fuzz target: a whole request from any client, over stored files of any content. Whatever
/// they hold, one well-formed answer comes, and a stored document never becomes a broken one.
///
/// Without a fuzzer it replays the inputs of a folder. An input can be read and written by hand:
/// lines `--` separate the query string, the user, the form and the files. Texts that are missing
/// are empty.
#undef NDEBUG // what does not hold ends the process, and so fails the input
#include <cassert>

#include "frame/schedule_recording_api.h"
#include "platform/appliance_paths.h"
#include "platform/standin/files.h"
#include "platform/standin/json_reader.h"
#include "platform/standin/json_writer.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <vector>

extern "C" int fsync(int /*fd*/)
{
    return 0; // the inputs come by the thousand, and nothing of them is to outlive the machine
}

namespace {

std::string const kFiles[] = {appliance::OneShotFile(0), appliance::RepeatFile(0),
                              appliance::kUserDefineFile, appliance::kFolderList,
                              appliance::kPrivilegeFile};
constexpr std::size_t kParts = 3; // of the request, before the files

/// Replaces a file; makes the folders that are missing. Empty text removes the file.
void PutFile(std::string const& path, std::string const& text)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::filesystem::remove(path); // file systems flush what is truncated and rewritten
    if (!text.empty()) {
        std::ofstream(path, std::ios::binary) << text;
    }
}

std::string ReadFile(std::string const& path)
{
    std::string text;
    standin::ReadFile(path.c_str(), text);
    return text;
}

std::vector<std::string> Cut(std::string input)
{
    std::vector<std::string> texts(kParts + std::size(kFiles));
    for (std::string& text : texts) {
        std::size_t const end = input.find("\n--\n");
        text = input.substr(0, end);
        input.erase(0, end == std::string::npos ? end : end + 4);
    }
    return texts;
}

/// Runs a request; returns all that the program would print.
std::string Answer(std::string const& query, std::string const& user, std::string const& form)
{
    std::string const in = appliance::kRoot + std::string("/in");
    std::string const out = appliance::kRoot + std::string("/out");
    ::setenv("QUERY_STRING", query.c_str(), 1);
    ::setenv("REMOTE_USER", user.c_str(), 1);
    ::setenv("REQUEST_METHOD", form.empty() ? "GET" : "POST", 1);
    ::setenv("CONTENT_TYPE", "application/x-www-form-urlencoded", 1);
    ::setenv("CONTENT_LENGTH", std::to_string(form.size()).c_str(), 1);
    PutFile(in, form + '\n');
    assert(std::freopen(in.c_str(), "r", stdin) != nullptr);
    assert(std::freopen(out.c_str(), "w", stdout) != nullptr);
    ScheduleRecordingAPI().Run();
    return ReadFile(out);
}

/// A file is as before or holds JSON, of which the next save loses nothing.
void RequireDocument(std::string const& text, std::string const& before)
{
    Json::Value document, saved;
    assert(standin::ParseJson(text, document) || text == before);
    standin::ParseJson(RenderJson(document, standin::Charset::kUtf8), saved);
    assert(saved == document);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::vector<std::string> const texts = Cut({reinterpret_cast<char const*>(data), size});
    PutFile(appliance::kPasswordFile, "admin:x:1024:100::/:\nviewer:x:1026:100::/:\n");
    PutFile(appliance::kGroupFile, "administrators:x:101:admin\n");
    PutFile(std::string(appliance::kVolumeFolder) + "/video/tv/x", "x");
    PutFile(appliance::kDaemonCommands, "");
    for (std::size_t i = 0; i < std::size(kFiles); ++i) {
        PutFile(kFiles[i], texts[kParts + i]);
    }
    std::string const answer = Answer(texts[0], texts[1], texts[2]);
    Json::Value body;
    assert(standin::ParseJson(answer.substr(answer.find("\r\n\r\n")), body));
    assert(body["success"].isBool());
    for (std::size_t i = 0; i < std::size(kFiles); ++i) {
        RequireDocument(ReadFile(kFiles[i]), texts[kParts + i]);
    }
    return 0;
}

#ifdef REPLAY
int main(int /*count*/, char** arguments)
{
    for (auto const& entry : std::filesystem::directory_iterator(arguments[1])) {
        std::string const text = ReadFile(entry.path());
        std::fprintf(stderr, "%s\n", entry.path().c_str()); // the last one is the one that failed
        LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const*>(text.data()), text.size());
    }
}
#endif
