// POSIX change watch: one inotify descriptor for the process, one watch per
// folder, and a change count per file name that readers compare with the
// count they last saw. The descriptor is non-blocking, so a look that finds
// nothing costs one read that returns at once.
#include "platform/FileWatch.h"

#include "platform/CodePage.h"
#include "platform/FileSystem.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <unordered_map>

#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace {

// Everything that can make a file of the folder read differently: writes and
// truncation (MODIFY, CLOSE_WRITE), a time moved by hand (ATTRIB), deletion,
// creation and either side of a rename (atomic saves), and the folder itself
// going away.
const std::uint32_t kWatchedEvents = IN_MODIFY | IN_CLOSE_WRITE | IN_ATTRIB | IN_CREATE |
                                     IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF |
                                     IN_MOVE_SELF | IN_ONLYDIR;

// File systems whose changes made by other machines reach no inotify watch.
bool reportsRemoteChanges(long type) {
  switch (static_cast<unsigned long>(type)) {
  case 0x6969UL:     // NFS
  case 0x517BUL:     // SMB
  case 0xFF534D42UL: // CIFS
  case 0xFE534D42UL: // SMB2
  case 0x65735546UL: // FUSE
  case 0x01021997UL: // 9P
  case 0x00C36400UL: // Ceph
  case 0x5346414FUL: // AFS
    return false;
  default:
    return true;
  }
}

// The folder part of a system path; "." for a bare file name.
std::string folderOf(const std::string &path, std::string &name) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) {
    name = path;
    return ".";
  }
  name = path.substr(slash + 1);
  return slash == 0 ? "/" : path.substr(0, slash);
}

} // namespace

struct FileWatch::Folder {
  std::string path;
  int descriptor = -1; // -1 while the watch is lost
  std::uint64_t changes = 0;
  std::size_t users = 0;
  // Change count per file name; only names some reader reads are kept.
  std::map<std::string, std::uint64_t> files;
};

namespace {

class Notifier {
public:
  std::mutex lock;
  int descriptor = -1;
  std::uint64_t overflows = 0;
  std::size_t users = 0; // watches and fallbacks alive
  bool fallbackReported = false;
  std::map<std::string, std::unique_ptr<FileWatch::Folder>> folders;
  std::unordered_multimap<int, FileWatch::Folder *> byDescriptor;

  // Reads every queued event without waiting.
  void drain() {
    alignas(inotify_event) char buffer[4096];
    for (;;) {
      const ssize_t got = ::read(descriptor, buffer, sizeof buffer);
      if (got <= 0)
        return;
      for (ssize_t at = 0; at < got;) {
        const auto *event = reinterpret_cast<const inotify_event *>(buffer + at);
        note(*event);
        at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
      }
      // A read takes every queued event that fits: room to spare means the
      // queue is empty, and a second read would only say so.
      if (static_cast<std::size_t>(got) + sizeof(inotify_event) + NAME_MAX + 1 <= sizeof buffer)
        return;
    }
  }

  // Watches the folder's path again after it was lost; true when it is.
  bool rewatch(FileWatch::Folder &folder) {
    const int watch = ::inotify_add_watch(descriptor, folder.path.c_str(), kWatchedEvents);
    if (watch < 0)
      return false;
    folder.descriptor = watch;
    byDescriptor.emplace(watch, &folder);
    return true;
  }

  // Drops the folder's watch; the system's watch goes with the last folder
  // record that uses it (two spellings of one folder share it).
  void forget(FileWatch::Folder &folder) {
    if (folder.descriptor < 0)
      return;
    auto range = byDescriptor.equal_range(folder.descriptor);
    for (auto it = range.first; it != range.second; ++it)
      if (it->second == &folder) {
        byDescriptor.erase(it);
        break;
      }
    if (byDescriptor.count(folder.descriptor) == 0)
      ::inotify_rm_watch(descriptor, folder.descriptor);
    folder.descriptor = -1;
  }

