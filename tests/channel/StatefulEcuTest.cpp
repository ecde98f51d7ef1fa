// Stateful ECUs through a one-to-one channel: sessions that gate entries,
// security access, identifiers whose written values stick, and the refusal
// the records give. Each table is a dialog: requests in order, each with
// the answer it must get from the state the earlier ones left.
#include "ChannelFixture.h"

#include "core/SessionReport.h"
#include "platform/CodePage.h"

#include <chrono>
#include <ctime>
#include <string>
#include <thread>
#include <vector>

using namespace channel_test;

namespace {

struct Step {
  const char *request;
  const char *answer;
  unsigned waitMs = 0; // pause before the request
};

class StatefulEcu : public ChannelTest {
protected:
  CAN_CHN_HANDLE channel = nullptr;

  void startEcu(const std::string &scenarioXml) {
    const std::string path = dir.file("ecu.xml");
    writeFile(path, scenarioXml);
    startWith("<UCE scenario='" + path + "' targetAddress='7A' idRx='7E8' idTx='7E0'/>",
              {{0x7A, 0x7E0, 0x7E8}});
    channel = openChannel(CHN_ONE_TO_ONE, 0x7A);
  }
  std::string ask(const std::string &request) {
    EXPECT_EQ(send(channel, request), E_SUCCESS);
    ChannelEvent event = nextEvent(channel);
    EXPECT_EQ(event->type, CHN_TYPE_RCV_SUCCESS) << request;
    return resultHex(*event);
  }
  void play(const std::vector<Step> &steps) {
    size_t number = 0;
    for (const Step &step : steps) {
      ++number;
      if (step.waitMs != 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(step.waitMs));
      EXPECT_EQ(ask(step.request), step.answer) << "step " << number << ": " << step.request;
    }
  }
};

const char kSessions[] = R"(<?xml version="1.0"?>
<SCENARIO>
  <STATE s3="300"/>
  <EVENEMENT enter="03"><REQUETE><TRAME>1003</TRAME></REQUETE><REPONSE><TRAME>5003</TRAME></REPONSE></EVENEMENT>
  <EVENEMENT enter="01"><REQUETE><TRAME>1001</TRAME></REQUETE><REPONSE><TRAME>5001</TRAME></REPONSE></EVENEMENT>
  <EVENEMENT sessions="03"><REQUETE><TRAME>3101FF00</TRAME></REQUETE><REPONSE><TRAME>7101FF00</TRAME></REPONSE></EVENEMENT>
  <EVENEMENT sessions="02 03" nrc="22"><REQUETE><TRAME>2803</TRAME></REQUETE><REPONSE><TRAME>6803</TRAME></REPONSE></EVENEMENT>
  <EVENEMENT><REQUETE><TRAME>3E00</TRAME></REQUETE><REPONSE><TRAME>7E00</TRAME></REPONSE></EVENEMENT>
  <EVENEMENT><REQUETE><TRAME>22010</TRAME></REQUETE><REPONSE><TRAME>620100</TRAME></REPONSE></EVENEMENT>
  <EVENEMENT sessions="03"><REQUETE><TRAME>2201*</TRAME></REQUETE><REPONSE><TRAME>62010003</TRAME></REPONSE></EVENEMENT>
</SCENARIO>
)";

const char kSecurity[] = R"(<?xml version="1.0"?>
<SCENARIO>
  <STATE>
    <SECURITY level="01" seed="11223344 55667788" key="xor:A5A5A5A5" attempts="2" lockout="300"/>
    <SECURITY level="03" seed="0102" key="CAFE" sessions="02"/>
  </STATE>
  <EVENEMENT enter="02"><REQUETE><TRAME>1002</TRAME></REQUETE><REPONSE><TRAME>5002</TRAME></REPONSE></EVENEMENT>
  <EVENEMENT enter="01"><REQUETE><TRAME>1001</TRAME></REQUETE><REPONSE><TRAME>5001</TRAME></REPONSE></EVENEMENT>
  <EVENEMENT security="01"><REQUETE><TRAME>3101FF00</TRAME></REQUETE><REPONSE><TRAME>7101FF00</TRAME></REPONSE></EVENEMENT>
</SCENARIO>
)";

const char kIdentifiers[] = R"(<?xml version="1.0"?>
<SCENARIO>
  <STATE>
    <SECURITY level="01" seed="1234" key="add:0001"/>
    <DID id="F190" value="414243" write="03"/>
    <DID id="F18C" value="0102" write="*" security="01"/>
    <DID id="F187" value="99"/>
  </STATE>
  <EVENEMENT enter="03"><REQUETE><TRAME>1003</TRAME></REQUETE><REPONSE><TRAME>5003</TRAME></REPONSE></EVENEMENT>
  <EVENEMENT><REQUETE><TRAME>22F1*</TRAME></REQUETE><REPONSE><TRAME>7F2231</TRAME></REPONSE></EVENEMENT>
