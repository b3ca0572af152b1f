/// @file A block of code that runs as root.
#pragma once

#include <cstdint>

namespace Tremolane::network_utils {

/// Makes root and its group the effective ids of the whole process for as long as it lives; the
/// real and the saved ids stay. Nothing else may run in the process meanwhile. A failure is logged
/// to the facility auth: it leaves Ok() false, and the ids are set back as far as they were
/// changed.
class RunAsGuard {
public:
    /// `sourceLine` names the guarded block in the log.
    explicit RunAsGuard(int sourceLine);
    ~RunAsGuard();
    RunAsGuard(RunAsGuard const&) = delete;
    RunAsGuard& operator=(RunAsGuard const&) = delete;

    /// Whether both ids are root's, so that the guarded block may run.
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
