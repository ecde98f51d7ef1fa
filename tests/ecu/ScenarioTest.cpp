#include "ecu/Scenario.h"
#include "platform/CodePage.h"
#include "support/LogCapture.h"
#include "support/ScenarioFile.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

ACE_WString wide(const std::string &text) { return toWideString(text.c_str()); }
std::string narrow(const ACE_WString &text) { return toAnsi(text.c_str()).get(); }

const char kNoAnswer[] = "<none>";

class ScenarioTest : public ::testing::Test {
protected:
  TempDir dir;
  std::string file = dir.file("ecu.xml");

  // Writes the content with a fixed modification time, then loads it.
  std::unique_ptr<Scenario> loaded(const std::string &content) {
    writeFile(file, content);
    setModificationTime(file, 1000000);
    auto scenario = std::make_unique<Scenario>(wide(file));
    EXPECT_TRUE(scenario->load());
    return scenario;
  }
  std::unique_ptr<Scenario> loaded(const ScenarioFile &scenario) { return loaded(scenario.xml()); }

  // The answer to `request`, or kNoAnswer when the look-up returns -1.
  static std::string ask(Scenario &scenario, const std::string &request) {
    ACE_WString response(L"untouched");
    if (scenario.findResponse(wide(request), response) != 0) {
      EXPECT_EQ(narrow(response), "untouched") << "a miss leaves the response alone";
      return kNoAnswer;
    }
    return narrow(response);
  }
};

bool matches(const std::string &stored, const std::string &asked) {
  return ScenarioKeyMatch()(wide(stored), wide(asked));
}

size_t bucketOf(const std::string &key, size_t buckets) {
  return ScenarioKeyHash()(wide(key)) % buckets;
}

} // namespace

TEST(ScenarioKeyMatchTest, PatternRules_StoredPatternFirstPrefixLengthAndWildcards) {
  const struct {
    const char *stored, *asked;
    bool match;
  } cases[] = {
      // clang-format off
      // A longer request matches; a shorter or different one never does.
      {"22F190", "22F190", true}, {"22F190", "22F19000", true},
      {"22F190", "22F1", false},  {"22F190", "22F191", false},
      // '?' stands for one character that must be there.
      {"22F1??", "22F1AB", true}, {"22F1??", "22F1A", false}, {"?", "", false},
      // '*' ends the comparison but keeps the length requirement.
      {"1081*", "1081", false},   {"1081*", "1081FF", true},  {"10*9", "10FF", true},
      // The empty pattern matches anything; letters are compared exactly.
      {"", "", true},             {"", "22", true},           {"22f190", "22F190", false},
      // Stored first, asked second: wildcards work only in the stored key.
      {"22F1", "22F190", true},   {"22F190", "22F1", false},
      {"22??", "22F1", true},     {"22F1", "22??", false},
      // clang-format on
  };
  for (const auto &c : cases)
    EXPECT_EQ(matches(c.stored, c.asked), c.match) << c.stored << " / " << c.asked;
}

TEST(ScenarioKeyHashTest, Hash_ComesFromTheFirstTwoCharactersOnly) {
  EXPECT_EQ(ScenarioKeyHash()(ACE_WString()), 0u);
  EXPECT_EQ(ScenarioKeyHash()(ACE_WString(L"2")), 0u);
  EXPECT_EQ(ScenarioKeyHash()(ACE_WString(L"22F190")), ACE_WString(L"22").hash());
  EXPECT_NE(ScenarioKeyHash()(ACE_WString(L"22")), ScenarioKeyHash()(ACE_WString(L"2E")));
}

TEST_F(ScenarioTest, Buckets_Are64UntilTheFirstLoadAnd32AfterEveryLoad) {
  Scenario scenario(wide(file));
  EXPECT_EQ(scenario.bucketCount(), 64u);
  EXPECT_EQ(ask(scenario, "22F190"), kNoAnswer) << "nothing is read before the first load";

  ScenarioFile().event("22F190", {"62F190"}).writeTo(file);
  ASSERT_TRUE(scenario.load());
  EXPECT_EQ(scenario.bucketCount(), 32u);
  touchForward(file);
  EXPECT_EQ(ask(scenario, "22F190"), "62F190");
  EXPECT_EQ(scenario.bucketCount(), 32u) << "after a reload too";
}

