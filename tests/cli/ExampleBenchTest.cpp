// The example bench is the data testers copy: its ECU entries must be
// complete and its scenarios must answer the diagnostic services they
// document, read by the library's own scenario and ECU code.
#include "ecu/SimuECU.h"
#include "platform/CodePage.h"
#include "platform/TDomData.h"

#include <gtest/gtest.h>

#include <ace/Containers_T.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <set>
#include <string>

namespace {

ACE_WString wide(const std::string &text) { return toWideString(text.c_str()); }
std::string narrow(const ACE_WString &text) { return toAnsi(text.c_str()).get(); }
std::string examples(const std::string &name) {
  return std::string(CANSIMU_EXAMPLES_DIR) + "/" + name;
}

// The texts of every `tag` element of an XML file, in document order.
std::vector<std::string> texts(const std::string &file, const char *tag) {
  TDomData document;
  EXPECT_TRUE(document.load(wide(file))) << file;
  ACE_Array<TDomData> found;
  document.getSubNodesByTagName(wide(tag), found, true);
  std::vector<std::string> out;
  for (size_t i = 0; i < found.size(); ++i) {
    ACE_WString text;
    found[i].getContent(text);
    out.push_back(narrow(text));
  }
  return out;
}

struct EcuEntry {
  std::map<std::string, std::string> attributes;
};

std::vector<EcuEntry> ecuEntries() {
  TDomData document;
  EXPECT_TRUE(document.load(wide(examples("bench.xml"))));
  ACE_Array<TDomData> found;
  document.getSubNodesByTagName(L"UCE", found, true);
  std::vector<EcuEntry> entries;
  for (size_t i = 0; i < found.size(); ++i) {
    EcuEntry entry;
    for (const char *name : {"scenario", "targetAddress", "idRx", "idTx"}) {
      ACE_WString value;
      found[i].getAttributeValue(wide(name), value);
      entry.attributes[name] = narrow(value);
    }
    entries.push_back(entry);
  }
  return entries;
}

class CliExampleBench : public ::testing::Test {
protected:
  // The bench's ECUs as the port builds them: identifiers in hex, the
  // scenario beside the configuration, the bench's negative code.
  std::unique_ptr<SimuECU> ecu(const std::string &scenario) {
    const std::string code = texts(examples("bench.xml"), "NEGATIVE_RESPONSE").at(0);
    for (const EcuEntry &entry : ecuEntries())
      if (entry.attributes.at("scenario") == scenario)
        return std::make_unique<SimuECU>(
            std::strtoul(entry.attributes.at("idRx").c_str(), nullptr, 16),
            std::strtoul(entry.attributes.at("idTx").c_str(), nullptr, 16),
            wide(examples(scenario)), wide(code));
    ADD_FAILURE() << "no UCE for " << scenario;
    return nullptr;
  }
  static std::string answer(SimuECU &ecu, const std::string &request) {
    ACE_WString response;
    return ecu.getResponse(wide(request), response, true) ? narrow(response) : "<none>";
  }
};

} // namespace

TEST_F(CliExampleBench, Ecus_ThreeCompleteEntriesWithDistinctIdentifiersAndOpenDialogs) {
  const std::vector<EcuEntry> entries = ecuEntries();
  ASSERT_EQ(entries.size(), 3u);
  std::set<std::string> identifiers;
  for (const EcuEntry &entry : entries) {
    for (const auto &attribute : entry.attributes)
      EXPECT_FALSE(attribute.second.empty()) << attribute.first << " is required";
    identifiers.insert(entry.attributes.at("idTx"));
    identifiers.insert(entry.attributes.at("idRx"));
    auto simulated = ecu(entry.attributes.at("scenario"));
    ASSERT_TRUE(simulated && simulated->hasScenario()) << entry.attributes.at("scenario");
    EXPECT_TRUE(simulated->isDialogOpen());
  }
  EXPECT_EQ(identifiers.size(), 6u) << "every identifier belongs to one ECU";
  EXPECT_EQ(entries[0].attributes.at("idTx"), "7E0");
  EXPECT_EQ(entries[0].attributes.at("idRx"), "7E8");
}

TEST_F(CliExampleBench, Engine_AnswersSessionsIdentificationAndDtcReads) {
  auto engine = ecu("engine.xml");
  ASSERT_TRUE(engine);
  EXPECT_EQ(answer(*engine, "1003"), "5003003201F4");
  EXPECT_EQ(answer(*engine, "3E00"), "7E00");
  EXPECT_EQ(answer(*engine, "22F190"), "62F19056463153494D5530303030303030303432");
  EXPECT_EQ(answer(*engine, "1002"), "7F1022") << "the written negative response";
  // "*" takes any status mask, "?" any identifier of a range.
  EXPECT_EQ(answer(*engine, "1902FF"), "5902FF0301002F01280028");
  EXPECT_EQ(answer(*engine, "190208"), "5902FF0301002F01280028");
  EXPECT_EQ(answer(*engine, "22F40D"), "7F2231");
  EXPECT_EQ(answer(*engine, "22F190"), "62F19056463153494D5530303030303030303432")
      << "the range pattern does not shadow the VIN";
}

