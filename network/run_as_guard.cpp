/// @file Switching the effective ids to root and back.
#include "network/run_as_guard.h"

#include <syslog.h>
#include <unistd.h>

namespace Tremolane::network_utils {

namespace {

constexpr std::uint32_t kRoot = 0;

/// All ones: setresuid() and setresgid() leave such an id unchanged, so it cannot be restored.
constexpr std::uint32_t kNoId = ~std::uint32_t{0};

/// Switches the uid first, because only root may switch to any group. Sets the uid again at the
/// end; that fails if the process lost the right to it when it switched the group.
bool BecomeRoot()
{
    uid_t const uid = ::geteuid();
    gid_t const gid = ::getegid();
    if (uid != kRoot && ::setresuid(kNoId, kRoot, kNoId) < 0) {
        return false;
    }
    if (gid != kRoot && ::setresgid(kNoId, kRoot, kNoId) != 0) {
        return false;
    }
    return uid == kRoot || ::setresuid(kNoId, kRoot, kNoId) == 0;
}

/// Restores the uid last, for the same reason. If the guarded block gave up root, becomes root
/// again first.
bool GoBackTo(std::uint32_t savedUid, std::uint32_t savedGid)
{
    uid_t const uid = ::geteuid();
    gid_t const gid = ::getegid();
    if (uid != kRoot && uid != savedUid && ::setresuid(kNoId, kRoot, kNoId) < 0) {
        return false;
    }
    if (gid != savedGid && savedGid != kNoId && ::setresgid(kNoId, savedGid, kNoId) != 0) {
        return false;
    }
    return uid == savedUid || savedUid == kNoId || ::setresuid(kNoId, savedUid, kNoId) == 0;
}

} // namespace

RunAsGuard::RunAsGuard(int sourceLine)
    : m_savedEuid(::geteuid()), m_savedEgid(::getegid()), m_sourceFile("network_utils"),
      m_sourceLine(sourceLine), m_name("IF_RUN_AS"), m_ok(BecomeRoot())
{
    if (!m_ok) {
        ::syslog(LOG_AUTH | LOG_ERR, "%s:%d ERROR: %s(%d, %d)", m_sourceFile, m_sourceLine, m_name,
                 static_cast<int>(kRoot), static_cast<int>(kRoot));
    }
}

RunAsGuard::~RunAsGuard()
{
    if (!GoBackTo(m_savedEuid, m_savedEgid)) {
        ::syslog(LOG_AUTH | LOG_CRIT, "%s:%d ERROR: ~%s(%d, %d)", m_sourceFile, m_sourceLine,
                 m_name, static_cast<int>(m_savedEuid), static_cast<int>(m_savedEgid));
    }
}

} // namespace Tremolane::network_utils
