// A scenario read from its file, and the ECU that answers from it.
#include "ecu/Scenario.h"
#include "ecu/SimuECU.h"
#include "platform/CodePage.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"
#include "support/XmlFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <string>
#include <thread>
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

size_t bucketOf(const std::string &key) { return ScenarioKeyHash()(wide(key)) % 32; }

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

TEST_F(ScenarioTest, Buckets_OnlyTheFirstTwoCharactersPickTheBucketOfAPattern) {
  EXPECT_EQ(ScenarioKeyHash()(ACE_WString()), 0u);
  EXPECT_EQ(ScenarioKeyHash()(ACE_WString(L"2")), 0u);
  // A pattern with wildcards in its first two characters is filed under the
  // literal "??": it answers only requests whose prefix shares that bucket.
  std::string same, other;
  for (int byte = 0; byte < 256; ++byte) {
    const std::string prefix = {"0123456789ABCDEF"[byte >> 4], "0123456789ABCDEF"[byte & 15]};
    (bucketOf(prefix) == bucketOf("??") ? same : other) = prefix;
  }
  ASSERT_FALSE(same.empty() || other.empty());
  auto scenario = loaded(ScenarioFile().event("??01", {"ANY"}));
  ASSERT_EQ(scenario->bucketCount(), 32u);
  EXPECT_EQ(ask(*scenario, same + "01"), "ANY");
  EXPECT_EQ(ask(*scenario, other + "01"), kNoAnswer);
  EXPECT_EQ(ask(*scenario, same + "02"), kNoAnswer);
  setModificationTime(file, 1000010);
  EXPECT_EQ(ask(*scenario, same + "01"), "ANY") << "after a reload too";
}

TEST_F(ScenarioTest, Rotation_AdvancesPerEntryAndRestartsWhenALaterFileIsReloaded) {
  auto scenario = loaded(ScenarioFile()
                             .event("2E", {"R1", "R2", "R3"})
                             .event("22F1*", {"W1", "W2"})
                             .event("1003", {"A", "B"}));
  for (const char *expected : {"R1", "R2", "R3", "R1"})
    EXPECT_EQ(ask(*scenario, "2EF190"), expected);
  EXPECT_EQ(ask(*scenario, "22F190"), "W1") << "one rotation for every request a pattern matches";
  EXPECT_EQ(ask(*scenario, "22F1AA"), "W2");
  EXPECT_EQ(ask(*scenario, "1003"), "A");
  setModificationTime(file, 1000010);
  EXPECT_EQ(ask(*scenario, "2EF190"), "R1");
  EXPECT_EQ(ask(*scenario, "22F190"), "W1");
  EXPECT_EQ(ask(*scenario, "1003"), "A");

  // New content replaces the whole table.
  ScenarioFile().event("1003", {"NEW"}).writeTo(file);
  setModificationTime(file, 1000100);
  EXPECT_EQ(ask(*scenario, "1003"), "NEW");
  EXPECT_EQ(ask(*scenario, "2EF190"), kNoAnswer);
  // A save that leaves the file unreadable as XML empties the table.
  writeFile(file, "<SCENARIO><EVENEMENT>");
  setModificationTime(file, 1000200);
  EXPECT_EQ(ask(*scenario, "1003"), kNoAnswer);
  EXPECT_EQ(scenario->entryCount(), 0u);
}

