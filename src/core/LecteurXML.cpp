#include "core/LecteurXML.h"

#include "core/LogMessage.h"
#include "platform/CodePage.h"
#include "platform/FileSystem.h"

#include <ace/Basic_Types.h>

namespace {

// A time no file reaches, so a reader never reloads before its first load.
const ACE_Time_Value kNeverLoaded(ACE_INT32_MAX, 0);

ACE_WString withBackslashes(const ACE_WString &path) {
  ACE_WString stored(path);
  for (size_t i = 0; i < stored.length(); ++i)
    if (stored[i] == static_cast<ACE_WCHAR_T>('/'))
      stored[i] = static_cast<ACE_WCHAR_T>('\\');
  return stored;
}

// Modification time of the file, read on its ANSI-converted path.
bool readModificationTime(const ACE_CString &ansiPath, ACE_Time_Value &out) {
  time_t seconds = 0;
  if (!ansiModificationTime(ansiPath.c_str(), seconds))
    return false;
  out.set(seconds, 0);
  return true;
}

} // namespace

LecteurXML::LecteurXML(const ACE_WString &path)
    : filePath(withBackslashes(path)), ansiPath(toAnsiString(filePath)), loadedTime(kNeverLoaded),
      fileTime(kNeverLoaded) {}

void LecteurXML::forgetPath() {
  filePath.clear();
  ansiPath.clear();
  watch.stop();
}

void LecteurXML::watchFolder() {
  if (watchTried)
    return;
  watchTried = true;
  ACE_WString reason;
  bool firstFallback = false;
  if (!watch.start(filePath, ansiPath, reason, firstFallback) && firstFallback)
    logMessage(ACE_WString(L"File change notification unavailable for <") + filePath +
               ACE_WString(L"> (") + reason +
               ACE_WString(L"): edits are found by reading file times at each use"));
}

bool LecteurXML::load() {
  if (filePath.length() == 0)
    return false;
  if (!wideFileExists(filePath.c_str()) && !ansiFileExists(ansiPath.c_str())) {
    logMessage(ACE_WString(L"The file <") + filePath + ACE_WString(L"> is unreachable"));
    forgetPath();
    return false;
  }
  clearContent();
  initContent();
  // The watch is set, and what it holds taken, before the time is read: an
  // edit that lands after this point is reported to the next check.
  watchFolder();
  if (watch.watching())
    watch.mayHaveChanged();
  // A file that vanished between the two tests gets time 0, so that it is
  // read again as soon as it is back.
  if (!readModificationTime(ansiPath, fileTime))
    fileTime.set(0, 0);
  const bool parsed = parse(filePath);
  loadedTime = fileTime;
  return parsed;
}

bool LecteurXML::reloadIfChanged() {
  if (filePath.length() == 0)
    return false;
  if (watch.watching() && !watch.mayHaveChanged())
    return false;
  ACE_Time_Value current;
  // An unreadable time (file deleted or locked) counts as no change.
  if (!readModificationTime(ansiPath, current))
    return false;
  return current > loadedTime ? load() : false;
}