</SCENARIO>
)";

} // namespace

TEST_F(StatefulEcu, SessionsGateEntriesAndFallBackAfterS3) {
  startEcu(kSessions);
  play({
      {"3101FF00", "7F317F"},        // needs session 03: refused
      {"2803", "7F2822"},            // the entry's own refusal code
      {"220100", "620100"},          // the session-03 pattern is passed over
      {"1003", "5003"},              // enters session 03
      {"3101FF00", "7101FF00"},      //
      {"220100", "62010003"},        // now the session-03 pattern answers
      {"2803", "6803"},              //
      {"3E00", "7E00", 200},         // tester present keeps the session
      {"3101FF00", "7101FF00", 200}, // 200 ms since the last request: still 03
      {"3101FF00", "7F317F", 450},   // silent past S3: back in the default session
      {"1003", "5003"},              //
      {"1001", "5001"},              //
      {"3101FF00", "7F317F"},        //
  });
}

TEST_F(StatefulEcu, SecurityAccessSeedsKeysAttemptsAndLockOut) {
  startEcu(kSecurity);
  play({
      {"3101FF00", "7F3133"},        // level 01 locked
      {"2702B48796E1", "7F2724"},    // a key before any seed
      {"2701", "670111223344"},      // first seed of the rotation
      {"2702B48796", "7F2713"},      // a key of the wrong length
      {"2702B4879600", "7F2735"},    // wrong key: one attempt left
      {"2701", "670155667788"},      // the rotation goes on
      {"2702B48796E1", "7F2736"},    // the key of the old seed: locked out
      {"2701", "7F2737"},            // until the lock-out has passed
      {"2701", "670111223344", 350}, //
      {"2702B48796E1", "6702"},      // 11223344 XOR A5A5A5A5
      {"3101FF00", "7101FF00"},      //
      {"2701", "670100000000"},      // an unlocked level gives a zero seed
      {"2703", "7F277E"},            // level 03 only in session 02
      {"1002", "5002"},              // a session change locks again
      {"3101FF00", "7F3133"},        //
      {"2703", "67030102"},          //
      {"2704CAFE", "6704"},          // a fixed key
      {"3101FF00", "7F3133"},        // level 03 is not level 01
  });
}

TEST_F(StatefulEcu, IdentifiersKeepWhatIsWrittenUntilTheFileIsReadAgain) {
  startEcu(kIdentifiers);
  play({
      {"22F190", "62F190414243"},
      {"22F190F187", "62F190414243F18799"}, // several declared identifiers
      {"22F1A0", "7F2231"},                 // not declared: the scenario answers
      {"2EF190444546", "7F2E31"},           // writable in session 03 only
      {"1003", "5003"},                     //
      {"2EF1904445", "7F2E13"},             // wrong length
      {"2EF190444546", "6EF190"},           //
      {"22F190", "62F190444546"},           // the written value sticks
      {"2EF18C0304", "7F2E33"},             // needs level 01
      {"2701", "67011234"},                 //
      {"27021235", "6702"},                 // 1234 + 0001
      {"2EF18C0304", "6EF18C"},             //
      {"22F18C", "62F18C0304"},             //
      {"2EF18799", "7F2E31"},               // read-only
  });
  // Saving the file starts the state again.
  setModificationTime(dir.file("ecu.xml"), std::time(nullptr) + 100);
  play({{"22F190", "62F190414243"}, {"22F18C", "62F18C0102"}});
}

TEST_F(StatefulEcu, RefusalsAndTheStateReachTheLogAndTheReport) {
  const std::string reportPath = dir.file("report.json");
  SessionReport::openNamed(toWideString(reportPath.c_str()), L"the test");
  startEcu(kSessions);
  EXPECT_EQ(ask("3101FF00"), "7F317F");
  EXPECT_EQ(ask("1003"), "5003");
  EXPECT_EQ(log.count("refused for its state: entry <" + dir.file("ecu.xml") +
                      ">:6 3101FF00 needs session 03, ECU in 01"),
            1u);
  EXPECT_EQ(log.count("ECU state: ECU 7e0/7e8: session 01"), 1u);
  EXPECT_EQ(log.count("ECU state: ECU 7e0/7e8: session 03"), 1u);
  CAN_DrvEnd();
  const std::string report = readFile(reportPath);
  EXPECT_NE(report.find("\"refused\": 1, \"refusal\": \"needs session 03, ECU in 01\""),
            std::string::npos)
      << report;
}
