#include "files/FileChecks.h"

#include "core/BenchOutputs.h"
#include "ecu/Scenario.h"
#include "files/BenchFile.h"
#include "files/Paths.h"
#include "files/StateChecks.h"
#include "names/InjectionNames.h"
#include "names/StatusNames.h"
#include "output/FrameText.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <unordered_map>

namespace {

const char kDialogRequest[] = "OPENDIALOG";
constexpr size_t kFrameDataBytes = 8;
constexpr size_t kQuotedLength = 40;

// A text as a message shows it: quoted, control characters escaped, long
// texts shortened.
std::string quoted(const std::string &text) {
  std::string shown;
  for (char c : text) {
    if (shown.size() >= kQuotedLength) {
      shown += "...";
      break;
    }
    if (c == '\n' || c == '\r' || c == '\t')
      shown += c == '\n' ? "\\n" : c == '\r' ? "\\r" : "\\t";
    else
      shown += c;
  }
  return "'" + shown + "'";
}

bool isUpperHex(const std::string &text) {
  return text.find_first_not_of("0123456789ABCDEF") == std::string::npos;
}

bool isFrameText(const std::string &text) { return text.size() % 2 == 0 && isUpperHex(text); }

// The fields of a typed answer, cut at commas as the exchange cuts them:
// empty fields are skipped.
std::vector<std::string> commaFields(const std::string &text) {
  std::vector<std::string> fields;
  size_t start = 0;
  while (start <= text.size()) {
    const size_t comma = text.find(',', start);
    const size_t end = comma == std::string::npos ? text.size() : comma;
    if (end > start)
      fields.push_back(text.substr(start, end - start));
    if (comma == std::string::npos)
      break;
    start = comma + 1;
  }
  return fields;
}

// What the library's own Scenario makes of the file: the size of its
// request table after a load, and how many entries it kept.
struct LibraryReading {
  size_t buckets = 1;
  size_t entries = 0;
};

LibraryReading readWithLibrary(const std::string &path) {
  Scenario scenario(toWideString(path.c_str()));
  scenario.load();
  LibraryReading reading;
  reading.buckets = scenario.bucketCount() > 0 ? scenario.bucketCount() : 1;
  reading.entries = scenario.entryCount();
  return reading;
}

class ScenarioChecker {
public:
  ScenarioChecker(const XmlSource &file, const LibraryReading &library, const CheckOptions &options,
                  FileReport &report)
      : file_(file), options_(options), report_(report), table_(library.buckets),
        libraryEntries_(library.entries) {}

  void run() {
    for (const TDomData &event : file_.elements("EVENEMENT"))
      readEvent(event);
    if (libraryEntries_ != entries_.size())
      add(0, "the library keeps " + std::to_string(libraryEntries_) +
                 " requests where check counted " + std::to_string(entries_.size()) +
                 ": its findings on overlapping requests may be wrong");
  }

private:
  struct Entry {
    std::string pattern;
    unsigned line;
  };
  // Earlier patterns in text order, each with its place in entries_: the
  // patterns a new one hides begin with its literal head, so they sit
  // together from that head on.
  using ByText = std::map<std::string, size_t>;

  void add(unsigned line, const std::string &message) {
    report_.findings.push_back({line, message});
  }

  // One EVENEMENT, skipped exactly where the library's parse skips it.
  void readEvent(const TDomData &event) {
    const std::vector<TDomData> requests = XmlSource::elements(event, "REQUETE");
    if (requests.empty())
      return add(file_.line(event), "EVENEMENT without REQUETE is skipped");
    TDomData request;
    requests[0].getFirstChildElement(request, true);
    if (request.isNull())
      return add(file_.line(requests[0]),
                 "REQUETE without an element inside (a TRAME): its EVENEMENT is skipped");
    const std::vector<TDomData> answers = XmlSource::elements(event, "REPONSE");
    if (answers.empty())
      return add(file_.line(event), "EVENEMENT without REPONSE is skipped");

    const std::string pattern = XmlSource::content(request);
    const unsigned line = file_.line(request);
    const std::vector<TDomData> frames = XmlSource::elements(answers[0], "TRAME");
    if (frames.empty())
      add(file_.line(answers[0]),
          "REPONSE without TRAME: request " + quoted(pattern) + " is answered as unknown");
    if (pattern != kDialogRequest)
      checkPattern(pattern, line);
    insert(pattern, line);
    for (const TDomData &frame : frames) {
      if (pattern == kDialogRequest)
        checkDialogAnswer(XmlSource::content(frame), file_.line(frame), frames.size());
      else
        checkAnswer(XmlSource::content(frame), file_.line(frame));
    }
  }

