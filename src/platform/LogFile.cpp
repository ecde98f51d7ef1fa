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

namespace {

// "2025-10-14 09:31:02.517 ", written digit by digit.
const std::size_t kStampLength = 24;
void formatStamp(char *out, int year, int month, int day, int hour, int minute, int second,
                 int millisecond) {
  auto digits = [&out](int value, int count) {
    for (int i = count - 1; i >= 0; --i) {
      out[i] = static_cast<char>('0' + value % 10);
      value /= 10;
    }
    out += count;
  };
  digits(year, 4);
  *out++ = '-';
  digits(month, 2);
  *out++ = '-';
  digits(day, 2);
  *out++ = ' ';
  digits(hour, 2);
  *out++ = ':';
  digits(minute, 2);
  *out++ = ':';
  digits(second, 2);
  *out++ = '.';
  digits(millisecond, 3);
  *out = ' ';
}

// Text in the ANSI code page: ASCII as it is, anything else converted.
void addNarrow(AppendBuffer::Batch &line, const ACE_WCHAR_T *text) {
  std::size_t length = 0;
  bool ascii = true;
  for (; text[length] != 0; ++length)
    ascii = ascii && static_cast<unsigned long>(text[length]) < 0x80;
  if (ascii) {
    line.addAscii(text, length);
    return;
  }
  const auto narrow = toAnsi(text);
  line.add(narrow.get());
}

} // namespace

void LogFile::append(const ACE_WCHAR_T *source, const ACE_WCHAR_T *text) {
  // Without a file a line costs this one test.
  AppendBuffer &buffer = logBuffer();
  if (!buffer.isOpen())
    return;
  const LocalTime now = localTimeNow();
  char stamp[kStampLength];
  formatStamp(stamp, now.year, now.month, now.day, now.hour, now.minute, now.second,
              now.millisecond);
  // Whole lines into the buffer; the writer (or the end of the host call)
  // writes them.
  AppendBuffer::Batch line(buffer);
  if (!line.open())
    return;
  line.add(stamp, kStampLength);
  addNarrow(line, source);
  line.add(": ", 2);
  addNarrow(line, text);
  line.add('\n');
}
