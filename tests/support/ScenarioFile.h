// Builder for scenario files: one EVENEMENT per request, each with its
// responses in rotation order. Texts are escaped for XML.
#pragma once

#include <string>
#include <vector>

class ScenarioFile {
public:
  // An EVENEMENT whose REQUETE holds `request` and whose REPONSE holds one
  // TRAME per response (none gives an empty REPONSE).
  ScenarioFile &event(const std::string &request, const std::vector<std::string> &responses);
  // The "OPENDIALOG" entry, answered with `answers` in rotation.
  ScenarioFile &dialog(const std::vector<std::string> &answers);
  // Any raw XML to place inside the root element.
  ScenarioFile &raw(const std::string &xml);

  std::string xml() const;
  // Writes the file and returns its path.
  std::string writeTo(const std::string &path) const;

private:
  std::string body_;
};

// Escapes '&', '<' and '>' for element content.
std::string xmlEscaped(const std::string &text);
