#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

namespace zav {

// Reading a file named by the user or a profile: only a regular file is read, so that a
// folder, a device (/dev/zero) or a pipe with no writer gives a refusal instead of an
// exception, an endless read or a blocked window. Nothing here throws.

// The whole content of `path` when it is a regular file of at most `maxBytes` bytes (also
// checked while reading, for files whose size the system does not know in advance). False
// and `error` in words otherwise: "it is a folder", "it is not a regular file", "it is
// larger than N bytes", or the system's reason ("No such file or directory").
bool ReadRegularFile(const std::string& path, std::size_t maxBytes, std::string& bytes,
                     std::string* error = nullptr);

// Opens `path` for reading in binary mode when it is a regular file; nullptr and `error` as
// above otherwise. The caller closes the stream.
std::FILE* OpenRegularFile(const std::string& path, std::string* error = nullptr);

// Creates `path` for writing, failing when anything (a file, a planted link) is already
// there: the file is this program's own and nothing else is written through it. nullptr and
// `error` on failure.
std::FILE* CreateExclusiveFile(const std::string& path, std::string* error = nullptr);

// Narrows a file that holds a secret (a password) to its owner: 0600. False when the mode
// cannot be changed.
bool RestrictToOwner(const std::string& path);

// The system's reason for the last failed call, in words ("No space left on device").
std::string LastErrorText();

} // namespace zav
