// Builders for the XML files the library reads. Each test writes its files
// into its own TempDir.
#pragma once

#include <string>
#include <vector>

// A configuration file: a root element holding the given sections.
class ConfigurationFile {
public:
  ConfigurationFile &consoleMode();
  // Any raw XML to place inside the root element.
  ConfigurationFile &section(const std::string &xml);
  std::string xml() const;
  // Writes the file and returns its path.
  std::string writeTo(const std::string &path) const;

private:
  std::vector<std::string> sections_;
};
