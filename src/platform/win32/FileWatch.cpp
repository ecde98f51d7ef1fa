// Windows change watch: one change-notification handle per folder, looked
// at with a zero wait. The notifications do not name the file, so any
// change in the folder counts for every file of it: the reader then
// compares the file's time, as it would without a watch.
#include "platform/FileWatch.h"

#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <string>

#include <windows.h>

namespace {

// Writes, truncation, a time moved by hand, and names that come and go
// (deletion, creation, either side of a rename).
const DWORD kWatchedChanges = FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_DIR_NAME |
                              FILE_NOTIFY_CHANGE_SIZE | FILE_NOTIFY_CHANGE_LAST_WRITE |
                              FILE_NOTIFY_CHANGE_ATTRIBUTES;

std::wstring folderOf(const ACE_WString &path) {
  const std::wstring text(path.c_str(), path.length());
  const size_t slash = text.find_last_of(L"\\/");
  if (slash == std::wstring::npos)
    return L".";
  // "C:\file.xml" lives in "C:\", not in the drive's current folder "C:".
  if (slash == 0 || (slash == 2 && text[1] == L':'))
    return text.substr(0, slash + 1);
  return text.substr(0, slash);
}

std::wstring systemMessage(DWORD code) { return L"system error " + std::to_wstring(code); }

} // namespace

struct FileWatch::Folder {
  std::wstring path;
  HANDLE handle = INVALID_HANDLE_VALUE; // INVALID while the watch is lost
  std::uint64_t changes = 0;
  std::size_t users = 0;
};

namespace {

class Notifier {
public:
  std::mutex lock;
  std::size_t users = 0; // watches and fallbacks alive
  bool fallbackReported = false;
  std::map<std::wstring, std::unique_ptr<FileWatch::Folder>> folders;

  static bool watch(FileWatch::Folder &folder) {
    folder.handle = ::FindFirstChangeNotificationW(folder.path.c_str(), FALSE, kWatchedChanges);
    return folder.handle != INVALID_HANDLE_VALUE;
  }

  static void unwatch(FileWatch::Folder &folder) {
    if (folder.handle != INVALID_HANDLE_VALUE)
      ::FindCloseChangeNotification(folder.handle);
    folder.handle = INVALID_HANDLE_VALUE;
  }

  // Takes what the folder's handle says, without waiting.
  static void look(FileWatch::Folder &folder) {
    if (folder.handle == INVALID_HANDLE_VALUE) {
      if (watch(folder))
        ++folder.changes;
      return;
    }
    if (::WaitForSingleObject(folder.handle, 0) != WAIT_OBJECT_0)
      return;
    ++folder.changes;
    // The handle is opened afresh rather than re-armed: a folder deleted
    // while watched stays pending deletion as long as a handle holds it,
    // which would keep its name from being used again. A change between
    // the close and the new handle is covered by the file check that
    // follows this look.
    unwatch(folder);
    watch(folder);
  }

  void release() {
    if (--users == 0)
      fallbackReported = false;
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

} // namespace

FileWatch::~FileWatch() { stop(); }

bool FileWatch::start(const ACE_WString &widePath, const ACE_CString &, ACE_WString &reason,
                      bool &firstFallback) {
  stop();
  Notifier &shared = notifier();
  std::lock_guard<std::mutex> guard(shared.lock);
  ++shared.users;
  auto fallBack = [&](const std::wstring &why) {
    fallback = true;
    reason = ACE_WString(why.c_str());
    firstFallback = !shared.fallbackReported;
    shared.fallbackReported = true;
    return false;
  };
  const DWORD attributes = ::GetFileAttributesW(widePath.c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0)
    return fallBack(L"the file is a symbolic link");
  const std::wstring folderPath = folderOf(widePath);
  auto known = shared.folders.find(folderPath);
  if (known == shared.folders.end()) {
    auto made = std::make_unique<Folder>();
    made->path = folderPath;
    if (!Notifier::watch(*made))
      return fallBack(systemMessage(::GetLastError()));
    known = shared.folders.emplace(folderPath, std::move(made)).first;
  }
  folder = known->second.get();
  ++folder->users;
  seen = folder->changes;
  return true;
}

void FileWatch::stop() {
  if (folder == nullptr && !fallback)
    return;
  Notifier &shared = notifier();
  std::lock_guard<std::mutex> guard(shared.lock);
  if (folder != nullptr && --folder->users == 0) {
    Notifier::unwatch(*folder);
    shared.folders.erase(folder->path);
  }
  folder = nullptr;
  fallback = false;
  shared.release();
}

bool FileWatch::mayHaveChanged() {
  if (folder == nullptr)
    return true;
  Notifier &shared = notifier();
  std::lock_guard<std::mutex> guard(shared.lock);
  Notifier::look(*folder);
  const bool changed = folder->changes != seen || folder->handle == INVALID_HANDLE_VALUE;
  seen = folder->changes;
  return changed;
}

std::size_t FileWatch::watchedFolderCount() {
  Notifier &shared = notifier();
  std::lock_guard<std::mutex> guard(shared.lock);
  return shared.folders.size();
}