TEST_F(ScenarioTest, AddEntry_EarlierMatchesAbsorbLaterRequestsAndLaterPatternsShadow) {
  auto scenario = loaded(ScenarioFile()
                             .event("22F1*", {"STAR"})
                             .event("22F190", {"EXACT"}) // absorbed by 22F1*
                             .event("1003", {"FIRST1", "FIRST2"})
                             .event("1003", {"SECOND"})
                             .event("3101FF", {"EXACT"})
                             .event("3101*", {"STAR"}) // an entry of its own, at the head
                             .event("2E01", {"EXACT"})
                             .event("2E*", {}) // no TRAME: answers as unknown, still shadows
                             .event("3E", {})
                             .event("3E00", {"ABSORBED"}));
  EXPECT_EQ(scenario->entryCount(), 7u);
  EXPECT_EQ(ask(*scenario, "22F190"), "EXACT");
  EXPECT_EQ(ask(*scenario, "22F1AB"), "EXACT");
  EXPECT_EQ(ask(*scenario, "1003"), "SECOND");
  EXPECT_EQ(ask(*scenario, "1003"), "SECOND");
  EXPECT_EQ(ask(*scenario, "3101FF"), "STAR");
  EXPECT_EQ(ask(*scenario, "3101AB"), "STAR");
  EXPECT_EQ(ask(*scenario, "2E01"), kNoAnswer);
  EXPECT_EQ(ask(*scenario, "3E"), "ABSORBED");
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

TEST_F(ScenarioTest, Load_OfAFileThatIsNoXmlDocumentSucceedsWithAnEmptyTableAndNoLog) {
  const std::string contents[] = {
      "", "22F190 62F190",
      "<SCENARIO><EVENEMENT><REQUETE><T>1003</T></REQUETE><REPONSE><TRAME>5003",
      std::string("\x00\xff\xfe<\x01\x02>\x80", 8), "<?xml version=\"1.0\"?>"};
  for (const auto &content : contents) {
    LogCapture log;
    auto scenario = loaded(content);
    EXPECT_EQ(scenario->entryCount(), 0u);
    EXPECT_EQ(ask(*scenario, "1003"), kNoAnswer);
    EXPECT_TRUE(log.lines().empty());
  }
}

TEST_F(ScenarioTest, Load_OfHugeLongAndDeeplyNestedScenariosKeepsEveryEntryWhole) {
  // 20,000 requests in the bucket of "22" with 1,000-character responses
  // (about 20 MB), a 1 MB request with a 4 MB response, and an event 100,000
  // elements deep.
  const std::string payload(1000, 'A'), longRequest = "2E" + std::string(1 << 20, 'F');
  const std::string longResponse(4 << 20, '7');
  ScenarioFile content;
  char request[16];
  for (int i = 0; i < 20000; ++i) {
    std::snprintf(request, sizeof request, "22%04X", i);
    content.event(request, {request + payload});
  }
  std::string open, close;
  for (int i = 0; i < 100000; ++i)
    open += "<D>", close += "</D>";
  auto scenario = loaded(content.event(longRequest, {longResponse})
                             .raw(open +
                                  "<EVENEMENT><REQUETE><T>3E00</T></REQUETE><REPONSE>"
                                  "<TRAME>7E00</TRAME></REPONSE></EVENEMENT>" +
                                  close));
  EXPECT_EQ(scenario->entryCount(), 20002u);
  EXPECT_EQ(ask(*scenario, "220000"), "220000" + payload);
  EXPECT_EQ(ask(*scenario, "224E1F"), "224E1F" + payload);
  EXPECT_TRUE(ask(*scenario, longRequest) == longResponse) << "the whole response comes back";
  EXPECT_EQ(ask(*scenario, "3E00"), "7E00");
}

TEST_F(ScenarioTest, Lookups_FromSeveralThreadsAdvanceTheRotationOnceEachAndSurviveReloads) {
  auto scenario = loaded(ScenarioFile().event("22F190", {"EVEN", "ODD"}).event("1003", {"D"}));
  std::atomic<int> even{0}, odd{0}, wrong{0};
  std::atomic<bool> done{false};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&] {
      for (int i = 0; i < 5000; ++i)
        ++(ask(*scenario, "22F190") == "EVEN" ? even : odd);
    });
  for (auto &thread : threads)
    thread.join();
  EXPECT_EQ(even, 10000);
  EXPECT_EQ(odd, 10000);

  // Readers during reloads on another thread always see a whole table.
  threads.clear();
  for (int t = 0; t < 2; ++t)
    threads.emplace_back([&] {
      while (!done) {
        const std::string answer = ask(*scenario, "22F190");
        wrong += (answer != "EVEN" && answer != "ODD") + (ask(*scenario, "1003") != "D");
      }
    });
  for (int edit = 1; edit <= 2000; ++edit) {
    setModificationTime(file, 1000000 + edit);
    ask(*scenario, "1003");
  }
  done = true;
  for (auto &thread : threads)
    thread.join();
  EXPECT_EQ(wrong, 0);
}

TEST_F(SimuECUTest, Construction_OnAnUnreachableFileLeavesAnEcuSilentForGood) {
  SimuECU ecu(1, 2, wide(file), L"80");
  EXPECT_FALSE(ecu.hasScenario());
  ScenarioFile().event("1003", {"5003"}).writeTo(file);
  EXPECT_EQ(answer(ecu, "1003"), kNoAnswer);
  EXPECT_EQ(answer(ecu, "2201"), kNoAnswer) << "not even a negative response";
}

TEST_F(SimuECUTest, GetResponse_AnswersUnknownRequestsWithTheNegativeCodeOnlyWhenAsked) {
  auto ecu = ecuOn(ScenarioFile().event("1003", {"5003"}).xml());
  EXPECT_EQ(answer(*ecu, "1003"), "5003") << "no OPENDIALOG entry: open";
  EXPECT_EQ(answer(*ecu, "2201"), "7F2280");
  EXPECT_EQ(answer(*ecu, "2201", false), kNoAnswer);
  EXPECT_EQ(answer(*ecu, "1003", false), "5003");

  ecu = ecuOn(ScenarioFile().event("1003", {"5003"}).xml(), "31");
  EXPECT_EQ(answer(*ecu, "3101FF00"), "7F3131");
  EXPECT_EQ(answer(*ecu, ""), "31") << "an empty request gets the code alone";
  EXPECT_EQ(answer(*ecu, "3"), "31");

  ecu = ecuOn("not a scenario", "11");
  EXPECT_EQ(answer(*ecu, "1003"), "7F1011") << "a file that is no XML still makes a scenario";
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

TEST_F(SimuECUTest, GetResponse_AdvancesTheDialogRotationFirstThenLooksUpTheRequest) {
  auto ecu = ecuOn(dialog({"TRUE", "FALSE"}));
  EXPECT_EQ(answer(*ecu, "1003"), "5003");
  EXPECT_EQ(answer(*ecu, "1003"), kNoAnswer);
  EXPECT_EQ(answer(*ecu, "1003"), "5003");
  EXPECT_FALSE(ecu->isDialogOpen()) << "a dialog check advances the same rotation";
  EXPECT_EQ(answer(*ecu, "1003"), "5003");
  // One pattern matches both look-ups: the dialog check takes one text, the
  // request the next.
  ecu = ecuOn(ScenarioFile().event("OP*", {"T1", "T2", "T3"}).xml());
  EXPECT_EQ(answer(*ecu, "OPXX"), "T2");
  EXPECT_EQ(answer(*ecu, "OPXX"), "T1");
  EXPECT_EQ(answer(*ecu, "OPXX"), "T3");
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
