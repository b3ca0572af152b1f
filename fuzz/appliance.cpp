/// @file Files over the standard library, and requests whose input and output are memory files.
#include "fuzz/appliance.h"

#include "frame/schedule_recording_api.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

namespace fuzz {

namespace {

/// Puts an empty memory file in the place of a descriptor.
void Empty(int descriptor)
{
    int const file = ::memfd_create("stream", 0);
    ::dup2(file, descriptor);
    ::close(file);
}

} // namespace

void LayAppliance()
{
    fs::remove_all(appliance::kRoot);
    for (std::string const& path : {appliance::OneShotFile(0), appliance::RepeatFile(0),
                                    std::string(appliance::kDaemonCommands)}) {
        fs::create_directories(fs::path(path).parent_path());
    }
    fs::create_directories(std::string(appliance::kVolumeFolder) + "/video/tv");
    Put(appliance::kPasswordFile, "admin:x:1024:100::/:\nviewer:x:1026:100::/:\n");
    Put(appliance::kGroupFile, "administrators:x:101:admin\n");
}

void Put(std::string const& path, std::string const& text)
{
    fs::create_directories(fs::path(path).parent_path());
    fs::remove(path); // file systems flush what is truncated and rewritten
    if (!text.empty()) {
        std::ofstream(path, std::ios::binary) << text;
    }
}

std::string ContentOf(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string Answer(Request const& request)
{
    ::setenv("QUERY_STRING", request.query.c_str(), 1);
    ::setenv("REMOTE_USER", request.user.c_str(), 1);
    ::setenv("REQUEST_METHOD", request.method.c_str(), 1);
    ::setenv("CONTENT_TYPE", "application/x-www-form-urlencoded", 1);
    ::setenv("CONTENT_LENGTH", std::to_string(request.body.size()).c_str(), 1);
    Empty(STDIN_FILENO);
    Empty(STDOUT_FILENO);
    if (::pwrite(STDIN_FILENO, request.body.data(), request.body.size(), 0) < 0) {
        std::abort();
    }
    ScheduleRecordingAPI().Run();
    std::string answer(static_cast<std::size_t>(::lseek(STDOUT_FILENO, 0, SEEK_END)), '\0');
    if (::pread(STDOUT_FILENO, answer.data(), answer.size(), 0) < 0) {
        std::abort();
    }
    return answer;
}

} // namespace fuzz
