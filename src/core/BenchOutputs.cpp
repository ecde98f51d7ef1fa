#include "core/BenchOutputs.h"

#include "core/BusTrace.h"
#include "core/SessionReport.h"
#include "platform/FileSystem.h"
#include "platform/LogFile.h"
#include "platform/TDomData.h"

namespace {

// The bench's folder with its last separator, or nothing for a bare name.
ACE_WString folderOf(const ACE_WString &benchPath) {
  for (size_t i = benchPath.length(); i > 0; --i)
    if (benchPath[i - 1] == L'\\' || benchPath[i - 1] == L'/')
      return benchPath.substring(0, i);
  return ACE_WString();
}

// The trimmed content of the first element of that name.
ACE_WString contentOf(const TDomData &document, const char *element) {
  ACE_Array<TDomData> found;
  ACE_WString name;
  for (const char *c = element; *c != '\0'; ++c)
    name += static_cast<ACE_WCHAR_T>(*c);
  document.getSubNodesByTagName(name, found, true);
  ACE_WString text;
  if (found.size() == 0)
    return text;
  found[0].getContent(text);
  size_t start = 0, end = text.length();
  while (start < end && (text[start] == L' ' || text[start] == L'\n' || text[start] == L'\r' ||
                         text[start] == L'\t'))
    ++start;
  while (end > start && (text[end - 1] == L' ' || text[end - 1] == L'\n' ||
                         text[end - 1] == L'\r' || text[end - 1] == L'\t'))
    --end;
  return text.substring(start, end - start);
}

} // namespace

std::vector<BenchOutputs::Output> BenchOutputs::named(const TDomData &document,
                                                      const ACE_WString &benchPath) {
  std::vector<Output> outputs = {{"LOGFILE", "CANSIMU_LOG", ACE_WString()},
                                 {"TRACEFILE", "CANSIMU_TRACE", ACE_WString()},
                                 {"REPORTFILE", "CANSIMU_REPORT", ACE_WString()}};
  for (Output &output : outputs) {
    const ACE_WString written = contentOf(document, output.element);
    if (written.length() == 0)
      continue;
    output.path = isAbsolutePath(written) ? written : folderOf(benchPath) + written;
  }
  return outputs;
}

void BenchOutputs::open(const TDomData &document, const ACE_WString &benchPath) {
  const std::vector<Output> outputs = named(document, benchPath);
  if (outputs[0].path.length() != 0 && !LogFile::isOpen())
    LogFile::openBenchFile(outputs[0].path);
  if (outputs[1].path.length() != 0 && !BusTrace::enabled())
    BusTrace::openNamed(outputs[1].path, L"the bench's TRACEFILE");
  if (outputs[2].path.length() != 0 && !SessionReport::enabled())
    SessionReport::openNamed(outputs[2].path, L"the bench's REPORTFILE");
}
