// The parts of the logging stand-in that do not depend on the platform.
#include "platform/TalvenLog_Static.h"

#include "platform/LogFile.h"

#include <atomic>
#include <mutex>

namespace {
// Recursive, so that an observer may itself log; setObserver waits for a
// call in progress, so an observer is never called after its removal.
std::recursive_mutex &observerLock() {
  static std::recursive_mutex lock;
  return lock;
}
TalvenLog_Static::Observer &observerSlot() {
  static TalvenLog_Static::Observer observer;
  return observer;
}
std::atomic<bool> observerInstalled{false};
} // namespace

void TalvenLog_Static::logInformation_static(const ACE_WCHAR_T *source, const ACE_WCHAR_T *,
                                             const ACE_WCHAR_T *, const ACE_WCHAR_T *text, ...) {
  static const ACE_WCHAR_T empty[] = {0};
  if (text == nullptr)
    text = empty;
  if (source == nullptr)
    source = empty;
  writeToSystemLog(source, text);
  LogFile::append(source, text);
  if (!observerInstalled.load())
    return;
  std::lock_guard<std::recursive_mutex> guard(observerLock());
  if (observerSlot())
    observerSlot()(text);
}

void TalvenLog_Static::setObserver(Observer observer) {
  std::lock_guard<std::recursive_mutex> guard(observerLock());
  observerSlot() = std::move(observer);
  observerInstalled = static_cast<bool>(observerSlot());
}

bool TalvenLog_Static::hasReader() {
  return systemLogWritten() || LogFile::isOpen() || observerInstalled.load();
}