TEST_F(ScenarioTest, Lookup_ComparesOnlyWithEntriesOfTheRequestsBucket) {
  // A pattern with wildcards in its first two characters is filed under the
  // literal "??": it answers exactly those requests whose first two
  // characters hash to the same one of the 32 buckets.
  const size_t wildcardBucket = bucketOf("??", 32);
  std::string sameBucket, otherBucket;
  for (int byte = 0; byte < 256 && (sameBucket.empty() || otherBucket.empty()); ++byte) {
    const std::string prefix = {"0123456789ABCDEF"[byte >> 4], "0123456789ABCDEF"[byte & 15]};
    (bucketOf(prefix, 32) == wildcardBucket ? sameBucket : otherBucket) = prefix;
  }
  ASSERT_FALSE(sameBucket.empty()) << "some byte shares the bucket of \"??\"";
  auto scenario = loaded(ScenarioFile().event("??01", {"ANY"}));

  EXPECT_EQ(ask(*scenario, sameBucket + "01"), "ANY");
  EXPECT_EQ(ask(*scenario, otherBucket + "01"), kNoAnswer);
  EXPECT_EQ(ask(*scenario, sameBucket + "02"), kNoAnswer);
}

TEST_F(ScenarioTest, Lookup_HandsOutResponsesInRotationPerEntry) {
  auto scenario = loaded(ScenarioFile()
                             .event("2E", {"R1", "R2", "R3"})
                             .event("22F190", {"X"})
                             .event("22F1*", {"W1", "W2"}));
  for (const char *expected : {"R1", "R2", "R3", "R1"})
    EXPECT_EQ(ask(*scenario, "2EF190"), expected);
  // 22F1* was added last, so it sits at the head of the shared bucket and
  // answers both requests; every match advances its one rotation.
  EXPECT_EQ(ask(*scenario, "22F190"), "W1");
  EXPECT_EQ(ask(*scenario, "22F1AA"), "W2");
  EXPECT_EQ(ask(*scenario, "22F190"), "W1");
}

TEST_F(ScenarioTest, Lookup_ReloadsALaterFileAndRestartsEveryRotation) {
  const auto content = ScenarioFile().event("22F190", {"R1", "R2", "R3"}).event("1003", {"A", "B"});
  auto scenario = loaded(content);
  EXPECT_EQ(ask(*scenario, "22F190"), "R1");
  EXPECT_EQ(ask(*scenario, "22F190"), "R2");
  EXPECT_EQ(ask(*scenario, "1003"), "A");

  touchForward(file);
  EXPECT_EQ(ask(*scenario, "22F190"), "R1");
  EXPECT_EQ(ask(*scenario, "1003"), "A");

  // An earlier time is not a change; new content with a later one is.
  ScenarioFile().event("1003", {"NEW"}).writeTo(file);
  setModificationTime(file, 999000);
  EXPECT_EQ(ask(*scenario, "1003"), "B");
  setModificationTime(file, 1000100);
  EXPECT_EQ(ask(*scenario, "1003"), "NEW");
  EXPECT_EQ(ask(*scenario, "22F190"), kNoAnswer);

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
                             .event("1003", {"SECOND"}) // the same request again
                             .event("3101FF", {"EXACT"})
                             .event("3101*", {"STAR"})); // an entry of its own, at the head
  EXPECT_EQ(scenario->entryCount(), 4u);
  EXPECT_EQ(ask(*scenario, "22F190"), "EXACT");
  EXPECT_EQ(ask(*scenario, "22F1AB"), "EXACT");
  EXPECT_EQ(ask(*scenario, "1003"), "SECOND");
  EXPECT_EQ(ask(*scenario, "1003"), "SECOND");
  EXPECT_EQ(ask(*scenario, "3101FF"), "STAR");
  EXPECT_EQ(ask(*scenario, "3101AB"), "STAR");
}

