#include "files/BenchFile.h"

#include "core/NumberText.h"
#include "output/FrameText.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>

namespace {
bool sameText(const std::string &a, const std::string &b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) ==
                  std::tolower(static_cast<unsigned char>(y));
         });
}
} // namespace

std::string BenchEcu::name() const {
  const size_t slash = scenario.find_last_of("/\\");
  const std::string file = slash == std::string::npos ? scenario : scenario.substr(slash + 1);
  const size_t dot = file.find_last_of('.');
  return dot == std::string::npos || dot == 0 ? file : file.substr(0, dot);
}

std::string BenchEcu::label() const {
  const std::string shown = addressed ? hexByte(address) : "'" + targetAddress + "'";
  return name().empty() ? shown : shown + " " + name();
}

bool parseHexNumber(const std::string &text, uint32_t &value) {
  const bool prefixed = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
  const std::string digits = prefixed ? text.substr(2) : text;
  if (digits.empty() || digits.size() > 8 ||
      digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
    return false;
  value = static_cast<uint32_t>(std::strtoul(digits.c_str(), nullptr, 16));
  return true;
}

std::string scenarioPath(const std::string &bench, std::string scenario) {
#ifndef _WIN32
  // The library reads '\\' as '/' on POSIX.
  for (char &c : scenario)
    if (c == '\\')
      c = '/';
#endif
  // An absolute scenario path replaces the bench's folder.
  return (std::filesystem::path(bench).parent_path() / scenario).string();
}

std::vector<BenchEcu> readBenchEcus(const XmlSource &bench) {
  std::vector<BenchEcu> ecus;
  for (const TDomData &element : bench.elements("UCE")) {
    BenchEcu ecu;
    ecu.line = bench.line(element);
    ecu.targetAddress = XmlSource::attribute(element, "targetAddress");
    ecu.idRx = XmlSource::attribute(element, "idRx");
    ecu.idTx = XmlSource::attribute(element, "idTx");
    ecu.scenario = XmlSource::attribute(element, "scenario");
    ecu.idRxValue = hexNumber(toWideString(ecu.idRx.c_str()));
    ecu.idTxValue = hexNumber(toWideString(ecu.idTx.c_str()));
    uint32_t address = 0;
    ecu.addressed = parseHexNumber(ecu.targetAddress, address) && address <= 0xFF;
    ecu.address = static_cast<uint8_t>(address);
    ecus.push_back(ecu);
  }
  return ecus;
}

namespace {
// The library reads status and detail without the white space around them.
std::string trimmed(const std::string &text) {
  const size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string::npos)
    return "";
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}
} // namespace

std::vector<BenchInjection> readBenchInjections(const XmlSource &bench) {
  std::vector<BenchInjection> injections;
  for (const TDomData &element : bench.elements("INJECT"))
    injections.push_back({bench.line(element), XmlSource::attribute(element, "export"),
                          trimmed(XmlSource::attribute(element, "status")),
                          trimmed(XmlSource::attribute(element, "detail"))});
  return injections;
}

const BenchEcu *findEcu(const std::vector<BenchEcu> &ecus, const std::string &name) {
  uint32_t value = 0;
  const bool number = parseHexNumber(name, value);
  for (const BenchEcu &ecu : ecus)
    if (ecu.usable() && number && ecu.addressed && ecu.address == value)
      return &ecu;
  for (const BenchEcu &ecu : ecus)
    if (ecu.usable() && number && ecu.idTxValue == value)
      return &ecu;
  for (const BenchEcu &ecu : ecus)
    if (ecu.usable() && !ecu.name().empty() && sameText(ecu.name(), name))
      return &ecu;
  return nullptr;
}

bool hasEcus(const std::vector<BenchEcu> &ecus) {
  return std::any_of(ecus.begin(), ecus.end(), [](const BenchEcu &ecu) { return ecu.usable(); });
}

std::string ecuList(const std::vector<BenchEcu> &ecus) {
  std::string list;
  for (const BenchEcu &ecu : ecus)
    if (ecu.usable())
      list += (list.empty() ? "" : ", ") + ecu.label();
  return list.empty() ? "none" : list;
}
