/// @file The appliance's additions to the C library: settings files and child processes.
#pragma once

#include <cstddef>
#include <cstdio>

/// Reads the value of `key` from a file of key=value lines into `buffer`, cut to `size` bytes
/// including the NUL. Returns the length of the uncut value, or 0 if the key or the file is
/// missing. `flags` is always 0.
int KDLIBCFileGetKeyValue(char const* path, char const* key, char* buffer, std::size_t size,
                          int flags);

/// Runs the program `path` with the single argument `arg`, without a shell. Returns a stream of its
/// output, or null on failure. `mode` is always "r". The caller closes the stream with
/// KDLIBCPclose().
FILE* KDLIBCPopen(char const* path, char const* mode, char const* arg);

/// Closes a stream from KDLIBCPopen() and waits for its process. Returns the wait status, or -1.
int KDLIBCPclose(FILE* stream);
