// Base of every object filled from an XML file and refreshed when the file is
// edited while the host runs. It owns the path and two modification times and
// decides when the file is read again; the subclass drops its old content,
// prepares and parses.
#pragma once

#include "platform/FileWatch.h"

#include <ace/SString.h>
#include <ace/Time_Value.h>

class LecteurXML {
public:
  // Stores the path with every '/' turned into '\'. Reads nothing.
  explicit LecteurXML(const ACE_WString &path);
  virtual ~LecteurXML() = default;
  LecteurXML(const LecteurXML &) = delete;
  LecteurXML &operator=(const LecteurXML &) = delete;

  // Re-reads the file when its modification time is strictly later than the
  // one the last load recorded. False when nothing was (successfully) read.
  // While the file's folder is watched, the time is read only when the watch
  // reports a change that may concern the file.
  virtual bool reloadIfChanged();

  // Reads the file now. A file that exists in neither its wide nor its ANSI
  // form is logged as unreachable and its path forgotten for good.
  bool load();

  const ACE_WString &path() const { return filePath; }

protected:
  virtual bool parse(const ACE_WString &path) = 0;
  virtual void initContent() = 0;
  virtual void clearContent() = 0;

private:
  // Forgets the path for good.
  void forgetPath();
  // At the first load: watches the file's folder, or says once in the log
  // that edits are found by reading the file's time at each check.
  void watchFolder();

  ACE_WString filePath;
  // filePath in the ANSI code page, converted once: its modification time is
  // read before every scenario look-up.
  ACE_CString ansiPath;
  ACE_Time_Value loadedTime;
  ACE_Time_Value fileTime;
  FileWatch watch;
  bool watchTried = false;
};
