// Builders for the XML files the library reads. Each test writes its files
// into its own TempDir.
#pragma once

#include "support/TempDir.h"

#include <string>
#include <vector>

// A root element around pieces of raw XML, one a line.
class XmlFile {
public:
  explicit XmlFile(const std::string &root) : root_(root) {}
  std::string xml() const {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<" + root_ + ">\n" + body_ + "</" + root_ +
           ">\n";
  }
  // Writes the file and returns its path.
  std::string writeTo(const std::string &path) const {
    writeFile(path, xml());
    return path;
  }

protected:
  void add(const std::string &xml) { body_ += "  " + xml + "\n"; }

private:
  std::string root_, body_;
};

// A configuration file: a root element holding the given sections.
class ConfigurationFile : public XmlFile {
public:
  ConfigurationFile() : XmlFile("CONFIGURATION") {}
  ConfigurationFile &consoleMode() { return section("<MODECONSOLE/>"); }
  ConfigurationFile &section(const std::string &xml) {
    add(xml);
    return *this;
  }
};

// A scenario file: one EVENEMENT per request with its responses in rotation
// order (none gives an empty REPONSE), or any raw XML inside the root.
class ScenarioFile : public XmlFile {
public:
  ScenarioFile() : XmlFile("SCENARIO") {}
  ScenarioFile &event(const std::string &request, const std::vector<std::string> &responses) {
    std::string trames;
    for (const auto &response : responses)
      trames += "<TRAME>" + response + "</TRAME>";
    return raw("<EVENEMENT><REQUETE><TRAME>" + request + "</TRAME></REQUETE><REPONSE>" + trames +
               "</REPONSE></EVENEMENT>");
  }
  ScenarioFile &raw(const std::string &xml) {
    add(xml);
    return *this;
  }
};
