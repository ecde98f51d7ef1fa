// What check says about the state and timing attributes of a scenario:
// every bad value is named on its line, with what the library does instead,
// and entries the state can never admit are found.
#include "files/FileChecks.h"
#include "files/XmlSource.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct StateCheckCase {
  const char *what;
  const char *body; // inside SCENARIO, one element a line from line 3
  unsigned line;    // 0: no finding expected
  const char *finding;
};

const char kEntry[] = "<REQUETE><TRAME>3101</TRAME></REQUETE><REPONSE><TRAME>7101</TRAME>"
                      "</REPONSE></EVENEMENT>";

std::string event(const std::string &attributes) {
  return "<EVENEMENT " + attributes + ">" + kEntry;
}

} // namespace

TEST(StateCheck, BadValuesAndEntriesThatCanNeverMatchAreFound) {
  const std::string plain = event("");
  const StateCheckCase cases[] = {
      {"a plain scenario", plain.c_str(), 0, ""},
      {"a session value that is not hex", "<EVENEMENT sessions='0X'>", 3,
       "sessions=\"0X\" is not a list of hex bytes: ignored"},
      {"a delay that is no number", "<EVENEMENT delay='fast'>", 3,
       "delay=\"fast\" is not a number from 0 to 86400000: ignored"},
      {"a session no entry enters", "<EVENEMENT sessions='05'>", 3,
       "entry 3101 needs session 05, which no entry enters and is not the default: it can "
       "never match"},
      {"a level nobody declares", "<EVENEMENT security='03'>", 3,
       "entry 3101 needs security level 03, which no SECURITY element declares: it can never "
       "match"},
      {"a key rule that does not parse",
       "<STATE><SECURITY level='01' seed='1122' key='rot:11'/></STATE>", 3,
       "key=\"rot:11\" is neither hex bytes nor xor:HEX, add:HEX or not: level ignored"},
      {"a key operand of the wrong length",
       "<STATE><SECURITY level='01' seed='1122' key='xor:112233'/></STATE>", 3,
       "key=\"xor:112233\" has an operand of 3 bytes for seeds of 2: level ignored"},
      {"an even security level", "<STATE><SECURITY level='02' seed='11' key='22'/></STATE>", 3,
       "level=\"02\" is not an odd level 01 to 7D: ignored"},
      {"a DID whose length does not match its value",
       "<STATE><DID id='F190' value='4142' length='3'/></STATE>", 3,
       "length=\"3\" does not match the value's 2 bytes: DID ignored"},
      {"a DID identifier of one byte", "<STATE><DID id='F1' value='41'/></STATE>", 3,
       "id=\"F1\" is not a two-byte identifier: ignored"},
      {"an S3 time that is no number", "<STATE s3='5s'/>", 3,
       "s3=\"5s\" is not a number of milliseconds: no S3"},
      {"every without pending", "<EVENEMENT every='100'>", 3,
       "entry 3101 has every=\"100\" without pending: no response-pending answer is sent"},
  };
  TempDir dir;
  for (const StateCheckCase &c : cases) {
    SCOPED_TRACE(c.what);
    std::string body = c.body;
    if (body.rfind("<EVENEMENT ", 0) == 0 && body.find(kEntry) == std::string::npos)
      body += kEntry;
    const std::string path = dir.file("state.xml");
    writeFile(path, "<?xml version=\"1.0\"?>\n<SCENARIO>\n" + body + "\n" +
                        (body.rfind("<STATE", 0) == 0 ? plain : std::string()) + "\n</SCENARIO>\n");
    XmlSource file;
    ASSERT_EQ(file.load(path), XmlSource::Outcome::Read);
    FileReport report;
    checkScenario(path, file, CheckOptions(), report);
    if (c.line == 0) {
      EXPECT_TRUE(report.findings.empty()) << report.findings.front().message;
      continue;
    }
    ASSERT_EQ(report.findings.size(), 1u) << report.findings.front().message;
    EXPECT_EQ(report.findings[0].line, c.line);
    EXPECT_EQ(report.findings[0].message, c.finding);
  }
}