  void checkPattern(const std::string &pattern, unsigned line) {
    const std::string head = "request " + quoted(pattern);
    if (pattern.size() < 2)
      add(line, head + " is shorter than a service byte: only requests that share its bucket "
                       "by chance reach it");
    else if (pattern.find_first_of("?*") < 2)
      add(line, head + " has a wildcard in its first two characters: it never matches (they "
                       "choose the bucket and are compared as written)");
    if (pattern.size() % 2 != 0 && pattern.find('*') == std::string::npos)
      add(line, head + " has an odd number of characters: no request is half a byte, so it "
                       "matches every request that begins with it");
    if (pattern.find_first_of("abcdef") != std::string::npos)
      add(line, head + " has lower-case hex digits: it never matches (requests are upper-case)");
    else if (pattern.find_first_not_of("0123456789ABCDEF?*") != std::string::npos)
      add(line, head + " is not upper-case hex: it never matches a request");
  }

  // The pattern goes into the library's own request table, which answers,
  // as the library's parse asks it, which earlier entry already matches the
  // pattern; an entry the pattern hides begins with the pattern's literal
  // head, so only those are tested. Each pattern costs a look-up in the
  // table and in the text order, plus the patterns sharing its head.
  void insert(const std::string &pattern, unsigned line) {
    const ACE_WString key = toWideString(pattern.c_str());
    if (const ResponseList *earlierList = table_.find(key)) {
      const Entry &earlier = entries_[earlierList->line];
      if (earlier.pattern == pattern)
        add(line, "request " + quoted(pattern) + " is written twice (first at line " +
                      std::to_string(earlier.line) + "): only these answers are kept");
      else
        add(line, "request " + quoted(pattern) + " is already matched by " +
                      quoted(earlier.pattern) + " (line " + std::to_string(earlier.line) +
                      "): it gets no entry of its own and its answers replace those of " +
                      quoted(earlier.pattern));
      return;
    }
    ResponseList *list = table_.add(key);
    if (list == nullptr)
      return;
    for (size_t hidden : hiddenBy(pattern, key)) {
      const Entry &earlier = entries_[hidden];
      add(line, "request " + quoted(pattern) + " hides the earlier, more specific " +
                    quoted(earlier.pattern) + " (line " + std::to_string(earlier.line) +
                    "): it answers that one's requests from now on");
    }
    list->line = static_cast<ACE_UINT32>(entries_.size());
    byText_.emplace(pattern, entries_.size());
    entries_.push_back({pattern, line});
  }

  // The earlier entries of the pattern's bucket that the pattern accepts as
  // requests, in the order they were written.
  std::vector<size_t> hiddenBy(const std::string &pattern, const ACE_WString &key) const {
    const std::string head = pattern.substr(0, pattern.find_first_of("?*"));
    const ScenarioKeyHash hash;
    const ScenarioKeyMatch match;
    const size_t buckets = table_.bucketCount();
    const size_t bucket = hash(key) % buckets;
    std::vector<size_t> hidden;
    for (auto it = byText_.lower_bound(head);
         it != byText_.end() && it->first.compare(0, head.size(), head) == 0; ++it) {
      const ACE_WString earlierKey = toWideString(it->first.c_str());
      if (hash(earlierKey) % buckets == bucket && match(key, earlierKey))
        hidden.push_back(it->second);
    }
    std::sort(hidden.begin(), hidden.end());
    return hidden;
  }

  void checkDialogAnswer(const std::string &answer, unsigned line, size_t answers) {
    if (answer != "FALSE")
      return;
    add(line, answers == 1
                  ? "OPENDIALOG answers FALSE: this ECU refuses every session and answers nothing"
                  : "OPENDIALOG answers FALSE in its rotation: this ECU goes silent whenever "
                    "this answer comes round");
  }

