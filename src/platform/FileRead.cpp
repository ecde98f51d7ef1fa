// Whole-file reads shared by both platforms, on top of the per-platform open.
#include "platform/FileSystem.h"

#include <ace/OS_NS_stdio.h>

namespace {
bool readAll(FILE *file, std::vector<char> &content) {
  content.clear();
  if (file == nullptr)
    return false;
  char block[65536];
  size_t got = 0;
  while ((got = ACE_OS::fread(block, 1, sizeof block, file)) > 0)
    content.insert(content.end(), block, block + got);
  const bool failed = ferror(file) != 0;
  ACE_OS::fclose(file);
  return !failed;
}
} // namespace

bool readWholeFile(const ACE_WCHAR_T *path, std::vector<char> &content) {
  return readAll(wideOpenFile(path, "rb"), content);
}

bool readWholeAnsiFile(const char *path, std::vector<char> &content) {
  return readAll(ansiOpenFile(path, "rb"), content);
}
