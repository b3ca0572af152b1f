/// @file Fuzz target: a whole request from any client, over stored files of any content. Whatever
/// they hold, one well-formed answer comes, and a stored document never becomes a broken one.
#include "frame/schedule_recording_api.h"
#include "fuzz/fuzz_target.h"
#include "platform/standin/json_reader.h"

#include <json/value.h>
#include <sys/mman.h>
#include <unistd.h>

extern "C" int fsync(int /*fd*/)
{
    return 0; // the inputs come by the thousand, and nothing of them is to outlive the machine
}

namespace {

std::string const kFiles[] = {appliance::OneShotFile(0), appliance::RepeatFile(0),
                              appliance::kUserDefineFile, appliance::kFolderList,
                              appliance::kPrivilegeFile};

/// Puts a memory file with that text in the place of a descriptor.
void Redirect(int descriptor, std::string const& text)
{
    int const file = ::memfd_create("stream", 0);
    Require(::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()));
    ::lseek(file, 0, SEEK_SET);
    ::dup2(file, descriptor);
    ::close(file);
}

/// Runs a request, whose parts are the query string, the user, the HTTP method and a form; returns
/// all that the program would print.
std::string Answer(std::string const* parts)
{
    ::setenv("QUERY_STRING", parts[0].c_str(), 1);
    ::setenv("REMOTE_USER", parts[1].c_str(), 1);
    ::setenv("REQUEST_METHOD", parts[2].c_str(), 1);
    ::setenv("CONTENT_TYPE", "application/x-www-form-urlencoded", 1);
    ::setenv("CONTENT_LENGTH", std::to_string(parts[3].size()).c_str(), 1);
    Redirect(STDIN_FILENO, parts[3]);
    Redirect(STDOUT_FILENO, "");
    ScheduleRecordingAPI().Run();
    std::string answer(static_cast<std::size_t>(::lseek(STDOUT_FILENO, 0, SEEK_END)), '\0');
    Require(::pread(STDOUT_FILENO, answer.data(), answer.size(), 0) >= 0);
    return answer;
}

/// Headers, an empty line and one line of JSON.
void RequireAnswer(std::string const& answer)
{
    std::size_t const headersEnd = answer.find("\r\n\r\n");
    Require(headersEnd != std::string::npos);
    std::string const body = answer.substr(headersEnd + 4);
    Json::Value document;
    Require(body.find('\n') == body.size() - 1 && standin::ParseJson(body, document));
    Require(document["success"].isBool());
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    constexpr std::size_t kParts = 4; // of the request
    std::vector<std::string> const texts = CutInput(data, size, kParts + std::size(kFiles));
    Put(appliance::kPasswordFile, "admin:x:1024:100::/:\nviewer:x:1026:100::/:\n");
    Put(appliance::kGroupFile, "administrators:x:101:admin\n");
    Put(std::string(appliance::kVolumeFolder) + "/video/tv/x", "x");
    Put(appliance::kDaemonCommands, "");
    for (std::size_t i = 0; i < std::size(kFiles); ++i) {
        Put(kFiles[i], texts[kParts + i]);
    }
    RequireAnswer(Answer(texts.data()));
    for (std::size_t i = 0; i < std::size(kFiles); ++i) {
        std::ifstream file(kFiles[i], std::ios::binary);
        std::string const text(std::istreambuf_iterator<char>(file), {});
        Json::Value document;
        Require(text == texts[kParts + i] || standin::ParseJson(text, document));
    }
    return 0;
}
