// Builder for scenario files: one EVENEMENT per request, its responses in
// rotation order, texts escaped for XML.
#pragma once

#include <string>
#include <vector>

class ScenarioFile {
public:
  // No responses gives an empty REPONSE.
  ScenarioFile &event(const std::string &request, const std::vector<std::string> &responses);
  // The "OPENDIALOG" entry, answered with `answers` in rotation.
  ScenarioFile &dialog(const std::vector<std::string> &answers) {
    return event("OPENDIALOG", answers);
  }
  // Any raw XML to place inside the root element.
  ScenarioFile &raw(const std::string &xml);
  std::string xml() const;
  void writeTo(const std::string &path) const;

private:
  std::string body_;
};