  void checkAnswer(const std::string &answer, unsigned line) {
    const std::string shown = quoted(answer);
    if (answer.empty())
      return add(line, std::string("empty answer: the host gets ") +
                           (options_.framePath ? "a frame" : "a CHN_TYPE_RCV_SUCCESS") +
                           " without a byte");
    if (answer.find(',') == std::string::npos) {
      uint32_t type = 0;
      if (channelEventType(answer, type))
        return rawFrameOfTypedAnswer(shown, line);
      if (answer.compare(0, 9, "CHN_TYPE_") == 0)
        return add(line, "answer " + shown +
                             " is no event type: the host gets a plain "
                             "CHN_TYPE_RCV_SUCCESS of meaningless bytes");
      if (!isFrameText(answer))
        return add(line, "answer " + shown +
                             " is not even-length upper-case hex: the host gets meaningless bytes");
      if (options_.framePath && answer.size() / 2 > kFrameDataBytes)
        add(line, "answer " + shown + " is " + std::to_string(answer.size() / 2) +
                      " bytes long: the raw frame path sends its first 8");
      return;
    }
    const std::vector<std::string> fields = commaFields(answer);
    if (fields.size() < 2)
      return add(line, "typed answer " + shown +
                           " has no frame: the host gets a plain "
                           "CHN_TYPE_RCV_SUCCESS of meaningless bytes");
    // An unknown type name gives a plain reception, which carries a result.
    uint32_t type = CHN_TYPE_RCV_SUCCESS;
    if (!channelEventType(fields[0], type))
      add(line, "typed answer " + shown + " names no event type (" + quoted(fields[0]) +
                    "): the host gets CHN_TYPE_RCV_SUCCESS");
    if (!isFrameText(fields[1]))
      add(line, "typed answer " + shown + ": its frame " + quoted(fields[1]) +
                    " is not even-length upper-case hex");
    if (fields.size() > 2 && !isResultCodeName(fields[2]))
      add(line,
          "typed answer " + shown + " names no result code (" + quoted(fields[2]) + ")" +
              (channelResultOf(type) == ChannelResult::None ? ", though its event type carries none"
                                                            : ": the host gets cOk (0)"));
    rawFrameOfTypedAnswer(shown, line);
  }

  void rawFrameOfTypedAnswer(const std::string &shown, unsigned line) {
    if (options_.framePath)
      add(line, "typed answer " + shown +
                    " goes out on the raw frame path as hex text: "
                    "meaningless bytes");
  }

