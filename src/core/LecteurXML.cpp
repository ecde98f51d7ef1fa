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
bool readModificationTime(const ACE_WString &path, ACE_Time_Value &out) {
  time_t seconds = 0;
  if (!ansiModificationTime(toAnsi(path.c_str()).get(), seconds))
    return false;
  out.set(seconds, 0);
  return true;
}

} // namespace

LecteurXML::LecteurXML(const ACE_WString &path)
    : filePath(withBackslashes(path)), loadedTime(kNeverLoaded), fileTime(kNeverLoaded) {}

bool LecteurXML::load() {
  if (filePath.length() == 0)
    return false;
  if (!wideFileExists(filePath.c_str()) && !ansiFileExists(toAnsi(filePath.c_str()).get())) {
    logMessage(ACE_WString(L"The file <") + filePath + ACE_WString(L"> is unreachable"));
    filePath.clear();
    return false;
  }
  clearContent();
  initContent();
  // A file that vanished between the two tests gets time 0, so that it is
  // read again as soon as it is back.
  if (!readModificationTime(filePath, fileTime))
    fileTime.set(0, 0);
  const bool parsed = parse(filePath);
  loadedTime = fileTime;
  return parsed;
}

bool LecteurXML::reloadIfChanged() {
  if (filePath.length() == 0)
    return false;
  ACE_Time_Value current;
  // An unreadable time (file deleted or locked) counts as no change.
  if (!readModificationTime(filePath, current))
    return false;
  return current > loadedTime ? load() : false;
}
