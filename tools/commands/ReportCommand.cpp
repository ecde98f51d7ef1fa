// report: the session report a host run left (CANSIMU_REPORT), for a person
// and for a CI server.
#include "Command.h"
#include "Errors.h"
#include "files/Json.h"
#include "output/Output.h"

#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace {

const char kReportDetails[] =
    "Prints the session report FILE that the library wrote (CANSIMU_REPORT, the\n"
    "bench's REPORTFILE element or cansimu --report): per ECU, every scenario\n"
    "entry with its hits, the requests no entry matched, negative answers and\n"
    "dialog refusals; then the armed statuses and injected events that fired.\n"
    "\n"
    "  --junit OUT.xml   also writes a JUnit file: one test case per scenario\n"
    "                    entry (skipped when never asked) and one failed test\n"
    "                    case per unscripted request\n"
    "  --fail-on LIST    exit status 1 when the report holds what LIST names,\n"
    "                    comma-separated: unscripted (a request no entry\n"
    "                    matched), unused (an entry never asked)\n"
    "\n"
    "Exit status: 0, 1 as --fail-on asks, 3 when FILE is not a report.\n";

struct FailOn {
  bool unscripted = false, unused = false;
};

FailOn parseFailOn(const std::string &list) {
  FailOn failOn;
  std::stringstream words(list);
  for (std::string word; std::getline(words, word, ',');) {
    if (word == "unscripted")
      failOn.unscripted = true;
    else if (word == "unused")
      failOn.unused = true;
    else if (!word.empty())
      throw UsageError("--fail-on takes unscripted and unused, not '" + word + "'");
  }
  return failOn;
}

JsonValue readReport(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  if (!file)
    throw SetupError("cannot read the report " + path);
  std::stringstream text;
  text << file.rdbuf();
  try {
    JsonValue report = parseJson(text.str());
    if (report["format"].text != "cansimu-report")
      throw std::runtime_error("no \"format\": \"cansimu-report\"");
    return report;
  } catch (const std::runtime_error &error) {
    throw SetupError(path + " is not a session report: " + error.what());
  }
}