  const XmlSource &file_;
  const CheckOptions &options_;
  FileReport &report_;
  RequestTable table_;
  const size_t libraryEntries_;
  std::vector<Entry> entries_;
  ByText byText_;
};

// The usable ECUs read so far, by transmit identifier and by address, each
// list in file order: an ECU meets the earlier ones it clashes with in one
// look-up each, not by a walk over all of them.
struct EcuOwners {
  std::unordered_map<uint32_t, std::vector<size_t>> byIdTx;
  std::unordered_map<uint32_t, std::vector<size_t>> byIdRx;
  std::unordered_map<unsigned, std::vector<size_t>> byAddress;
};

// The first earlier ECU of `owners` on `id`; null when there is none.
const size_t *firstOwner(const std::unordered_map<uint32_t, std::vector<size_t>> &owners,
                         uint32_t id) {
  const auto found = owners.find(id);
  return found == owners.end() || found->second.empty() ? nullptr : &found->second.front();
}

// Identifiers that the ECU shares with itself or with an earlier ECU in
// another role: the host cannot tell an answer from a request, or one ECU's
// answers from another's.
void checkIdentifierRoles(const std::vector<BenchEcu> &ecus, const BenchEcu &ecu,
                          const EcuOwners &owners, FileReport &report) {
  const auto add = [&](const std::string &message) {
    report.findings.push_back({ecu.line, message});
  };
  const auto where = [&](size_t i) { return "the ECU of line " + std::to_string(ecus[i].line); };
  const std::string rx = canIdText(ecu.idRxValue);
  if (ecu.idRxValue == ecu.idTxValue)
    add("idRx and idTx are both " + rx +
        ": the ECU answers on the identifier it listens to, so its answers look like requests");
  if (const size_t *other = firstOwner(owners.byIdRx, ecu.idRxValue))
    add("idRx " + rx + " already belongs to " + where(*other) +
        ": the host cannot tell their answers apart");
  if (const size_t *other = firstOwner(owners.byIdTx, ecu.idRxValue))
    add("idRx " + rx + " is the idTx of " + where(*other) +
        ": this ECU's answers look like requests to that one");
  if (const size_t *other = firstOwner(owners.byIdRx, ecu.idTxValue))
    add("idTx " + canIdText(ecu.idTxValue) + " is the idRx of " + where(*other) +
        ": that ECU's answers look like requests to this one");
}

void checkEcu(const std::string &bench, const std::vector<BenchEcu> &ecus, size_t at,
              EcuOwners &owners, FileReport &report) {
  const BenchEcu &ecu = ecus[at];
  const auto add = [&](const std::string &message) {
    report.findings.push_back({ecu.line, message});
  };
  const char *missing = ecu.targetAddress.empty() ? "targetAddress"
                        : ecu.idRx.empty()        ? "idRx"
                        : ecu.idTx.empty()        ? "idTx"
                                                  : nullptr;
  if (missing != nullptr)
    return add(std::string("UCE without ") + missing + " is skipped: no ECU is created");
  const struct {
    const char *name;
    const std::string &text;
    uint32_t value;
  } identifiers[] = {{"idRx", ecu.idRx, ecu.idRxValue}, {"idTx", ecu.idTx, ecu.idTxValue}};
  for (const auto &id : identifiers) {
    uint32_t value = 0;
    if (!parseHexNumber(id.text, value))
      add(std::string(id.name) + " " + quoted(id.text) +
          " is not a hex identifier: the library reads it as " + canIdText(id.value));
  }
  if (!ecu.addressed)
    add("targetAddress " + quoted(ecu.targetAddress) +
        " is no one-byte hex address: cansimu leaves this ECU out of its association table");
  static const std::vector<size_t> none;
  const auto sameTx = owners.byIdTx.find(ecu.idTxValue);
  const std::vector<size_t> &txOwners = sameTx == owners.byIdTx.end() ? none : sameTx->second;
  const auto sameAddress = owners.byAddress.find(ecu.address);
  const std::vector<size_t> &addressOwners =
      !ecu.addressed || sameAddress == owners.byAddress.end() ? none : sameAddress->second;
  // In file order of the earlier ECUs, the identifier before the address.
  for (size_t t = 0, a = 0; t < txOwners.size() || a < addressOwners.size();) {
    const bool txFirst =
        a == addressOwners.size() || (t < txOwners.size() && txOwners[t] <= addressOwners[a]);
    const size_t i = txFirst ? txOwners[t++] : addressOwners[a++];
    const std::string where = "the ECU of line " + std::to_string(ecus[i].line);
    if (txFirst)
      add("idTx " + canIdText(ecu.idTxValue) + " already belongs to " + where +
          ": raw frames and one-to-one channels reach that one; only a broadcast reaches this one");
    else
      add("targetAddress " + hexByte(ecu.address) + " already belongs to " + where +
          ": one-to-one channels to it reach that one");
  }
  if (ecu.usable()) {
    checkIdentifierRoles(ecus, ecu, owners, report);
    owners.byIdTx[ecu.idTxValue].push_back(at);
    owners.byIdRx[ecu.idRxValue].push_back(at);
    if (ecu.addressed)
      owners.byAddress[ecu.address].push_back(at);
  }
  if (ecu.scenario.empty())
    return add("UCE without scenario: this ECU never answers");
  const std::string path = scenarioPath(bench, ecu.scenario);
  if (!fileReadable(path))
    return add("scenario " + quoted(ecu.scenario) + " cannot be read (" + path +
               "): this ECU never answers");
  report.scenarios.push_back(path);
  // The library opens a relative path from the host's working directory.
  const std::filesystem::path written(ecu.scenario);
  if (written.is_absolute())
    return;
  std::error_code error;
  const auto fromHere = std::filesystem::absolute(written, error).lexically_normal();
  const auto fromBench = std::filesystem::absolute(path, error).lexically_normal();
  if (fromHere != fromBench)
    report.notes.push_back(
        {ecu.line, "scenario " + quoted(ecu.scenario) +
                       " is a relative path: cansimu opens it from the bench's folder (" +
                       fromBench.parent_path().string() +
                       "), a host from its working directory (here " +
                       std::filesystem::current_path(error).string() + ")"});
}

} // namespace

