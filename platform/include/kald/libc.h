/// @file The appliance's additions to the C library: settings files and child processes.
#pragma once

#include <cstddef>
#include <cstdio>

/// Reads the value of `key` from a file of key=value lines into `buffer`, cut to `size` with its
/// NUL. Returns the value's length before the cut; 0 if the key or the file is missing. `flags` is
/// always 0.
int KDLIBCFileGetKeyValue(char const* path, char const* key, char* buffer, std::size_t size,
                          int flags);

/// Starts `path` with the one argument `arg`, without a shell. A stream of its output, or null.
/// `mode` is always "r". The stream goes to KDLIBCPclose.
FILE* KDLIBCPopen(char const* path, char const* mode, char const* arg);

/// Closes a stream of KDLIBCPopen and waits for its process. The wait status, or -1.
int KDLIBCPclose(FILE* stream);
