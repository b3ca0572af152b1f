/// @file The Web API error codes that this endpoint sets itself. The codes of the recording service
/// come from MappErrorCode().
#pragma once

/// A store, file, user or daemon operation failed, and there is no more specific code. Try again
/// later. The system log has the details.
inline constexpr int kErrorFailed = 100;
/// A parameter is missing, empty, malformed, out of range or inconsistent, or refers to something
/// that is not stored. Correct the request.
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
