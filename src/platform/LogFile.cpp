// The parts of the log file that do not depend on the platform.
#include "platform/LogFile.h"

#include "platform/AppendBuffer.h"
#include "platform/CodePage.h"
#include "platform/FileSystem.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <new>

namespace {
// Built in place on first use and never destroyed: the load and unload
// hooks use it whatever the order of static initialisation and destruction.
// Once its file is closed it holds no memory.
AppendBuffer &logBuffer() {
  alignas(AppendBuffer) static unsigned char storage[sizeof(AppendBuffer)];
  static AppendBuffer *buffer = new (storage) AppendBuffer;
  return *buffer;
}
// Constant-initialised: guards the opening by the bench.
std::mutex openLock;
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
  std::lock_guard<std::mutex> guard(openLock);
  if (std::FILE *previous = logBuffer().attach(file))
    std::fclose(previous);
}

void LogFile::openBenchFile(const ACE_WString &path) {
  static ACE_WString failedPath;
  std::lock_guard<std::mutex> guard(openLock);
  if (logBuffer().isOpen())
    return;
  std::FILE *file = wideOpenFile(path.c_str(), "a");
  if (file != nullptr) {
    logBuffer().attach(file);
    return;
  }
  if (failedPath == path)
    return;
  failedPath = path;
  std::fprintf(stderr,
               "cansimu: cannot open the log file %s named by the bench's LOGFILE; "
               "log lines go to the system log only\n",
               toAnsi(path.c_str()).get());
}

void LogFile::close() {
  std::lock_guard<std::mutex> guard(openLock);
  if (std::FILE *previous = logBuffer().attach(nullptr))
    std::fclose(previous);
}

bool LogFile::isOpen() { return logBuffer().isOpen(); }

void LogFile::append(const ACE_WCHAR_T *source, const ACE_WCHAR_T *text) {
  // Without a file a line costs this one test.
  AppendBuffer &buffer = logBuffer();
  if (!buffer.isOpen())
    return;
  const LocalTime now = localTimeNow();
  char stamp[40];
  std::snprintf(stamp, sizeof stamp, "%04d-%02d-%02d %02d:%02d:%02d.%03d ", now.year, now.month,
                now.day, now.hour, now.minute, now.second, now.millisecond);
  const auto narrowSource = toAnsi(source);
  const auto narrowText = toAnsi(text);
  // Whole lines into the buffer; the end of the host call writes them.
  AppendBuffer::Batch line(buffer);
  if (!line.open())
    return;
  line.add(stamp);
  line.add(narrowSource.get());
  line.add(": ", 2);
  line.add(narrowText.get());
  line.add('\n');
}
