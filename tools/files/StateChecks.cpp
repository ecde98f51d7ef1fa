#include "files/StateChecks.h"

#include "ecu/EcuState.h"
#include "ecu/EntryRules.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace {

std::string narrow(const ACE_WString &text) { return toAnsiString(text).c_str(); }

std::string byteList(const std::vector<unsigned char> &values) {
  std::string text;
  for (const unsigned char value : values)
    text += (text.empty() ? "" : " ") + narrow(byteText(value));
  return text;
}

struct ReadEntry {
  unsigned line;
  std::string pattern;
  std::shared_ptr<const EntryRules> rules;
};

} // namespace

void checkScenarioState(const XmlSource &file, FileReport &report) {
  std::vector<StateProblem> problems;
  std::vector<ReadEntry> entries;
  bool anyRules = false;
  for (const TDomData &event : file.elements("EVENEMENT")) {
    std::shared_ptr<const EntryRules> rules = EntryRules::read(event, problems);
    if (!rules)
      continue;
    anyRules = true;
    std::string pattern;
    const std::vector<TDomData> requests = XmlSource::elements(event, "REQUETE");
    if (!requests.empty()) {
      TDomData first;
      requests[0].getFirstChildElement(first, true);
      if (!first.isNull())
        pattern = XmlSource::content(first);
    }
    entries.push_back(ReadEntry{file.line(event), pattern, rules});
  }
  const std::unique_ptr<EcuState> state = EcuState::read(file.document(), anyRules, problems);
  for (const StateProblem &problem : problems)
    report.findings.push_back({file.line(problem.where), narrow(problem.text)});
  if (!state)
    return;

  // The sessions an ECU can be in: its default one and those entries enter.
  std::set<unsigned char> reachable{state->defaultSession()};
  for (const ReadEntry &entry : entries)
    if (entry.rules->enters >= 0)
      reachable.insert(static_cast<unsigned char>(entry.rules->enters));
  const std::vector<unsigned char> levels = state->securityLevels();
  for (const ReadEntry &entry : entries) {
    const EntryRules &rules = *entry.rules;
    const std::string named = "entry " + entry.pattern;
    if (!rules.sessions.empty() &&
        std::none_of(rules.sessions.begin(), rules.sessions.end(),
                     [&](unsigned char session) { return reachable.count(session) != 0; }))
      report.findings.push_back(
          {entry.line, named + " needs session " + byteList(rules.sessions) +
                           ", which no entry enters and is not the default: it can never match"});
    if (rules.level != 0 && std::find(levels.begin(), levels.end(), rules.level) == levels.end())
      report.findings.push_back(
          {entry.line, named + " needs security level " + narrow(byteText(rules.level)) +
                           ", which no SECURITY element declares: it can never match"});
    if (rules.timing.everyMs != 0 && rules.timing.pending == 0)
      report.findings.push_back(
          {entry.line, named + " has every=\"" + std::to_string(rules.timing.everyMs) +
                           "\" without pending: no response-pending answer is sent"});
  }
}
