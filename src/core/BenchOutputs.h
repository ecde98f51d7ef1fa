// The files a bench may ask the library to write, for hosts started where
// no environment variable can be set (a Windows shortcut):
//
//   <LOGFILE>cansimu.log</LOGFILE>        every log line, as CANSIMU_LOG
//   <TRACEFILE>bus.log</TRACEFILE>        the bus trace, as CANSIMU_TRACE
//   <REPORTFILE>report.json</REPORTFILE>  the session report, as CANSIMU_REPORT
//
// A relative path counts from the bench's folder. The environment variable
// wins: a file it named is open before any configuration is read, and the
// element is then passed over. Each file is opened once and kept.
#pragma once

#include <ace/SString.h>

#include <vector>

class TDomData;

namespace BenchOutputs {

struct Output {
  const char *element;  // "TRACEFILE"
  const char *variable; // "CANSIMU_TRACE"
  ACE_WString path;     // as the library opens it; empty when the bench names none
};

// The three outputs, each with the path the bench at `benchPath` names.
std::vector<Output> named(const TDomData &document, const ACE_WString &benchPath);

// Opens what the bench names and nothing has opened yet.
void open(const TDomData &document, const ACE_WString &benchPath);

} // namespace BenchOutputs
