// A scenario read from its file, and the ECU that answers from it.
#include "ecu/Scenario.h"
#include "ecu/SimuECU.h"
#include "platform/CodePage.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"
#include "support/XmlFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace {

ACE_WString wide(const std::string &text) { return toWideString(text.c_str()); }
const char kNoAnswer[] = "<none>";

class ScenarioTest : public ::testing::Test {
protected:
  TempDir dir;
  std::string file = dir.file("ecu.xml");
  long long fileTime = 1000000;

  // Saves the content `later` seconds after the previous save: an edit the
  // next look-up reads when `later` is positive.
  void save(const std::string &content, long long later = 0) {
    writeFile(file, content);
    setModificationTime(file, fileTime += later);
  }
  std::unique_ptr<Scenario> loaded(const std::string &content) {
    save(content);
    auto scenario = std::make_unique<Scenario>(wide(file));
    EXPECT_TRUE(scenario->load());
    return scenario;
  }
  std::unique_ptr<Scenario> loaded(const ScenarioFile &scenario) { return loaded(scenario.xml()); }

  // The text a look-up handed out, or kNoAnswer; one that answered nothing
  // must leave the response as it was.
  static std::string textOf(bool answered, const ACE_WString &response) {
    const std::string text = toAnsi(response.c_str()).get();
    if (answered)
      return text;
    EXPECT_EQ(text, "untouched") << "no answer leaves the response alone";
    return kNoAnswer;
  }
  static std::string ask(Scenario &scenario, const std::string &request) {
    ACE_WString response(L"untouched");
    return textOf(scenario.findResponse(wide(request), response) == 0, response);
  }
};

class SimuECUTest : public ScenarioTest {
protected:
  std::unique_ptr<SimuECU> ecuOn(const std::string &xml, const std::string &code = "80") {
    save(xml);
    return std::make_unique<SimuECU>(0x7E8, 0x7E0, wide(file), wide(code));
  }
  static std::string dialog(const std::vector<std::string> &answers) {
    return ScenarioFile().event("OPENDIALOG", answers).event("1003", {"5003"}).xml();
  }
  static std::string answer(SimuECU &ecu, const std::string &request, bool answerUnknown = true) {
    ACE_WString response(L"untouched");
    return textOf(ecu.getResponse(wide(request), response, answerUnknown), response);
  }
};

} // namespace

TEST(ScenarioKeyMatchTest, PatternRules_StoredPatternFirstPrefixLengthAndWildcards) {
  const struct {
    const char *stored, *asked;
    bool match;
  } cases[] = {
      // clang-format off
      // A longer request matches; a shorter or different one never does.
      {"22F190", "22F190", true}, {"22F190", "22F19000", true}, {"22F190", "22F1", false},
      {"22F190", "22F191", false},
      // '?' stands for one character that must be there; '*' ends the
      // comparison but keeps the length requirement.
      {"22F1??", "22F1AB", true}, {"22F1??", "22F1A", false}, {"?", "", false},
      {"1081*", "1081", false},   {"1081*", "1081FF", true},  {"10*9", "10FF", true},
      // The empty pattern matches anything; letters are compared exactly.
      {"", "", true},             {"", "22", true},           {"22f190", "22F190", false},
      // Wildcards work only in the stored key.
      {"22??", "22F1", true},     {"22F1", "22??", false},
      // clang-format on
  };
  for (const auto &c : cases)
    EXPECT_EQ(ScenarioKeyMatch()(wide(c.stored), wide(c.asked)), c.match)
        << c.stored << " / " << c.asked;
}

TEST_F(ScenarioTest, Parse_TakesTheFirstChildOfTheRequeteAndLogsEachSkippedEvent) {
  LogCapture log;
  auto scenario =
      loaded(ScenarioFile()
                 .raw("<EVENEMENT><REQUETE>1001<!-- 1004 --><A>1003</A><X>1002</X></REQUETE>"
                      "<REPONSE><G><TRAME>5003</TRAME></G></REPONSE></EVENEMENT>")
                 .raw("<EVENEMENT><REPONSE><TRAME>X</TRAME></REPONSE></EVENEMENT>")
                 .raw("<EVENEMENT><REQUETE>1005</REQUETE>"
                      "<REPONSE><TRAME>X</TRAME></REPONSE></EVENEMENT>")
                 .raw("<EVENEMENT><REQUETE><T>1006</T></REQUETE></EVENEMENT>"));
  EXPECT_EQ(scenario->entryCount(), 1u);
  EXPECT_EQ(ask(*scenario, "1003"), "5003") << "TRAME elements anywhere below the REPONSE";
  for (const char *ignored : {"1001", "1002", "1004", "1005", "1006"})
    EXPECT_EQ(ask(*scenario, ignored), kNoAnswer) << ignored;
  std::string skipped = "Scenario <" + file + ">: EVENEMENT number ";
  std::replace(skipped.begin(), skipped.end(), '/', '\\');
  EXPECT_EQ(log.lines(),
            (std::vector<std::string>{skipped + "2 skipped, it has no REQUETE element",
                                      skipped + "3 skipped, its REQUETE has no child element",
                                      skipped + "4 skipped, it has no REPONSE element"}));
}