std::string fileName(const std::string &path) {
  const size_t slash = path.find_last_of("/\\");
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string ecuName(const JsonValue &ecu) {
  return "ECU " + ecu["idTx"].text + "/" + ecu["idRx"].text + " (" +
         fileName(ecu["scenario"].text) + ")";
}

std::string where(const JsonValue &ecu, const JsonValue &entry) {
  return fileName(ecu["scenario"].text) + ":" + std::to_string(entry["line"].count());
}

std::string xmlText(const std::string &text) {
  std::string out;
  for (const char c : text) {
    switch (c) {
    case '&':
      out += "&amp;";
      break;
    case '<':
      out += "&lt;";
      break;
    case '>':
      out += "&gt;";
      break;
    case '"':
      out += "&quot;";
      break;
    default:
      out += c;
    }
  }
  return out;
}

struct Tally {
  unsigned long long unscripted = 0, unused = 0;
};

Tally printReport(const std::string &path, const JsonValue &report) {
  Tally tally;
  printHeading("Session report " + path);
  std::printf("  started %s, written %s%s\n", report["started"].text.c_str(),
              report["written"].text.c_str(),
              report["ended"].boolean ? ", at CAN_DrvEnd" : " (the host had not ended)");
  for (const JsonValue &ecu : report["ecus"].items) {
    std::printf("%s\n", boldText(ecuName(ecu)).c_str());
    std::printf("  %llu answers, %llu negative, %llu dialog refusals\n", ecu["answers"].count(),
                ecu["negativeAnswers"].count(), ecu["dialogRefusals"].count());
    for (const JsonValue &entry : ecu["entries"].items) {
      const unsigned long long hits = entry["hits"].count();
      tally.unused += hits == 0 ? 1 : 0;
      const std::string line = "  " + where(ecu, entry) + "  " + entry["pattern"].text + "  " +
                               std::to_string(hits) + (hits == 1 ? " hit" : " hits");
      std::printf("%s\n", hits == 0 ? warningText(line + " (never asked)").c_str() : line.c_str());
    }
    for (const JsonValue &request : ecu["unscripted"].items) {
      ++tally.unscripted;
      std::printf("%s\n", warningText("  unscripted " + request["request"].text + "  " +
                                      std::to_string(request["count"].count()) + "x, first at " +
                                      request["first"].text)
                              .c_str());
    }
    if (ecu["unscriptedOthers"].count() != 0) {
      tally.unscripted += ecu["unscriptedOthers"].count();
      std::printf("  %llu more unscripted requests\n", ecu["unscriptedOthers"].count());
    }
  }
  for (const JsonValue &armed : report["armedStatuses"].items)
    std::printf("armed status: %s answered %s, detail %llu, %llux\n", armed["export"].text.c_str(),
                colouredStatus(static_cast<CAN_STATUS>(armed["status"].count())).c_str(),
                armed["detail"].count(), armed["count"].count());
  for (const JsonValue &event : report["injectedEvents"].items)
    std::printf("injected event: %s type %llu, %llux\n", event["export"].text.c_str(),
                event["type"].count(), event["count"].count());
  return tally;
}

void writeJunit(const std::string &path, const JsonValue &report, const FailOn &failOn) {
  std::ofstream out(path, std::ios::binary);
  if (!out)
    throw SetupError("cannot write " + path);
  out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites name=\"cansimu\">\n";
  for (const JsonValue &ecu : report["ecus"].items) {
    const std::string suite = xmlText(ecuName(ecu));
    const auto &entries = ecu["entries"].items;
    const auto &unscripted = ecu["unscripted"].items;
    size_t failures = unscripted.size(), skipped = 0;
    for (const JsonValue &entry : entries)
      if (entry["hits"].count() == 0)
        (failOn.unused ? failures : skipped) += 1;
    out << "  <testsuite name=\"" << suite << "\" tests=\"" << entries.size() + unscripted.size()
        << "\" failures=\"" << failures << "\" skipped=\"" << skipped << "\">\n";
    for (const JsonValue &entry : entries) {
      const unsigned long long hits = entry["hits"].count();
      out << "    <testcase classname=\"" << suite << "\" name=\""
          << xmlText(entry["pattern"].text + " (" + where(ecu, entry) + ")") << "\"";
      if (hits != 0)
        out << "><system-out>" << hits << " hits</system-out></testcase>\n";
      else if (failOn.unused)
        out << "><failure message=\"never asked\"/></testcase>\n";
      else
        out << "><skipped message=\"never asked\"/></testcase>\n";
    }
    for (const JsonValue &request : unscripted)
      out << "    <testcase classname=\"" << suite << "\" name=\"unscripted "
          << xmlText(request["request"].text) << "\"><failure message=\"no scenario entry matched, "
          << request["count"].count() << " times, first at " << xmlText(request["first"].text)
          << "\"/></testcase>\n";
    out << "  </testsuite>\n";
  }
  out << "</testsuites>\n";
  if (!out)
    throw SetupError("cannot write " + path);
}

int runReport(const Arguments &arguments) {
  const FailOn failOn =
      arguments.has("--fail-on") ? parseFailOn(arguments.options.at("--fail-on")) : FailOn();
  const std::string &path = arguments.positional[0];
  const JsonValue report = readReport(path);
  const Tally tally = printReport(path, report);
  if (arguments.has("--junit"))
    writeJunit(arguments.options.at("--junit"), report, failOn);
  const bool failed =
      (failOn.unscripted && tally.unscripted != 0) || (failOn.unused && tally.unused != 0);
  return failed ? kExitRefused : kExitDone;
}

} // namespace

Command reportCommand() {
  return {"report",
          "report FILE.json",
          "print a session report, write it as JUnit",
          kReportDetails,
          1,
          1,
          {"--junit", "--fail-on"},
          runReport};
}
