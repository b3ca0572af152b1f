/// @file The paths of the appliance's files. Each starts with APPLIANCE_ROOT, a string literal that
/// the build defines: empty on an appliance, a folder of the build tree for development.
#pragma once

#include <string>

#define PACKAGE_FOLDER APPLIANCE_ROOT "/var/packages/Tremolane/etc"

namespace appliance {

inline constexpr char kRoot[] = APPLIANCE_ROOT;
inline constexpr char kPrivilegeFile[] = PACKAGE_FOLDER "/users.conf";
inline constexpr char kFolderList[] = PACKAGE_FOLDER "/folder.conf";
inline constexpr char kUserDefineFile[] = PACKAGE_FOLDER "/dtvuserdefineschedules.json";
inline constexpr char kSettingsFile[] = APPLIANCE_ROOT "/etc/kaldinfo.conf";
inline constexpr char kPasswordFile[] = APPLIANCE_ROOT "/etc/passwd";
inline constexpr char kGroupFile[] = APPLIANCE_ROOT "/etc/group";
inline constexpr char kWebApiFolder[] = APPLIANCE_ROOT "/usr/kald/webapi";
inline constexpr char kVolumeFolder[] = APPLIANCE_ROOT "/volume1";
inline constexpr char kDaemonCommands[] = APPLIANCE_ROOT "/var/run/dtvd/commands";

/// Returns the path of a tuner's file of one-shot schedules.
inline std::string OneShotFile(int tuner)
{
    return PACKAGE_FOLDER "/dtvschedules/" + std::to_string(tuner) + "dtv_schedule.json";
}

/// Returns the path of a tuner's file of repeat schedules.
inline std::string RepeatFile(int tuner)
{
    return PACKAGE_FOLDER "/dtvrepeatschedules/" + std::to_string(tuner) +
           "dtv_repeat_schedule.json";
}

} // namespace appliance
