/// @file The replaced C library calls: a program's own definition stands before the library's.
#include "tests/support/seams.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>

namespace seams {

std::vector<LogLine> logged;
std::optional<std::time_t> now;
std::vector<std::string> opened;
std::string failingPath;
int opensBeforeFailure;
std::optional<Ids> ids;

void Reset()
{
    logged.clear();
    now.reset();
    opened.clear();
    failingPath.clear();
    ids.reset();
}

static int Change(id_t Ids::*id, id_t real, id_t effective, id_t saved)
{
    bool const isUid = id == &Ids::uid;
    if (!ids) {
        long const call = isUid ? SYS_setresuid : SYS_setresgid;
        return static_cast<int>(syscall(call, real, effective, saved));
    }
    bool const effectiveAlone = real == ~id_t{0} && saved == ~id_t{0};
    ids->calls +=
        (effectiveAlone ? "" : "!") + ((isUid ? 'u' : 'g') + std::to_string(effective) + ' ');
    bool const fails = --ids->failing == 0;
    (*ids).*id = fails ? (*ids).*id : effective;
    return fails ? -1 : 0;
}

static void Record(int priority, char const* format, va_list arguments)
{
    char text[1024];
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): both callers have started it
    std::vsnprintf(text, sizeof text, format, arguments);
    logged.push_back({priority, text});
    if (ids) {
        ids->calls += std::to_string(priority) + ' ' + text;
    }
}

} // namespace seams

extern "C" {

// NOLINTBEGIN(readability-identifier-naming,bugprone-reserved-identifier): the library's names
void syslog(int priority, char const* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    seams::Record(priority, format, arguments);
    va_end(arguments);
}

void __syslog_chk(int priority, int /*flag*/, char const* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    seams::Record(priority, format, arguments);
    va_end(arguments);
}
// NOLINTEND(readability-identifier-naming,bugprone-reserved-identifier)

time_t time(time_t* out) noexcept
{
    timespec real{};
    clock_gettime(CLOCK_REALTIME, &real);
    time_t const now = seams::now.value_or(real.tv_sec);
    if (out != nullptr) {
        *out = now;
    }
    return now;
}

int open(char const* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): it is started above
    mode_t const mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    seams::opened.emplace_back(path);
    if (path == seams::failingPath && seams::opensBeforeFailure-- <= 0) {
        errno = EIO;
        return -1;
    }
    return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

// A call a line.
// clang-format off
using namespace seams;
uid_t geteuid() noexcept { return ids ? ids->uid : static_cast<uid_t>(syscall(SYS_geteuid)); }
gid_t getegid() noexcept { return ids ? ids->gid : static_cast<gid_t>(syscall(SYS_getegid)); }
int setresuid(uid_t real, uid_t effective, uid_t saved) noexcept { return Change(&Ids::uid, real, effective, saved); }
int setresgid(gid_t real, gid_t effective, gid_t saved) noexcept { return Change(&Ids::gid, real, effective, saved); }

} // extern "C"
