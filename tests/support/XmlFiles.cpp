#include "support/XmlFiles.h"

#include "support/TempDir.h"

ConfigurationFile &ConfigurationFile::consoleMode() { return section("<MODECONSOLE/>"); }

ConfigurationFile &ConfigurationFile::section(const std::string &xml) {
  sections_.push_back(xml);
  return *this;
}

std::string ConfigurationFile::xml() const {
  std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<CONFIGURATION>\n";
  for (const auto &section : sections_)
    text += "  " + section + "\n";
  return text + "</CONFIGURATION>\n";
}

std::string ConfigurationFile::writeTo(const std::string &path) const {
  writeFile(path, xml());
  return path;
}