bool isBench(const XmlSource &file) {
  for (const char *tag : {"UCE", "DEVICES", "PORT", "CAN_SERIALNUMBER", "DETBAUDRATE",
                          "NEGATIVE_RESPONSE", "INJECT", "LOGFILE", "TRACEFILE", "REPORTFILE"})
    if (!file.elements(tag).empty())
      return true;
  return false;
}

bool isScenario(const XmlSource &file) { return !file.elements("EVENEMENT").empty(); }

namespace {
// The INJECT elements the library skips or reads to no effect.
void checkInjections(const XmlSource &file, FileReport &report) {
  std::map<std::string, unsigned> armedAt;
  for (const BenchInjection &element : readBenchInjections(file)) {
    const auto finding = [&](const std::string &message) {
      report.findings.push_back({element.line, "INJECT: " + message});
    };
    if (element.exportName.empty() || element.status.empty()) {
      finding(std::string("no ") + (element.exportName.empty() ? "export" : "status") +
              " attribute: the library skips it");
      continue;
    }
    Injection injection;
    std::string why;
    const InjectionProblem problem =
        readInjection(element.exportName, element.status, element.detail, nullptr, injection, why);
    if (problem != InjectionProblem::None) {
      finding(why + (problem == InjectionProblem::TypeNotQueued ? ": nothing is queued"
                                                                : ": the library skips it"));
      continue;
    }
    if (!detailNote(injection).empty())
      finding(detailNote(injection));
    if (injection.route != InjectionRoute::Arm)
      continue;
    const auto first = armedAt.emplace(injection.exportName, element.line);
    if (!first.second)
      finding("line " + std::to_string(first.first->second) + " arms " + injection.exportName +
              " first, so each read drops this one");
  }
}
} // namespace

namespace {
// LOGFILE, TRACEFILE and REPORTFILE: a file in a folder that does not exist
// is never written (the library says so once in its log, where nobody may
// look).
void checkOutputs(const std::string &path, const XmlSource &file, FileReport &report) {
  for (const BenchOutputs::Output &output :
       BenchOutputs::named(file.document(), toWideString(path.c_str()))) {
    if (output.path.length() == 0)
      continue;
    std::string named = toAnsiString(output.path).c_str();
#ifndef _WIN32
    for (char &c : named)
      if (c == '\\')
        c = '/';
#endif
    const std::filesystem::path folder = std::filesystem::path(named).parent_path();
    std::error_code error;
    if (!folder.empty() && !std::filesystem::is_directory(folder, error))
      report.findings.push_back(
          {file.line(file.elements(output.element).front()),
           std::string(output.element) + " '" + named + "'" +
               ": its folder does not exist, so the library cannot write it (unless " +
               output.variable + " names another file)"});
  }
}
} // namespace

