// A change watch on the folder of one file, so that a file reader learns
// whether its file may have been edited without asking the file system for
// the file's status at each use.
//
// All watches of the process share one notifier (an inotify descriptor on
// POSIX; on Windows one change-notification handle per folder): every folder
// is watched once, however many readers read files in it, and the notifier
// is released with its last watch. A look at the notifier never waits: it
// takes what the system has already queued, and the system queues a change
// before the call that made it returns, so an edit saved before a look is
// seen by that look.
//
// Where a folder cannot be watched (the system's watch limit is reached, the
// folder is on a file system that does not report changes, the file is a
// link into another folder), the watch falls back: the reader checks the
// file's time at each use, as it would without a watch.
#pragma once

#include <ace/SString.h>

#include <cstdint>

class FileWatch {
public:
  FileWatch() = default;
  ~FileWatch();
  FileWatch(const FileWatch &) = delete;
  FileWatch &operator=(const FileWatch &) = delete;

  // Starts watching the folder of the file. `widePath` and `ansiPath` name
  // the same file (backslashes allowed). True when the folder is watched;
  // false when the watch falls back, with `reason` saying why and
  // `firstFallback` true for the first fallback while any watch is alive
  // (the caller says so once in the log).
  bool start(const ACE_WString &widePath, const ACE_CString &ansiPath, ACE_WString &reason,
             bool &firstFallback);
  // Releases the folder's watch (the notifier with the last one).
  void stop();
  // Whether start() succeeded and stop() was not called since.
  bool watching() const { return folder != nullptr; }
  // Whether the file may have changed since the previous call (or since
  // start): a zero-wait look at what the notifier holds. Always true while
  // the folder's watch is lost (folder deleted or moved); each such call
  // tries to watch the folder again.
  bool mayHaveChanged();

  // How many folders the process watches now (for tests of handle leaks).
  static std::size_t watchedFolderCount();

  // The span of one host call on this thread. Where one notifier serves
  // every folder (POSIX), it is read once per call, at the first look: an
  // edit saved before the call is then known to every look of the call,
  // and the call pays one system call however many files it consults.
  class CallScope {
  public:
    CallScope() {
      if (depth++ == 0)
        looked = false;
    }
    ~CallScope() { --depth; }
    CallScope(const CallScope &) = delete;
    CallScope &operator=(const CallScope &) = delete;
    // Whether this call already read the notifier; outside any call, never.
    static bool lookedInThisCall() { return depth > 0 && looked; }
    static void noteLook() { looked = true; }

  private:
    static inline thread_local unsigned depth = 0;
    static inline thread_local bool looked = false;
  };

  struct Folder;

private:
  Folder *folder = nullptr;
  void *file = nullptr; // the folder's record of this file's name, if kept
  std::uint64_t seen = 0;
  bool fallback = false;
};
