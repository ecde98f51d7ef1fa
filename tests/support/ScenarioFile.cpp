#include "support/ScenarioFile.h"

#include "support/TempDir.h"

std::string xmlEscaped(const std::string &text) {
  std::string escaped;
  escaped.reserve(text.size());
  for (char c : text) {
    if (c == '&')
      escaped += "&amp;";
    else if (c == '<')
      escaped += "&lt;";
    else if (c == '>')
      escaped += "&gt;";
    else
      escaped += c;
  }
  return escaped;
}

ScenarioFile &ScenarioFile::event(const std::string &request,
                                  const std::vector<std::string> &responses) {
  body_ += "  <EVENEMENT>\n    <REQUETE><TRAME>" + xmlEscaped(request) +
           "</TRAME></REQUETE>\n    <REPONSE>";
  for (const auto &response : responses)
    body_ += "<TRAME>" + xmlEscaped(response) + "</TRAME>";
  body_ += "</REPONSE>\n  </EVENEMENT>\n";
  return *this;
}

ScenarioFile &ScenarioFile::dialog(const std::vector<std::string> &answers) {
  return event("OPENDIALOG", answers);
}

ScenarioFile &ScenarioFile::raw(const std::string &xml) {
  body_ += "  " + xml + "\n";
  return *this;
}

std::string ScenarioFile::xml() const {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<SCENARIO>\n" + body_ + "</SCENARIO>\n";
}

std::string ScenarioFile::writeTo(const std::string &path) const {
  writeFile(path, xml());
  return path;
}
