#include "support/ScenarioFile.h"

#include "support/TempDir.h"

namespace {
std::string escaped(const std::string &text) {
  std::string out;
  for (char c : text)
    out += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : std::string(1, c);
  return out;
}
} // namespace

ScenarioFile &ScenarioFile::event(const std::string &request,
                                  const std::vector<std::string> &responses) {
  std::string reponse;
  for (const auto &response : responses)
    reponse += "<TRAME>" + escaped(response) + "</TRAME>";
  return raw("<EVENEMENT><REQUETE><TRAME>" + escaped(request) + "</TRAME></REQUETE><REPONSE>" +
             reponse + "</REPONSE></EVENEMENT>");
}

ScenarioFile &ScenarioFile::raw(const std::string &xml) {
  body_ += "  " + xml + "\n";
  return *this;
}

std::string ScenarioFile::xml() const {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<SCENARIO>\n" + body_ + "</SCENARIO>\n";
}

void ScenarioFile::writeTo(const std::string &path) const { writeFile(path, xml()); }
