// The file-system boundary. Paths are stored as the host gave them, with
// backslashes; POSIX maps '\' to '/' right here, just before the system call.
#pragma once

#include <ace/SString.h>

#include <cstdio>
#include <ctime>
#include <vector>

// Existence test (access mode 0) on a wide path.
bool wideFileExists(const ACE_WCHAR_T *path);

// Existence test (access mode 0) on a path in the ANSI code page.
bool ansiFileExists(const char *path);

// Reads the modification time, in whole seconds, of a path in the ANSI code
// page. False when the file's status cannot be read.
bool ansiModificationTime(const char *path, time_t &seconds);

// Opens a path in the ANSI code page; mode as for fopen ("rb" for binary).
FILE *ansiOpenFile(const char *path, const char *mode);

// Opens a wide path; mode as for fopen.
FILE *wideOpenFile(const ACE_WCHAR_T *path, const char *mode);

// The path as the system call sees it (backslashes become slashes on POSIX).
ACE_CString systemPath(const char *path);

// Reads a whole file, in binary mode, named by a wide path. False when it
// cannot be opened or read.
bool readWholeFile(const ACE_WCHAR_T *path, std::vector<char> &content);
// The same for a path in the ANSI code page.
bool readWholeAnsiFile(const char *path, std::vector<char> &content);

// Whether a path names its file from the root of a drive or of the file
// system, rather than from the working directory.
bool isAbsolutePath(const ACE_WString &path);
// The process's working directory; empty when it cannot be read.
ACE_WString workingDirectory();
// Puts `from` in the place of `to` in one step, so that a reader of `to`
// sees the old file or the new one, never a half-written one. False when the
// system refuses.
bool replaceFile(const ACE_WCHAR_T *from, const ACE_WCHAR_T *to);
// The value of an environment variable; empty when it is unset or empty.
ACE_WString environmentValue(const char *name);