TEST_F(SimuECUTest, Construction_OnAnUnreachableFileLeavesAnEcuSilentForGood) {
  SimuECU ecu(1, 2, wide(file), L"80");
  EXPECT_FALSE(ecu.hasScenario());
  ScenarioFile().event("1003", {"5003"}).writeTo(file);
  EXPECT_EQ(answer(ecu, "1003"), kNoAnswer);
  EXPECT_EQ(answer(ecu, "2201"), kNoAnswer) << "not even a negative response";
}

TEST_F(SimuECUTest, Dialog_OnlyTheExactTextFalseClosesItUntilTheFileIsEdited) {
  for (const char *text : {"false", "False", "FALSE ", "", "0"})
    EXPECT_TRUE(ecuOn(dialog({text}))->isDialogOpen()) << "'" << text << "'";
  auto ecu = ecuOn(dialog({"FALSE"}));
  EXPECT_FALSE(ecu->isDialogOpen());
  EXPECT_EQ(answer(*ecu, "1003"), kNoAnswer);
  EXPECT_EQ(answer(*ecu, "2201"), kNoAnswer);
  save(dialog({"TRUE"}), 10);
  EXPECT_EQ(answer(*ecu, "1003"), "5003");
  save(dialog({"FALSE"}), 10);
  EXPECT_FALSE(ecu->isDialogOpen());
  save(ScenarioFile().event("1003", {"5003"}).xml(), 10);
  EXPECT_TRUE(ecu->isDialogOpen()) << "entry removed";
}

// The line an answer names is its EVENEMENT's, counted in the file as
// written: CR LF endings, a comment over several lines, text with entities
// (all of which the parser rewrites in place) do not shift it; an edit
// renumbers, and a file that stops parsing keeps no line and says why.
TEST_F(ScenarioTest, EachHitNamesTheLineOfItsEvenementAsWritten) {
  const std::string crlf = "<?xml version=\"1.0\"?>\r\n<SCENARIO>\r\n<!-- one\r\ntwo\r\n-->\r\n"
                           "<EVENEMENT><REQUETE><T>1001</T></REQUETE><REPONSE><TRAME>&#x35;001"
                           "</TRAME></REPONSE></EVENEMENT>\r\n\r\n"
                           "<EVENEMENT>\r\n<REQUETE><T>22F1?\?</T></REQUETE>\r\n"
                           "<REPONSE><TRAME>62F190</TRAME><TRAME>62F191</TRAME></REPONSE>\r\n"
                           "</EVENEMENT>\r\n</SCENARIO>\r\n";
  auto scenario = loaded(crlf);
  ACE_WString response;
  ScenarioHit hit;
  ASSERT_EQ(scenario->findResponse(wide("1001"), response, &hit), 0);
  EXPECT_EQ(std::string(toAnsiString(response).c_str()), "5001");
  EXPECT_EQ(hit.line, 6u);
  ASSERT_EQ(scenario->findResponse(wide("22F190"), response, &hit), 0);
  ASSERT_EQ(scenario->findResponse(wide("22F190"), response, &hit), 0);
  EXPECT_EQ(hit.line, 8u);
  EXPECT_EQ(std::string(toAnsiString(hit.pattern).c_str()), "22F1??");
  EXPECT_EQ(hit.index * 10 + hit.count, 22u) << "the second response of two";

  save(ScenarioFile().event("1001", {"5001"}).xml(), 1);
  ASSERT_EQ(scenario->findResponse(wide("1001"), response, &hit), 0);
  EXPECT_EQ(hit.line, 3u);
  EXPECT_TRUE(scenario->parseProblem().message.empty());

  save("<SCENARIO>\n<EVENEMENT>\n</SCENARIO>\n", 1);
  EXPECT_NE(scenario->findResponse(wide("1001"), response, &hit), 0);
  EXPECT_EQ(scenario->parseProblem().line, 3u);
  EXPECT_EQ(scenario->parseProblem().message, "Start-end tags mismatch");
  EXPECT_TRUE(scenario->entries().empty());
}