TEST_F(ScenarioTest, Parse_ResponseWithoutTrameAnswersAsUnknownButStillShadows) {
  auto scenario = loaded(ScenarioFile()
                             .event("22F190", {"EXACT"})
                             .event("22F1*", {})
                             .event("3101", {})
                             .event("3101FF", {"ABSORBED"}));
  EXPECT_EQ(scenario->entryCount(), 3u);
  EXPECT_EQ(ask(*scenario, "22F190"), kNoAnswer) << "the empty pattern entry is met first";
  EXPECT_EQ(ask(*scenario, "3101"), "ABSORBED")
      << "a later request that the empty entry matches gives it responses";
}

TEST_F(ScenarioTest, Parse_ReadsThePatternFromTheFirstChildOfTheFirstRequete) {
  auto scenario = loaded(ScenarioFile()
                             .raw("<EVENEMENT><REQUETE>1001<ANY>1003</ANY><X>1002</X></REQUETE>"
                                  "<REQUETE><T>1004</T></REQUETE>"
                                  "<REPONSE><TRAME>5003</TRAME><G><TRAME>NESTED</TRAME></G>"
                                  "</REPONSE><REPONSE><TRAME>IGNORED</TRAME></REPONSE></EVENEMENT>")
                             .event(" 3E00", {"SPACED"}));
  EXPECT_EQ(ask(*scenario, "1003"), "5003");
  EXPECT_EQ(ask(*scenario, "1003"), "NESTED") << "TRAME elements anywhere below the REPONSE";
  for (const char *ignored : {"1001", "1002", "1004"})
    EXPECT_EQ(ask(*scenario, ignored), kNoAnswer) << ignored;
  EXPECT_EQ(ask(*scenario, "3E00"), kNoAnswer) << "contents are not trimmed";
  EXPECT_EQ(ask(*scenario, " 3E00"), "SPACED");
}

TEST_F(ScenarioTest, Parse_SkipsMalformedEventsWithOneLogLineNamingFileAndPosition) {
  LogCapture log;
  auto scenario = loaded(ScenarioFile()
                             .event("1001", {"GOOD1"})
                             .raw("<EVENEMENT><REPONSE><TRAME>X</TRAME></REPONSE></EVENEMENT>")
                             .raw("<EVENEMENT><REQUETE>1002</REQUETE>"
                                  "<REPONSE><TRAME>X</TRAME></REPONSE></EVENEMENT>")
                             .raw("<EVENEMENT><REQUETE><T>1003</T></REQUETE></EVENEMENT>")
                             .event("1004", {"GOOD5"}));
  EXPECT_EQ(ask(*scenario, "1001"), "GOOD1");
  EXPECT_EQ(ask(*scenario, "1004"), "GOOD5");
  EXPECT_EQ(ask(*scenario, "1003"), kNoAnswer);
  EXPECT_EQ(scenario->entryCount(), 2u);

  std::string stored = file;
  for (auto &c : stored)
    if (c == '/')
      c = '\\';
  const auto lines = log.lines();
  ASSERT_EQ(lines.size(), 3u);
  const char *expected[] = {"EVENEMENT number 2 skipped, it has no REQUETE element",
                            "EVENEMENT number 3 skipped, its REQUETE has no child element",
                            "EVENEMENT number 4 skipped, it has no REPONSE element"};
  for (size_t i = 0; i < 3; ++i) {
    EXPECT_NE(lines[i].find("<" + stored + ">"), std::string::npos) << lines[i];
    EXPECT_NE(lines[i].find(expected[i]), std::string::npos) << lines[i];
  }
}