  void release() {
    if (--users > 0)
      return;
    if (descriptor >= 0)
      ::close(descriptor);
    descriptor = -1;
    fallbackReported = false;
    decltype(byDescriptor)().swap(byDescriptor);
  }

private:
  void note(const inotify_event &event) {
    if ((event.mask & IN_Q_OVERFLOW) != 0) {
      ++overflows;
      return;
    }
    const auto range = byDescriptor.equal_range(event.wd);
    if ((event.mask & (IN_IGNORED | IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT)) != 0) {
      // The folder is gone from its path: every file in it may differ, and
      // the watch must be set again on whatever the path names later.
      const bool lost = (event.mask & (IN_IGNORED | IN_MOVE_SELF)) != 0;
      for (auto it = range.first; it != range.second; ++it) {
        ++it->second->changes;
        if (lost)
          it->second->descriptor = -1;
      }
      if (!lost)
        return;
      if ((event.mask & IN_MOVE_SELF) != 0)
        ::inotify_rm_watch(descriptor, event.wd);
      byDescriptor.erase(event.wd);
      return;
    }
    if (event.len == 0)
      return;
    for (auto it = range.first; it != range.second; ++it) {
      const auto file = it->second->files.find(event.name);
      if (file != it->second->files.end())
        ++file->second;
    }
  }
};

// Built in place on first use and never destroyed: a host may end the
// driver from its own static destructors, after this file's statics would
// be gone. With no watch left it holds no memory.
Notifier &notifier() {
  alignas(Notifier) static unsigned char storage[sizeof(Notifier)];
  static Notifier *instance = new (storage) Notifier;
  return *instance;
}

std::uint64_t changeCount(const FileWatch::Folder &folder, const void *file,
                          std::uint64_t overflows) {
  const auto *count = static_cast<const std::uint64_t *>(file);
  return folder.changes + *count + overflows;
}

} // namespace

FileWatch::~FileWatch() { stop(); }

bool FileWatch::start(const ACE_WString &, const ACE_CString &ansiPath, ACE_WString &reason,
                      bool &firstFallback) {
  stop();
  Notifier &shared = notifier();
  std::lock_guard<std::mutex> guard(shared.lock);
  ++shared.users;
  const std::string path = systemPath(ansiPath.c_str()).c_str();
  std::string name;
  const std::string folderPath = folderOf(path, name);
  auto fallBack = [&](const char *why) {
    fallback = true;
    reason = toWideString(why);
    firstFallback = !shared.fallbackReported;
    shared.fallbackReported = true;
    return false;
  };

  struct stat link;
  if (::lstat(path.c_str(), &link) == 0 && S_ISLNK(link.st_mode))
    return fallBack("the file is a symbolic link");
  auto known = shared.folders.find(folderPath);
  if (known == shared.folders.end()) {
    struct statfs system;
    if (::statfs(folderPath.c_str(), &system) == 0 && !reportsRemoteChanges(system.f_type))
      return fallBack("the folder is on a network file system");
    if (shared.descriptor < 0)
      shared.descriptor = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (shared.descriptor < 0)
      return fallBack(std::strerror(errno));
    auto made = std::make_unique<Folder>();
    made->path = folderPath;
    if (!shared.rewatch(*made))
      return fallBack(errno == ENOSPC ? "the system's limit of watches is reached"
                                      : std::strerror(errno));
    known = shared.folders.emplace(folderPath, std::move(made)).first;
  }
  folder = known->second.get();
  ++folder->users;
  file = &folder->files.emplace(name, 0).first->second;
  seen = changeCount(*folder, file, shared.overflows);
  return true;
}

void FileWatch::stop() {
  if (folder == nullptr && !fallback)
    return;
  Notifier &shared = notifier();
  std::lock_guard<std::mutex> guard(shared.lock);
  if (folder != nullptr && --folder->users == 0) {
    shared.forget(*folder);
    shared.folders.erase(folder->path);
  }
  folder = nullptr;
  file = nullptr;
  fallback = false;
  shared.release();
}

bool FileWatch::mayHaveChanged() {
  if (folder == nullptr)
    return true;
  Notifier &shared = notifier();
  std::lock_guard<std::mutex> guard(shared.lock);
  if (!CallScope::lookedInThisCall()) {
    shared.drain();
    CallScope::noteLook();
  }
  if (folder->descriptor < 0 && shared.rewatch(*folder))
    ++folder->changes;
  const std::uint64_t now = changeCount(*folder, file, shared.overflows);
  const bool changed = now != seen || folder->descriptor < 0;
  seen = now;
  return changed;
}

std::size_t FileWatch::watchedFolderCount() {
  Notifier &shared = notifier();
  std::lock_guard<std::mutex> guard(shared.lock);
  return shared.folders.size();
}
