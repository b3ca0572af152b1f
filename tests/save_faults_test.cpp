/// @file What is stored when a save meets a fault: the program is killed at each of its system
/// calls, or each of them fails; the disk is full, or read-only.
#include "tests/support/appliance.h"

#include <sched.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>

// Tables are laid out by hand.
// clang-format off
namespace {

using SaveFaultsTest = Appliance;

constexpr mode_t kMode = 0640; // no file has it by itself
constexpr rlim_t kRoom = 1 << 28; // no fault may make it take ever more memory
std::set<std::uint64_t> const kSafe = {SYS_exit_group, SYS_brk, SYS_close, SYS_futex}; // a close that fails has closed all the same
constexpr char const* kStores[] = {kOneShot, kRepeat, kUserDefine};

/// What came of a run of the program, and how many system calls it made.
struct Traced { Json::Value answer; int status = 0, calls = 0; };

/// Runs the program for a request. At its system call `nth`, counted from its first use of the heap on, it is killed,
/// or, if `error` is not 0, the call is left out and fails with it. Calls `look` at each of them.
Traced Trace(std::string const& query, int nth = 0, int error = 0, std::function<void()> const& look = [] {})
{
    Traced traced;
    int const output = ::memfd_create("answer", MFD_CLOEXEC);
    pid_t const child = ::fork();
    if (child == 0) {
        ::setenv("QUERY_STRING", query.c_str(), 1);
        ::setenv("REMOTE_USER", "admin", 1);
        ::dup2(output, STDOUT_FILENO);
        ::close(STDERR_FILENO);
        rlimit const room{kRoom, kRoom};
        ::setrlimit(RLIMIT_AS, &room);
        if (::ptrace(PTRACE_TRACEME) == 0) { ::execl(PROGRAM, PROGRAM, nullptr); }
        ::_exit(EXIT_FAILURE);
    }
    ::waitpid(child, &traced.status, 0);
    ::ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    std::optional<int> left; // the result of a call that is left out
    for (bool isLoaded = false; WIFSTOPPED(traced.status); ::waitpid(child, &traced.status, 0)) {
        __ptrace_syscall_info call{};
        bool const isCall = WSTOPSIG(traced.status) == (SIGTRAP | 0x80);
        if (isCall && ::ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof call, &call) > 0) {
            if (left) { ::ptrace(PTRACE_POKEUSER, child, offsetof(user, regs.rax), long{*left}); }
            left.reset();
            if (call.op == PTRACE_SYSCALL_INFO_ENTRY && !kSafe.contains(call.entry.nr)) {
                isLoaded = isLoaded || call.entry.nr == SYS_getrandom;
                traced.calls += isLoaded ? 1 : 0;
                if (traced.calls == nth && isLoaded) { left = -error; }
                if (left == 0) { ::kill(child, SIGKILL); }
                if (!left && call.entry.nr == SYS_fsync) { left = 0; } // nothing of this is to outlive the machine
                if (left) { ::ptrace(PTRACE_POKEUSER, child, offsetof(user, regs.orig_rax), -1L); }
            }
            look();
        }
        ::ptrace(PTRACE_SYSCALL, child, nullptr, isCall || WSTOPSIG(traced.status) == SIGTRAP ? 0 : WSTOPSIG(traced.status));
    }
    std::string text(4096, '\0');
    text.resize(static_cast<std::size_t>(std::max(::pread(output, text.data(), text.size(), 0), ssize_t{0})));
    ::close(output);
    traced.answer = Parsed(text.substr(std::min(text.find('{'), text.size())));
    return traced;
}