namespace {
// Every element name the library or cansimu reads, in benches and in
// scenarios (a file may be both).
const char *const kKnownTags[] = {"MODECONSOLE",
                                  "CAN_DEVICESTATE",
                                  "DEVICESTATE",
                                  "CAN_SERIALNUMBER",
                                  "CAN_FIRMWAREVERSION",
                                  "VOLTAGES",
                                  "DEVICES",
                                  "DETBAUDRATE",
                                  "CANMESPHYS",
                                  "NEGATIVE_RESPONSE",
                                  "UCE",
                                  "INJECT",
                                  "LOGFILE",
                                  "TRACEFILE",
                                  "REPORTFILE",
                                  "EVENEMENT",
                                  "REQUETE",
                                  "REPONSE",
                                  "TRAME",
                                  "STATE",
                                  "SECURITY",
                                  "DID"};

// The known name an unknown one is a slip of: one edit away (two for names
// longer than five characters), or the same but for case; null otherwise.
// Other unknown names are taken for the tester's own grouping (PORT).
const char *misspeltTag(const std::string &name) {
  for (const char *known : kKnownTags)
    if (name == known)
      return nullptr;
  const char *closest = nullptr;
  size_t best = name.size() > 5 ? 3 : 2;
  for (const char *known : kKnownTags) {
    const size_t distance = nameDistance(name, known);
    if (distance < best) {
      best = distance;
      closest = known;
    }
  }
  return closest;
}

void checkElementNames(const XmlSource &file, FileReport &report) {
  for (const XmlSource::Tag &tag : file.tags())
    if (const char *known = misspeltTag(tag.name))
      report.findings.push_back({tag.line, "element " + tag.name + " is read by nothing: " + known +
                                               " misspelt? (names are case-sensitive)"});
}

// The versions CAN_DevGetVersion and CAN_DevGetConfig report.
void checkFirmwareVersions(const XmlSource &file, FileReport &report) {
  const std::vector<TDomData> versions = file.elements("CAN_FIRMWAREVERSION");
  if (versions.empty())
    return report.findings.push_back(
        {0, "no CAN_FIRMWAREVERSION element: the box reports empty firmware versions"});
  std::string missing;
  for (const char *name :
       {"BootVersion", "BootDate", "BootCheckSum", "AppVersion", "AppDate", "AppCheckSum"})
    if (XmlSource::attribute(versions[0], name).empty())
      missing += std::string(missing.empty() ? "" : ", ") + name;
  if (!missing.empty())
    report.findings.push_back({file.line(versions[0]), "CAN_FIRMWAREVERSION without " + missing +
                                                           ": the box reports them empty"});
}

// Voltages as the library reads them (strtod, narrowed to a float): text
// without a number gives 0, and a value beyond a float none at all.
void checkVoltages(const XmlSource &file, FileReport &report) {
  const struct {
    const char *element;
    std::vector<const char *> attributes;
  } readers[] = {{"VOLTAGES", {"VBatt", "APCKelmora", "APCDravik"}},
                 {"CANMESPHYS", {"CanHmin", "CanHmax", "CanLmin", "CanLmax"}}};
  for (const auto &reader : readers) {
    const std::vector<TDomData> found = file.elements(reader.element);
    if (found.empty())
      continue;
    for (const char *name : reader.attributes) {
      const std::string text = XmlSource::attribute(found[0], name);
      if (text.empty())
        continue;
      char *end = nullptr;
      const float value = static_cast<float>(std::strtod(text.c_str(), &end));
      const std::string head = std::string(reader.element) + " " + name + " " + quoted(text);
      if (end == text.c_str())
        report.findings.push_back(
            {file.line(found[0]), head + " is not a number: the library reads 0"});
      else if (!std::isfinite(value))
        report.findings.push_back(
            {file.line(found[0]), head + " is no voltage a float holds: the box reports " +
                                      (std::isnan(value) ? "nan" : "inf")});
    }
  }
}

// The code that completes a negative response: 7F, the service, the code.
void checkNegativeCode(const XmlSource &file, FileReport &report) {
  const std::vector<TDomData> negative = file.elements("NEGATIVE_RESPONSE");
  if (negative.empty())
    return;
  const std::string code = XmlSource::content(negative[0]);
  const unsigned line = file.line(negative[0]);
  if (code.empty() || !isFrameText(code))
    report.findings.push_back({line, "NEGATIVE_RESPONSE " + quoted(code) +
                                         " is not upper-case hex: negative responses end in "
                                         "meaningless bytes"});
  else if (code.size() > 2)
    report.findings.push_back(
        {line, "NEGATIVE_RESPONSE " + quoted(code) + " is " + std::to_string(code.size() / 2) +
                   " bytes: a negative response carries one code byte, the host gets 7F, the "
                   "service and all of them"});
}
} // namespace

void checkBench(const std::string &path, const XmlSource &file, FileReport &report) {
  checkElementNames(file, report);
  checkFirmwareVersions(file, report);
  checkVoltages(file, report);
  const std::vector<BenchEcu> ecus = readBenchEcus(file);
  if (ecus.empty())
    report.findings.push_back({0, "no UCE element: the bus has no ECU"});
  EcuOwners owners;
  for (size_t i = 0; i < ecus.size(); ++i)
    checkEcu(path, ecus, i, owners, report);
  for (const TDomData &element : file.elements("DETBAUDRATE")) {
    const std::string text = XmlSource::content(element);
    if (!isDetectionOutcome(text))
      report.findings.push_back(
          {file.line(element),
           "DETBAUDRATE " + quoted(text) +
               (isStatusName(text) ? " is no outcome of a detection" : " is no status name") +
               ": the detection answers E_INVALID (4)"});
  }
  checkInjections(file, report);
  checkOutputs(path, file, report);
  checkNegativeCode(file, report);
}

void checkScenario(const std::string &path, const XmlSource &file, const CheckOptions &options,
                   FileReport &report) {
  ScenarioChecker(file, readWithLibrary(path), options, report).run();
  checkScenarioState(file, report);
}