TEST_F(CliExampleBench, Engine_RotatesItsEngineSpeedAndChecksTheSecurityKey) {
  auto engine = ecu("engine.xml");
  ASSERT_TRUE(engine);
  EXPECT_EQ(answer(*engine, "22DD01"), "62DD010320");
  EXPECT_EQ(answer(*engine, "22DD01"), "62DD010B54");
  EXPECT_EQ(answer(*engine, "22DD01"), "62DD011770");
  EXPECT_EQ(answer(*engine, "22DD01"), "62DD010320");
  EXPECT_EQ(answer(*engine, "2701"), "670112345678");
  EXPECT_EQ(answer(*engine, "2702EDCBA987"), "6702");
  EXPECT_EQ(answer(*engine, "270200000000"), "7F2711") << "a wrong key gets the bench's code";
}

TEST_F(CliExampleBench, GatewayAndBody_AnswerTheirOwnServices) {
  auto gateway = ecu("gateway.xml");
  auto body = ecu("body.xml");
  ASSERT_TRUE(gateway && body);
  EXPECT_EQ(answer(*gateway, "1902FF"), "5902FFC1000009C1400008");
  EXPECT_EQ(answer(*gateway, "2EF1980102"), "CHN_TYPE_SEND_FAILED_TIMEOUT,00,cTimeOut");
  EXPECT_EQ(answer(*gateway, "22DD10"), "62DD100C");
  EXPECT_EQ(answer(*gateway, "22DD10"), "62DD1023");
  EXPECT_EQ(answer(*body, "2FD0010301"), "6FD0010301");
  EXPECT_EQ(answer(*body, "22D1FF"), "7F2231");
  EXPECT_EQ(answer(*body, "1101"), "CHN_TYPE_RCV_FAILED_NO_RESPONSE");
  EXPECT_EQ(answer(*body, "3F00"), "7F3F11") << "an unknown service";
}

// A typed answer with a misspelt type or code would silently fall back to a
// plain success, so every name in the bench must be one the exchange knows.
TEST_F(CliExampleBench, TypedAnswers_UseOnlyKnownEventTypesAndResultCodes) {
  const std::set<std::string> types = {"CHN_TYPE_ENDFIFO",
                                       "CHN_TYPE_CRSNDDIAGFRAME",
                                       "CHN_TYPE_SEND_FAILED_LOSSOFCOM",
                                       "CHN_TYPE_SEND_FAILED_CRNEG",
                                       "CHN_TYPE_SEND_FAILED_TIMEOUT",
                                       "CHN_TYPE_SEND_FAILED_INTERNAL_DRIVER_ERROR",
                                       "CHN_TYPE_RCV_CORRUPTED_FRAME",
                                       "CHN_TYPE_RCV_STARTOK_NOTCOMPLIANT",
                                       "CHN_TYPE_REQ_1_0_EMITTED",
                                       "CHN_TYPE_RCV_FAILED_TIMEOUT",
                                       "CHN_TYPE_RCV_SUCCESS",
                                       "CHN_TYPE_RCV_SUCCESS_BUT_UNEXPECTED",
                                       "CHN_TYPE_RCV_FAILED_NO_RESPONSE",
                                       "CHN_TYPE_END_OF_RCV"};
  const std::set<std::string> codes = {"cOk",
                                       "cNok",
                                       "cTimeOut",
                                       "cErreurParametre",
                                       "cCodeCommandeInvalide",
                                       "cCommandeNonImplementee",
                                       "cLongueurDonneesInvalide",
                                       "cParametreInvalide",
                                       "cErreurEcriture",
                                       "cErreurLecture",
                                       "cIdCanInvalide",
                                       "cOctetFiInvalide",
                                       "cBusOff",
                                       "cErreurPassiveBus",
                                       "cModeIncompatible",
                                       "cBrpInvalide",
                                       "cTseg1Invalide",
                                       "cTseg2Invalide",
                                       "cSamInvalide",
                                       "cSjwInvalide",
                                       "cMTypeInvalide",
                                       "cTaTypeInvalide",
                                       "cAbonneInconnu",
                                       "cErreurUsb",
                                       "cTimeOutOctet",
                                       "cTimeOutTrame",
                                       "cErreurCypress",
                                       "cLongueursIncoherentes",
                                       "cLongueurTrameFausse",
                                       "cLongueurTrameInvalide",
                                       "cTypeTrameInvalide"};
  unsigned typed = 0;
  for (const char *scenario : {"engine.xml", "gateway.xml", "body.xml"})
    for (const std::string &text : texts(examples(scenario), "TRAME")) {
      if (text.rfind("CHN_TYPE_", 0) != 0)
        continue;
      ++typed;
      const size_t comma = text.find(',');
      EXPECT_EQ(types.count(text.substr(0, comma)), 1u) << text;
      const size_t second = comma == std::string::npos ? comma : text.find(',', comma + 1);
      if (second != std::string::npos) {
        EXPECT_EQ(codes.count(text.substr(second + 1)), 1u) << text;
      }
    }
  EXPECT_GE(typed, 3u);
}
