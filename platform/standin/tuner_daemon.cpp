/// @file Commanding the tuner daemon through its control file, which has one command a line.
#include "tremolane/tuner_daemon.h"

#include "platform/appliance_paths.h"
#include "platform/standin/transaction.h"
#include "platform/standin/unique_fd.h"

#include <fcntl.h>
#include <syslog.h>

#include <cerrno>
#include <cstring>
#include <string>

namespace {

/// Writes out the stores, which the daemon may read, and appends one command, with a single write
/// in append mode, so that the commands of concurrent requests never mix. Returns false on failure.
bool Command(std::string const& line)
{
    if (!standin::Transaction::WriteOut()) {
        return false;
    }
    constexpr mode_t kMode = 0644;
    standin::UniqueFd const fd(::open(
        appliance::kDaemonCommands, O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_CLOEXEC, kMode));
    bool const isWritten =
        fd && ::write(fd.Get(), line.data(), line.size()) == static_cast<ssize_t>(line.size());
    if (!isWritten) {
        ::syslog(LOG_ERR, "cannot tell the tuner daemon by %s: %s", appliance::kDaemonCommands,
                 std::strerror(errno));
    }
    return isWritten;
}

} // namespace

bool KALDDTVDReloadSchedule()
{
    return Command("reload\n");
}

bool KALDDTVDStopRecording(int tuner, int start, int frequency, int service)
{
    return Command("stop " + std::to_string(tuner) + ' ' + std::to_string(start) + ' ' +
                   std::to_string(frequency) + ' ' + std::to_string(service) + '\n');
}
