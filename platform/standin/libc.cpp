/// @file Reading settings files and running child processes.
#include "kald/libc.h"

#include "platform/appliance_paths.h"
#include "platform/standin/files.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <csignal>
#include <cstring>
#include <sstream>
#include <string>
#include <string_view>
#include <unordered_map>

namespace {

/// The running children of this process, by the stream of their output: KDLIBCPclose() gets no
/// more than that.
std::unordered_map<FILE*, pid_t> children;

/// Starts a program with its standard output redirected to `output`. Returns false on failure.
bool Spawn(pid_t* pid, char const* program, char const* argument, int output)
{
    // POSIX: posix_spawn() changes no argument.
    char* const arguments[] = {const_cast<char*>(program), const_cast<char*>(argument), nullptr};
    posix_spawnattr_t attributes; // a child would inherit the signals that are ignored here
    ::posix_spawnattr_init(&attributes);
    sigset_t defaults;
    ::sigemptyset(&defaults);
    ::sigaddset(&defaults, SIGPIPE);
    ::sigaddset(&defaults, SIGXFSZ);
    ::posix_spawnattr_setsigdefault(&attributes, &defaults);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    bool const isStarted =
        ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0) == 0 &&
        ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO) == 0 &&
        ::posix_spawn(pid, program, &actions, &attributes, arguments, environ) == 0;
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
    return isStarted;
}

/// Returns the value in a line `key=value` or `key="value"`. Returns a view with null data if the
/// line does not have that key.
std::string_view ValueInLine(std::string_view line, std::string_view key)
{
    if (!line.starts_with(key) || !line.substr(key.size()).starts_with('=')) {
        return {};
    }
    std::string_view value = line.substr(key.size() + 1);
    if (value.size() >= 2 && value.starts_with('"') && value.ends_with('"')) {
        value = value.substr(1, value.size() - 2);
    }
    return value;
}

} // namespace

int KDLIBCFileGetKeyValue(char const* path, char const* key, char* buffer, std::size_t size,
                          int /*flags*/)
{
    std::string text;
    if (!standin::ReadFile(path, text)) {
        return 0;
    }
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::string_view const value = ValueInLine(line, key);
        if (value.data() != nullptr) {
            std::snprintf(buffer, size, "%.*s", static_cast<int>(value.size()), value.data());
            return static_cast<int>(value.size());
        }
    }
    return 0;
}

FILE* KDLIBCPopen(char const* path, char const* mode, char const* arg)
{
    int ends[2];
    if (std::strcmp(mode, "r") != 0 || ::pipe2(ends, O_CLOEXEC) != 0) {
        return nullptr;
    }
    standin::UniqueFd reading(ends[0]);
    standin::UniqueFd const writing(ends[1]);
    FILE* const stream = ::fdopen(reading.Get(), "r");
    if (stream == nullptr) {
        return nullptr;
    }
    reading.Release();
    pid_t pid = -1;
    if (!Spawn(&pid, (std::string(appliance::kRoot) + path).c_str(), arg, writing.Get())) {
        std::fclose(stream);
        return nullptr;
    }
    children[stream] = pid;
    return stream;
}

int KDLIBCPclose(FILE* stream)
{
    auto const child = children.extract(stream);
    if (child.empty()) {
        return -1;
    }
    std::fclose(stream);
    int status = 0;
    return TEMP_FAILURE_RETRY(::waitpid(child.mapped(), &status, 0)) < 0 ? -1 : status;
}
