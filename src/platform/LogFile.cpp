// The parts of the log file that do not depend on the platform.
#include "platform/LogFile.h"

#include "platform/CodePage.h"
#include "platform/FileSystem.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <mutex>

namespace {
// Constant-initialised, so that they are ready before the library's load
// hook runs whatever the order of static initialisation. The lock keeps
// lines whole and the file open while one is written.
std::mutex fileLock;
std::atomic<std::FILE *> openFile{nullptr};
} // namespace

void LogFile::openFromEnvironment() {
  std::string path;
  std::FILE *file = openNamedFile(path);
  if (file == nullptr && !path.empty()) {
    const int why = errno;
    std::fprintf(stderr,
                 "cansimu: cannot open the log file %s named by CANSIMU_LOG (%s); "
                 "log lines go to the system log only\n",
                 path.c_str(), std::strerror(why));
    return;
  }
  std::lock_guard<std::mutex> guard(fileLock);
  if (std::FILE *previous = openFile.exchange(file))
    std::fclose(previous);
}

void LogFile::openBenchFile(const ACE_WString &path) {
  static ACE_WString failedPath;
  std::FILE *file = wideOpenFile(path.c_str(), "a");
  {
    std::lock_guard<std::mutex> guard(fileLock);
    if (file != nullptr && openFile.load() == nullptr) {
      openFile = file;
      file = nullptr;
    } else if (file == nullptr && failedPath != path) {
      failedPath = path;
      std::fprintf(stderr,
                   "cansimu: cannot open the log file %s named by the bench's LOGFILE; "
                   "log lines go to the system log only\n",
                   toAnsi(path.c_str()).get());
      return;
    } else if (file == nullptr) {
      return;
    }
  }
  if (file != nullptr)
    std::fclose(file);
}

void LogFile::close() {
  std::lock_guard<std::mutex> guard(fileLock);
  if (std::FILE *previous = openFile.exchange(nullptr))
    std::fclose(previous);
}

bool LogFile::isOpen() { return openFile.load() != nullptr; }

void LogFile::append(const ACE_WCHAR_T *source, const ACE_WCHAR_T *text) {
  // Without a file a line costs this one test.
  if (openFile.load() == nullptr)
    return;
  const LocalTime now = localTimeNow();
  char stamp[40];
  std::snprintf(stamp, sizeof stamp, "%04d-%02d-%02d %02d:%02d:%02d.%03d ", now.year, now.month,
                now.day, now.hour, now.minute, now.second, now.millisecond);
  const auto narrowSource = toAnsi(source);
  const auto narrowText = toAnsi(text);
  std::lock_guard<std::mutex> guard(fileLock);
  std::FILE *file = openFile.load();
  if (file == nullptr)
    return;
  // Into the stream's buffer, then one write of the whole line.
  std::fputs(stamp, file);
  std::fputs(narrowSource.get(), file);
  std::fputs(": ", file);
  std::fputs(narrowText.get(), file);
  std::fputc('\n', file);
  std::fflush(file);
}