TEST_F(SaveFaultsTest, LeavesWholeDocumentsAtEverySystemCall)
{
    if (WEXITSTATUS(Trace("").status) != EXIT_SUCCESS) { GTEST_SKIP() << "no process may be traced here"; }
    SetZone("UTC"); // 2000001600 is Wednesday 2033-05-18 04:00, 2000005200 an hour later
    std::string const user = R"({"start_time":2000001600,"event_name":"E","text_name":"T","duration":1800,"input_duration":"00:30",
        "input_start_time":"04:00","input_start_date":"2033-05-18","tuner":0,"channel_name":"C","channel_id":"7@474","is_repeat":false,
        "isweekly":true,"weekdaystatus":"0,0,0,0,0,0,0","end_date":"1"})";
    std::string const shot = R"({"start_time":2000001600,"service_id":7,"frequency":474,"status":4,"title":"E","duration":1800,"uid":"1024"})";
    std::string const rule = R"({"id":9,"start_time":2000001600,"status":19,"isweekly":true,"weekdaystatus":"0,0,0,1,0,0,0","end_date":"2034-01-01"})";
    auto const later = [](std::string const& text) { return Replaced(Replaced(text, "2000001600", "2000005200"), "04:00", "05:00"); };
    std::string const days = "&start_time=2000001600&weekdaystatus=1,1,1,1,1,1,1&end_date=2034-02-01&isweekly=false";
    std::string const plan = "&start_date=2033-05-20&start_time=04:00&duration=00:30&title=N&channel_name=C&id=5&is_repeat=false";
    struct { char const* name; std::string query; char const* store; std::set<int> notSaved; } const rows[] = { // and the codes that say so
        {"create", "&id=5&start_time=2000001600", kOneShot, {403}}, {"create_repeat", "&id=5" + days, kRepeat, {403}},
        {"edit_repeat", "&id=9" + days, kRepeat, {403}}, {"delete_repeat", "&id=2000001600&channel_id=9", kRepeat, {}},
        {"create_userdefine", plan, kOneShot, {101, 403}}, {"delete_userdefine", "&id=2000001600", kOneShot, {}},
        {"edit_userdefine", "&orig_start_date=2033-05-18&orig_start_time=04:00" + plan, kOneShot, {}},
    };
    int faults = 0;
    std::filesystem::path const etc = PathOf("/var/packages/Tremolane/etc"), memory = "/dev/shm/save_faults." + std::to_string(::getpid());
    std::filesystem::copy(etc, memory, std::filesystem::copy_options::recursive); // disks take long over every rename
    std::filesystem::remove_all(etc);
    std::filesystem::create_directory_symlink(memory, etc);
    for (auto const& [name, query, store, notSaved] : rows) {
        std::string const request = std::string("tuner=0&method=") + name + query;
        std::map<std::string, std::set<std::string>> states; // each document that an undisturbed run shows
        auto const lay = [&] {
            for (auto const& [path, record] : {std::pair{kOneShot, shot}, {kRepeat, rule}, {kUserDefine, user}}) {
                Remove(path);
                Remove(path + std::string(".tmp"));
                Write(path, "[" + record + "," + later(record) + "]");
                ::chmod(PathOf(path).c_str(), kMode);
            }
        };
        lay();
        std::string const old = Read(store);
        int const calls = Trace(request, 0, 0, [&] { for (char const* path : kStores) { states[path].insert(Read(path)); } }).calls;
        std::string const made = Read(store);
        for (int fault = 0; fault < 2 * calls; ++fault, ++faults) {
            int const n = 1 + fault / 2, error = fault % 2 == 0 ? 0 : EIO;
            SCOPED_TRACE(std::string(name) + (error == 0 ? " killed at call " : " with a failing call ") + std::to_string(n));
            lay();
            Traced const traced = Trace(request, n, error);
            bool const isSaved = traced.answer["success"].asBool();
            EXPECT_TRUE(error == 0 || WIFEXITED(traced.status)) << traced.status;
            EXPECT_TRUE(!isSaved || notSaved.empty() || Parsed(Read(store)).size() == Parsed(made).size()) << Read(store);
            EXPECT_TRUE(!notSaved.contains(traced.answer["error"]["code"].asInt()) || Read(store) == old) << traced.answer.toStyledString() << Read(store);
            for (char const* path : kStores) {
                EXPECT_TRUE(error != 0 ? !Parsed(Read(path)).isNull() : states[path].contains(Read(path))) << Read(path);
            }
            EXPECT_TRUE(Trace(later(request)).answer["success"].asBool()) << "the next one does not succeed";
            for (char const* path : kStores) {
                struct stat info{};
                EXPECT_TRUE(::stat(PathOf(path).c_str(), &info) == 0 && (info.st_mode & 07777) == kMode) << path;
                EXPECT_FALSE(std::filesystem::exists(PathOf(path) + ".tmp")) << path;
            }
        }
    }
    std::filesystem::remove_all(memory);
    std::printf("%d faults, %zu files looked at after each\n", faults, std::size(kStores));
}

TEST_F(SaveFaultsTest, KeepsTheOldFileOnAFullAndOnAReadOnlyDisk)
{
    std::string const folder = PathOf("/var/packages/Tremolane/etc/dtvschedules"), create = "method=create&tuner=0&id=5&start_time=2000001600";
    if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount("none", folder.c_str(), "tmpfs", 0, "size=8k") != 0) {
        GTEST_SKIP() << "no disk may be mounted here";
    }
    std::string const full = "[" + std::string(5000, ' ') + "]";
    Write(kOneShot, full);
    EXPECT_EQ(Run("method=create&tuner=0&id=5&start_time=2000001600").codes, std::vector{403});
    EXPECT_EQ(Read(kOneShot), full);
    EXPECT_FALSE(std::filesystem::exists(PathOf(kOneShot) + ".tmp"));
    ASSERT_EQ(::mount("none", folder.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
    EXPECT_EQ(Run(create).codes, std::vector{403});
    EXPECT_EQ(Read(kOneShot), full);
    ASSERT_EQ(::mount("none", folder.c_str(), nullptr, MS_REMOUNT, "size=64k"), 0);
    EXPECT_EQ(Run(create).codes, std::vector<int>{});
    EXPECT_EQ(Parsed(Read(kOneShot)).size(), 1U);
    EXPECT_EQ(::umount(folder.c_str()), 0);
}

} // namespace
