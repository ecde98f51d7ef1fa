// The example bench is the data testers copy: its scenarios must answer the
// diagnostic services they document, read by the library's own scenario and
// ECU code. (Incomplete ECU entries and misspelt typed answers are what
// `cansimu check` finds, and it must find nothing in the examples.)
#include "ecu/SimuECU.h"
#include "platform/CodePage.h"
#include "platform/TDomData.h"

#include <gtest/gtest.h>

#include <ace/Containers_T.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

ACE_WString wide(const std::string &text) { return toWideString(text.c_str()); }
std::string narrow(const ACE_WString &text) { return toAnsi(text.c_str()).get(); }
std::string examples(const std::string &name) {
  return std::string(CANSIMU_EXAMPLES_DIR) + "/" + name;
}

// Every `tag` element of a file of the examples, in document order.
std::vector<TDomData> elements(const std::string &file, const char *tag) {
  TDomData document;
  EXPECT_TRUE(document.load(wide(examples(file)))) << file;
  ACE_Array<TDomData> found;
  document.getSubNodesByTagName(wide(tag), found, true);
  return std::vector<TDomData>(found.begin(), found.end());
}
std::string attribute(const TDomData &element, const char *name) {
  ACE_WString value;
  element.getAttributeValue(wide(name), value);
  return narrow(value);
}
std::string content(const TDomData &element) {
  ACE_WString text;
  element.getContent(text);
  return narrow(text);
}

class CliExampleBench : public ::testing::Test {
protected:
  // The bench's ECUs by scenario, as the port builds them: identifiers in
  // hex, the scenario beside the configuration, the bench's negative code.
  std::map<std::string, std::unique_ptr<SimuECU>> ecus;

  void SetUp() override {
    const std::string code = content(elements("bench.xml", "NEGATIVE_RESPONSE").at(0));
    for (const TDomData &entry : elements("bench.xml", "UCE")) {
      const std::string scenario = attribute(entry, "scenario");
      ecus[scenario] =
          std::make_unique<SimuECU>(std::strtoul(attribute(entry, "idRx").c_str(), nullptr, 16),
                                    std::strtoul(attribute(entry, "idTx").c_str(), nullptr, 16),
                                    wide(examples(scenario)), wide(code));
    }
  }
};

} // namespace

// Each ECU loads its scenario and opens its dialog, or it answers nothing.
// The requests go in order, so rotating answers come in their rotation.
// (The VIN, the engine's speed rotation and the typed answers of test_session.py
// are not repeated here.)
TEST_F(CliExampleBench, Scenarios_AnswerTheServicesTheyDocument) {
  const struct {
    const char *scenario, *request;
    std::string answer;
  } exchanges[] = {
      {"engine.xml", "1003", "5003003201F4"},
      {"engine.xml", "3E00", "7E00"},
      {"engine.xml", "1002", "7F1022"}, // the written negative response
      // "*" takes any status mask, "?" any identifier of a range.
      {"engine.xml", "1902FF", "5902FF0301002F01280028"},
      {"engine.xml", "190208", "5902FF0301002F01280028"},
      {"engine.xml", "22F40D", "7F2231"},
      {"engine.xml", "2701", "670112345678"},
      {"engine.xml", "2702EDCBA987", "6702"},
      {"engine.xml", "270200000000", "7F2711"}, // a wrong key gets the bench's code
      {"gateway.xml", "1902FF", "5902FFC1000009C1400008"},
      {"gateway.xml", "22DD10", "62DD100C"},
      {"gateway.xml", "22DD10", "62DD1023"},
      {"body.xml", "2FD0010301", "6FD0010301"},
      {"body.xml", "22D1FF", "7F2231"},
      {"body.xml", "3F00", "7F3F11"}, // an unknown service
  };
  for (const auto &exchange : exchanges) {
    ACE_WString response(L"<none>");
    ecus.at(exchange.scenario)->getResponse(wide(exchange.request), response, true);
    EXPECT_EQ(narrow(response), exchange.answer) << exchange.scenario << " " << exchange.request;
  }
}
