#include "core/BusTrace.h"

#include "core/HexText.h"
#include "core/LogMessage.h"
#include "platform/AppendBuffer.h"
#include "platform/CodePage.h"
#include "platform/FileSystem.h"

#include <chrono>
#include <cstdio>
#include <mutex>
#include <new>

namespace {

// Guards the file and the clock anchors; constant-initialised, so that the
// load hook may use it whatever the order of static initialisation.
std::mutex traceLock;
// The file, behind a buffer written at the end of each host call; built in
// place on first use and never destroyed, like the log file's.
AppendBuffer &traceBuffer() {
  alignas(AppendBuffer) static unsigned char storage[sizeof(AppendBuffer)];
  static AppendBuffer *buffer = new (storage) AppendBuffer;
  return *buffer;
}
// Made on first use: the load hook may run before this file's globals are.
ACE_WString &tracePath() {
  static ACE_WString path;
  return path;
}
// The wall clock at opening, in microseconds since the epoch, and the
// monotonic clock at the same moment.
long long anchorWallMicros = 0;
std::chrono::steady_clock::time_point anchorSteady;

const size_t kFrameBytes = 8;
// The classic first frame holds a 12-bit length; longer messages use the
// escape form with a 32-bit length.
const size_t kClassicLimit = 4095;

long long microsSinceEpoch() {
  return std::chrono::duration_cast<std::chrono::microseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

} // namespace

std::atomic<bool> BusTrace::active{false};

void BusTrace::openFromEnvironment() {
  const ACE_WString named = environmentValue("CANSIMU_TRACE");
  if (named.length() != 0)
    open(named, L"CANSIMU_TRACE");
}

void BusTrace::openNamed(const ACE_WString &path, const wchar_t *origin) {
  if (!enabled())
    open(path, origin);
}

bool BusTrace::open(const ACE_WString &path, const wchar_t *origin) {
  std::FILE *file = wideOpenFile(path.c_str(), "ab");
  if (file == nullptr) {
    logMessage(L"Bus trace: cannot open <" + path + L"> named by " + ACE_WString(origin) +
               L": no trace is written");
    return false;
  }
  {
    std::lock_guard<std::mutex> guard(traceLock);
    if (std::FILE *previous = traceBuffer().attach(file))
      std::fclose(previous);
    tracePath() = path;
    anchorWallMicros = microsSinceEpoch();
    anchorSteady = std::chrono::steady_clock::now();
    active = true;
  }
  logMessage(L"Bus trace: appended to <" + path + L"> named by " + ACE_WString(origin));
  return true;
}

void BusTrace::close() {
  std::lock_guard<std::mutex> guard(traceLock);
  active = false;
  if (std::FILE *previous = traceBuffer().attach(nullptr))
    std::fclose(previous);
}

void BusTrace::Batch::frame(ACE_UINT32 id, const unsigned char *bytes, size_t length) {
  if (length > kFrameBytes)
    length = kFrameBytes;
  long long micros;
  {
    std::lock_guard<std::mutex> guard(traceLock);
    micros = anchorWallMicros + std::chrono::duration_cast<std::chrono::microseconds>(
                                    std::chrono::steady_clock::now() - anchorSteady)
                                    .count();
  }
  char head[64];
  // Identifiers above the 11-bit range are extended: candump writes them
  // with eight digits, which is how readers tell them apart.
  const bool extended = id > 0x7FF;
  std::snprintf(head, sizeof head,
                extended ? "(%lld.%06lld) can0 %08X#" : "(%lld.%06lld) can0 %03X#",
                micros / 1000000, micros % 1000000, static_cast<unsigned>(id & 0x1FFFFFFF));
  lines_ += head;
  lines_ += bytesToHex(bytes, length).c_str();
  lines_ += '\n';
}

void BusTrace::Batch::message(ACE_UINT32 id, ACE_UINT32 flowControlId, const unsigned char *bytes,
                              size_t length) {
  unsigned char data[kFrameBytes];
  if (length <= 7) {
    data[0] = static_cast<unsigned char>(length);
    for (size_t i = 0; i < length; ++i)
      data[1 + i] = bytes[i];
    frame(id, data, 1 + length);
    return;
  }
  size_t sent;
  if (length <= kClassicLimit) {
    data[0] = static_cast<unsigned char>(0x10 | (length >> 8));
    data[1] = static_cast<unsigned char>(length & 0xFF);
    for (size_t i = 0; i < 6; ++i)
      data[2 + i] = bytes[i];
    sent = 6;
  } else {
    data[0] = 0x10;
    data[1] = 0x00;
    for (int i = 0; i < 4; ++i)
      data[2 + i] = static_cast<unsigned char>((length >> (8 * (3 - i))) & 0xFF);
    data[6] = bytes[0];
    data[7] = bytes[1];
    sent = 2;
  }
  frame(id, data, kFrameBytes);
  // Clear to send, no block limit, no separation time.
  if (flowControlId != kNoReceiver) {
    const unsigned char flowControl[3] = {0x30, 0x00, 0x00};
    frame(flowControlId, flowControl, sizeof flowControl);
  }
  for (unsigned sequence = 1; sent < length; ++sequence) {
    const size_t chunk = length - sent < 7 ? length - sent : 7;
    data[0] = static_cast<unsigned char>(0x20 | (sequence & 0x0F));
    for (size_t i = 0; i < chunk; ++i)
      data[1 + i] = bytes[sent + i];
    frame(id, data, 1 + chunk);
    sent += chunk;
  }
}

void BusTrace::Batch::write() {
  if (lines_.empty())
    return;
  ACE_WString failedPath;
  {
    std::lock_guard<std::mutex> guard(traceLock);
    AppendBuffer &buffer = traceBuffer();
    if (!buffer.takeFailure()) {
      AppendBuffer::Batch batch(buffer);
      if (batch.open())
        batch.add(lines_.data(), lines_.size());
      lines_.clear();
      return;
    }
    // A full disk or a vanished file: the lines before stay whole, and the
    // trace stops rather than fail again at every call.
    lines_.clear();
    if (std::FILE *previous = buffer.attach(nullptr))
      std::fclose(previous);
    active = false;
    failedPath = tracePath();
  }
  logMessage(L"Bus trace: writing to <" + failedPath + L"> failed: the trace stops here");
}
