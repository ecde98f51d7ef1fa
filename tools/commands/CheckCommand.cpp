// check: benches and scenarios read as the library reads them, with the
// mistakes it passes over in silence reported compiler-style.
#include "Command.h"
#include "Errors.h"
#include "files/FileChecks.h"
#include "output/Output.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <set>

namespace {

const char kCheckDetails[] =
    "Reads each FILE, a bench or a scenario (a folder: its .xml files), as the\n"
    "library reads it, without a host, and reports the mistakes that the\n"
    "library passes over in silence, one line each: FILE:LINE: warning: ...\n"
    "The scenarios a bench names are checked too (a relative path counts from\n"
    "the bench's folder, as it does for cansimu).\n"
    "\n"
    "It reports EVENEMENT elements the library skips, a REPONSE without\n"
    "TRAME, requests that can never match (lower-case hex, a wildcard in the\n"
    "first two characters) or have an odd number of characters, requests that\n"
    "overlap (one written after a more general one never gets an entry of its\n"
    "own; one written after a more specific one hides it), empty answers,\n"
    "typed answers with unknown event types or result codes, frames that are\n"
    "not even-length upper-case hex, an OPENDIALOG answered FALSE, UCE elements\n"
    "that are skipped or name a missing scenario, two ECUs on one idTx, idRx or\n"
    "targetAddress, an idRx that is its own or another ECU's idTx, element\n"
    "names one slip away from a name the library reads (CAN_SERIALNUMBR), a\n"
    "missing CAN_FIRMWAREVERSION or attribute of it, voltages that are no\n"
    "number or beyond a float, a NEGATIVE_RESPONSE longer than one byte,\n"
    "DETBAUDRATE texts that name no outcome of a detection. It notes a relative scenario path that "
    "a host\n"
    "started in another folder than the bench's would not find (naming both\n"
    "folders), and names the line and the parser's message of a file that is\n"
    "not XML.\n"
    "\n"
    "  --frame   the scenarios answer raw frames (CAN_PrtSendTrame): also\n"
    "            report answers longer than 8 bytes and typed answers\n"
    "\n"
    "Exit status: 0 nothing found, 1 warnings, 3 a file that cannot be read or\n"
    "is not XML.\n";

bool hasXmlExtension(const std::string &name) {
  if (name.size() < 4)
    return false;
  std::string extension = name.substr(name.size() - 4);
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return extension == ".xml";
}

// The files an argument names: itself, or a folder's XML files.
std::vector<std::string> filesOf(const std::string &argument) {
  std::error_code error;
  if (!std::filesystem::is_directory(argument, error))
    return {argument};
  const char last = argument.back();
  const std::string folder = last == '/' || last == '\\' ? argument : argument + "/";
  std::vector<std::string> files;
  for (const auto &entry : std::filesystem::directory_iterator(argument, error)) {
    const std::string name = entry.path().filename().string();
    if (entry.is_regular_file(error) && hasXmlExtension(name))
      files.push_back(folder + name);
  }
  std::sort(files.begin(), files.end());
  return files;
}

void printFinding(const std::string &path, const Finding &finding, const char *kind = "warning:") {
  const std::string where = path + (finding.line > 0 ? ":" + std::to_string(finding.line) : "");
  std::printf("%s %s %s\n", boldText(where + ":").c_str(), warningText(kind).c_str(),
              finding.message.c_str());
}

// A file the parser gave up on, with the line and the parser's words.
std::string notXmlText(const std::string &path, const XmlSource &file) {
  const TDomData::LoadProblem &problem = file.problem();
  const std::string where = problem.line > 0 ? path + ":" + std::to_string(problem.line) : path;
  return where + ": not an XML file: " + problem.message;
}

} // namespace

namespace {

int runCheck(const Arguments &arguments) {
  CheckOptions options;
  options.framePath = arguments.has("--frame");
  std::vector<std::string> queue;
  bool unreadable = false;
  for (const std::string &argument : arguments.positional) {
    const std::vector<std::string> files = filesOf(argument);
    if (files.empty()) {
      printError("no .xml file in " + argument);
      unreadable = true;
    }
    queue.insert(queue.end(), files.begin(), files.end());
  }

  std::set<std::string> seen;
  size_t warnings = 0;
  for (size_t i = 0; i < queue.size(); ++i) {
    const std::string path = queue[i];
    if (!seen.insert(std::filesystem::absolute(path).lexically_normal().string()).second)
      continue;
    XmlSource file;
    const XmlSource::Outcome outcome = file.load(path);
    if (outcome != XmlSource::Outcome::Read) {
      printError(outcome == XmlSource::Outcome::Unreadable ? "cannot read " + path
                                                           : notXmlText(path, file));
      unreadable = true;
      continue;
    }
    FileReport report;
    const bool bench = isBench(file);
    const bool scenario = isScenario(file);
    if (bench)
      checkBench(path, file, report);
    if (scenario)
      checkScenario(path, file, options, report);
    if (!bench && !scenario)
      report.findings.push_back({0, "no UCE and no EVENEMENT: neither a bench nor a scenario"});
    std::stable_sort(report.findings.begin(), report.findings.end(),
                     [](const Finding &a, const Finding &b) { return a.line < b.line; });
    for (const Finding &finding : report.findings)
      printFinding(path, finding);
    for (const Finding &note : report.notes)
      printFinding(path, note, "note:");
    warnings += report.findings.size();
    queue.insert(queue.end(), report.scenarios.begin(), report.scenarios.end());
  }
  if (warnings > 0)
    std::printf("%s warning%s\n", std::to_string(warnings).c_str(), warnings == 1 ? "" : "s");
  return unreadable ? kExitSetup : warnings > 0 ? kExitRefused : kExitDone;
}

} // namespace

Command checkCommand() {
  return {"check",
          "check FILE...",
          "report the silent mistakes of benches and scenarios",
          kCheckDetails,
          1,
          SIZE_MAX,
          {"--frame"},
          runCheck};
}