TEST_F(ScenarioTest, Load_OfAFileThatIsNoXmlDocumentSucceedsWithAnEmptyTableAndNoLog) {
  const std::string contents[] = {
      "",
      "22F190 62F190",
      "<SCENARIO><EVENEMENT><REQUETE><T>1003</T></REQUETE><REPONSE><TRAME>5003",
      std::string("\x00\xff\xfe<\x01\x02>\x80", 8),
      "<?xml version=\"1.0\"?>",
  };
  for (const auto &content : contents) {
    LogCapture log;
    auto scenario = loaded(content);
    EXPECT_EQ(scenario->entryCount(), 0u);
    EXPECT_EQ(scenario->bucketCount(), 32u);
    EXPECT_EQ(ask(*scenario, "1003"), kNoAnswer);
    EXPECT_EQ(ask(*scenario, "OPENDIALOG"), kNoAnswer);
    EXPECT_TRUE(log.lines().empty());
  }
}

TEST_F(ScenarioTest, Load_OfAHugeScenarioInOneBucketKeepsEveryEntry) {
  // 20,000 requests of one service with 1,000-character responses: about
  // 20 MB of XML, every entry in the bucket of "22".
  const int count = 20000;
  const std::string payload(1000, 'A');
  std::string xml = "<SCENARIO>";
  char request[16];
  for (int i = 0; i < count; ++i) {
    std::snprintf(request, sizeof request, "22%04X", i);
    xml += std::string("<EVENEMENT><REQUETE><T>") + request + "</T></REQUETE><REPONSE><TRAME>" +
           request + payload + "</TRAME></REPONSE></EVENEMENT>";
  }
  xml += "</SCENARIO>";
  auto scenario = loaded(xml);
  EXPECT_EQ(scenario->entryCount(), static_cast<size_t>(count));
  EXPECT_EQ(ask(*scenario, "220000"), "220000" + payload);
  EXPECT_EQ(ask(*scenario, "224E1F"), "224E1F" + payload);
  EXPECT_EQ(ask(*scenario, "22FFFF"), kNoAnswer);
}

TEST_F(ScenarioTest, Load_OfVeryLongTextsAndDeepNestingNeitherCrashesNorLosesText) {
  const std::string longRequest = "22" + std::string(1 << 20, 'F');
  const std::string longResponse(4 << 20, '7');
  const int depth = 100000;
  std::string nested;
  for (int i = 0; i < depth; ++i)
    nested += "<D>";
  nested += "<EVENEMENT><REQUETE><T>3E00</T></REQUETE><REPONSE><TRAME>7E00</TRAME></REPONSE>"
            "</EVENEMENT>";
  for (int i = 0; i < depth; ++i)
    nested += "</D>";
  auto scenario = loaded(ScenarioFile().event(longRequest, {longResponse}).raw(nested));
  EXPECT_TRUE(ask(*scenario, longRequest) == longResponse) << "the whole response comes back";
  EXPECT_EQ(ask(*scenario, longRequest.substr(0, 1000)), kNoAnswer);
  EXPECT_EQ(ask(*scenario, "3E00"), "7E00");
}

TEST_F(ScenarioTest, Lookups_FromSeveralThreadsEachAdvanceTheRotationOnce) {
  auto scenario = loaded(ScenarioFile().event("22F190", {"EVEN", "ODD"}));
  std::atomic<int> even{0}, odd{0};
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
}

TEST_F(ScenarioTest, Lookups_DuringReloadsOnOtherThreadsAlwaysSeeAWholeTable) {
  auto scenario = loaded(ScenarioFile().event("22F190", {"A", "B", "C"}).event("1003", {"D"}));
  std::atomic<bool> done{false};
  std::atomic<int> wrong{0};
  std::vector<std::thread> readers;
  for (int t = 0; t < 2; ++t)
    readers.emplace_back([&] {
      while (!done) {
        const std::string answer = ask(*scenario, "22F190");
        if (answer != "A" && answer != "B" && answer != "C")
          ++wrong;
        if (ask(*scenario, "1003") != "D")
          ++wrong;
      }
    });
  for (int edit = 1; edit <= 2000; ++edit) {
    setModificationTime(file, 1000000 + edit);
    ask(*scenario, "1003");
  }
  done = true;
  for (auto &reader : readers)
    reader.join();
  EXPECT_EQ(wrong, 0);
}
