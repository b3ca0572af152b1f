/// @file The names and numbers under which failures of the methods stand in the system log.
#pragma once

/// The first argument of every log line. The second is one of the numbers below.
inline constexpr char kLogSource[] = "schedule_recording";

/// Numbers that tell support which step failed. They are part of the log format, not lines of this
/// source.
enum SupportCode : int {
    kOneShotUserLookup = 661,  ///< create: the login user could not be looked up
    kOneShotUserUid = 667,     ///< create: the login user has no uid
    kRepeatUserLookup = 856,   ///< create_repeat: the login user could not be looked up
    kRepeatUserUid = 862,      ///< create_repeat: the login user has no uid
    kRepeatInfoLoad = 926,     ///< getinfo_repeat: the repeat file could not be loaded
    kRepeatDeleteLoad = 1032,  ///< delete_repeat: the repeat file could not be loaded
    kRepeatDeleteSave = 1051,  ///< delete_repeat: the repeat file could not be saved
    kUserDefineEditSave = 1325 ///< edit_userdefine: the one-shot file could not be saved
};
