/// @file The Web API error codes that this endpoint sets itself. The recording service's own codes
/// come beside them, through MappErrorCode.
#pragma once

/// A store, file, user or daemon operation failed and no finer code exists. Try again later; the
/// system log tells more.
inline constexpr int kErrorFailed = 100;
/// A parameter is missing, empty, not parsable, out of range or inconsistent, or names nothing that
/// is stored. Correct the request.
inline constexpr int kErrorBadParameter = 101;
/// The login user lacks the privilege. An administrator can grant it.
inline constexpr int kErrorNoPrivilege = 105;
/// There is no valid login. Log in and ask again.
inline constexpr int kErrorNoLogin = 106;
/// The account is locked. Only an administrator can help.
inline constexpr int kErrorLocked = 107;
/// The new times overlap another recording. Choose other times.
inline constexpr int kErrorOverlap = 405;
/// No folder for TV recordings exists on the appliance. Set one up first.
inline constexpr int kErrorNoRecordFolder = 406;
