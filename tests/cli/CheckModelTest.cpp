// What check says about overlapping requests is what the library does: its
// request table keeps the library's entries, a request it reports as folded
// into another answers with the other's entry, and a request it says nothing
// against answers with its own answers.
#include "ecu/Scenario.h"
#include "files/FileChecks.h"
#include "files/XmlSource.h"
#include "platform/CodePage.h"
#include "support/TempDir.h"
#include "support/XmlFiles.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace {

// ScenarioFile writes its first EVENEMENT on line 3, one a line.
constexpr unsigned kFirstLine = 3;

// What check finds in a scenario (or, with `bench`, a bench) file.
FileReport check(const std::string &path, bool bench = false) {
  XmlSource file;
  EXPECT_EQ(file.load(path), XmlSource::Outcome::Read);
  FileReport report;
  if (bench)
    checkBench(path, file, report);
  else
    checkScenario(path, file, CheckOptions(), report);
  return report;
}

std::string libraryAnswer(Scenario &scenario, const std::string &request) {
  ACE_WString answer(L"<none>");
  scenario.findResponse(toWideString(request.c_str()), answer);
  return toAnsiString(answer).c_str();
}

// A service written with a wildcard that matches "22" and shares its bucket
// in a loaded table (32 buckets), so that a pattern filed under another
// service's text still meets the requests of "22"; "2E" when none does.
std::string wildcardMateOf22() {
  const ScenarioKeyHash hash;
  const ScenarioKeyMatch match;
  const unsigned long bucket = hash(L"22") % 32;
  const std::string characters = "0123456789ABCDEF?*";
  for (char first : characters)
    for (char second : characters) {
      const std::string service = {first, second};
      const ACE_WString key = toWideString(service.c_str());
      if (service.find_first_of("?*") != std::string::npos && hash(key) % 32 == bucket &&
          match(key, L"22"))
        return service;
    }
  return "2E";
}

// The line a message names after `marker` ("(line 12" gives 12).
unsigned namedLine(const std::string &message, const std::string &marker) {
  const size_t at = message.find(marker);
  return at == std::string::npos ? 0 : std::atoi(message.c_str() + at + marker.size());
}

} // namespace

// Random scenarios of overlapping patterns, some sharing a bucket: the
// findings predict the library's answer to every literal request.
TEST(CliCheck, RandomScenarios_FindingsPredictTheLibrarysAnswers) {
  const std::string services[] = {"22", wildcardMateOf22(), "3E"};
  const char *const tails[] = {"",    "F1", "F19",  "F190",   "F191", "F1??",
                               "F1*", "*",  "F?90", "F190FF", "??"};
  std::mt19937 random(12);
  TempDir dir;
  for (int round = 0; round < 100; ++round) {
    std::vector<std::string> patterns;
    ScenarioFile scenario;
    for (int i = 0; i < 10; ++i) {
      patterns.push_back(services[random() % 3] + tails[random() % 11]);
      scenario.event(patterns.back(), {"A" + std::to_string(i)});
    }
    const std::string path = scenario.writeTo(dir.file("round" + std::to_string(round) + ".xml"));

    // Which request each one folds into (itself when it has an entry), and
    // which entries a later request hides.
    std::vector<size_t> entryOf(patterns.size());
    std::vector<bool> hidden(patterns.size(), false);
    for (size_t i = 0; i < patterns.size(); ++i)
      entryOf[i] = i;
    for (const Finding &finding : check(path).findings) {
      ASSERT_EQ(finding.message.find("the library keeps"), std::string::npos) << finding.message;
      unsigned earlier = namedLine(finding.message, "(line ");
      if (earlier == 0)
        earlier = namedLine(finding.message, "(first at line ");
      if (earlier == 0)
        continue;
      if (finding.message.find(" hides ") != std::string::npos)
        hidden[earlier - kFirstLine] = true;
      else
        entryOf[finding.line - kFirstLine] = entryOf[earlier - kFirstLine];
    }
    // An entry answers with the answers written last for it.
    std::vector<std::string> answerOf(patterns.size());
    for (size_t i = 0; i < patterns.size(); ++i)
      answerOf[entryOf[i]] = "A" + std::to_string(i);

    Scenario library(toWideString(path.c_str()));
    ASSERT_TRUE(library.load());
    for (size_t i = 0; i < patterns.size(); ++i) {
      if (entryOf[i] != i || patterns[i].find_first_of("?*") != std::string::npos)
        continue;
      const std::string answer = libraryAnswer(library, patterns[i]);
      if (hidden[i])
        EXPECT_NE(answer, answerOf[i]) << path << ": " << patterns[i];
      else
        EXPECT_EQ(answer, answerOf[i]) << path << ": " << patterns[i];
    }
  }
}

// An ECU that shares its transmit identifier or its address with several
// earlier ones is told about each of them, in file order, the identifier
// before the address for one earlier ECU; an ECU left out (no idRx) owns
// nothing.
TEST(CliCheck, EcuClashes_NameEveryEarlierOwnerInFileOrder) {
  TempDir dir;
  const std::string path =
      ConfigurationFile()
          .section("<UCE scenario='' targetAddress='10' idRx='7E8' idTx='7E0'/>") // line 3
          .section("<UCE scenario='' targetAddress='10' idRx='7E9' idTx='7E1'/>") // line 4
          .section("<UCE scenario='' targetAddress='11' idTx='7E0'/>")            // line 5
          .section("<UCE scenario='' targetAddress='12' idRx='7EA' idTx='7E0'/>") // line 6
          .section("<UCE scenario='' targetAddress='10' idRx='7EB' idTx='7E0'/>") // line 7
          .writeTo(dir.file("bench.xml"));
  std::vector<std::string> clashes;
  for (const Finding &finding : check(path, true).findings)
    if (finding.line == 7 && finding.message.find("already belongs") != std::string::npos)
      clashes.push_back(finding.message.substr(0, finding.message.find(' ')) + " " +
                        std::to_string(namedLine(finding.message, "ECU of line ")));
  EXPECT_EQ(clashes,
            (std::vector<std::string>{"idTx 3", "targetAddress 3", "targetAddress 4", "idTx 6"}));
}

// A name one slip from a name the library reads is reported; a tester's own
// grouping elements, further away, are not.
TEST(CliCheck, ElementNames_OnlyASlipOfAReadNameIsReported) {
  TempDir dir;
  const std::string path = ConfigurationFile()
                               .section("<PORT/><ECU/><SCENARIOS/><DEVICE/><UCEE/><Uce/>")
                               .section("<CAN_SERIALNUMBR>A</CAN_SERIALNUMBR>")
                               .section("<can_serialnumber>A</can_serialnumber>")
                               .writeTo(dir.file("bench.xml"));
  std::vector<std::string> slips;
  for (const Finding &finding : check(path, true).findings)
    if (finding.message.compare(0, 8, "element ") == 0)
      slips.push_back(finding.message.substr(8, finding.message.find(' ', 8) - 8));
  EXPECT_EQ(slips, (std::vector<std::string>{"DEVICE", "UCEE", "Uce", "CAN_SERIALNUMBR",
                                             "can_serialnumber"}));
}
