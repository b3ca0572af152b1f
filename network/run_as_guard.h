/// @file Running a block of code as root.
#pragma once

#include <cstdint>

namespace Tremolane::network_utils {

/// Sets the effective uid and gid of the process to root's while the guard lives. The real and the
/// saved ids do not change. The change affects the whole process, so no other thread may run
/// meanwhile. If it fails, the guard logs the failure to the facility LOG_AUTH and Ok() returns
/// false. The destructor restores the ids in either case.
class RunAsGuard {
public:
    /// `sourceLine` identifies the guarded block in the log.
    explicit RunAsGuard(int sourceLine);
    ~RunAsGuard();
    RunAsGuard(RunAsGuard const&) = delete;
    RunAsGuard& operator=(RunAsGuard const&) = delete;

    /// Returns whether both ids are root's, so that the guarded block may run.
    bool Ok() const { return m_ok; }

private:
    std::uint32_t m_savedEuid;
    std::uint32_t m_savedEgid;
    char const* m_sourceFile;
    int m_sourceLine;
    char const* m_name;
    bool m_ok;
};

} // namespace Tremolane::network_utils
