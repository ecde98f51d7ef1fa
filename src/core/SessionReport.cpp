#include "core/SessionReport.h"

#include "core/LogMessage.h"
#include "platform/FileSystem.h"
#include "platform/Utf8Text.h"

#include <chrono>
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

namespace {

// Distinct unscripted requests kept per ECU; the rest are only counted, so
// a host that sends endless different requests cannot grow the report
// without bound.
const size_t kMaxUnscripted = 1000;

struct EntryCount {
  unsigned line;
  std::string pattern;
  unsigned long long hits;
  // Requests the entry matched but the ECU's state refused, and why the
  // last one was refused.
  unsigned long long refused = 0;
  std::string refusal;
};

struct Unscripted {
  std::string request;
  unsigned long long count;
  std::string first;
};

struct EcuRecord {
  ACE_UINT32 idTx, idRx;
  std::string scenario;
  std::vector<EntryCount> entries;
  std::map<std::pair<unsigned, std::string>, size_t> entryIndex;
  std::vector<Unscripted> unscripted;
  std::map<std::string, size_t> unscriptedIndex;
  unsigned long long unscriptedOthers = 0, answers = 0, negativeAnswers = 0, dialogRefusals = 0;
};

struct Report {
  ACE_WString path;
  std::string started;
  std::vector<std::unique_ptr<EcuRecord>> ecus;
  std::map<std::pair<std::string, std::pair<ACE_UINT32, ACE_UINT32>>, unsigned long long> armed;
  std::map<std::pair<std::string, ACE_INT32>, unsigned long long> injected;
  std::chrono::steady_clock::time_point lastWrite;
  bool written = false;
  bool changed = false;
  bool failing = false;
};

// Guards the report; the writes of the file are serialised by their own
// lock, so a slow disk holds up one writer, not every host thread.
std::mutex dataLock;
std::mutex writeLock;
Report *report = nullptr;

std::string quoted(const std::string &text) {
  std::string out = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(c));
      out += escaped;
    } else {
      out += c;
    }
  }
  return out + "\"";
}

std::string idText(ACE_UINT32 id) {
  char text[16];
  std::snprintf(text, sizeof text, "%x", static_cast<unsigned>(id));
  return text;
}

// The wall clock as UTC, ISO 8601 to the millisecond (the civil date from
// the day count, so that no system time zone call is needed).
std::string utcNow() {
  const long long millis = std::chrono::duration_cast<std::chrono::milliseconds>(
                               std::chrono::system_clock::now().time_since_epoch())
                               .count();
  long long days = millis / 86400000;
  const long long ofDay = millis % 86400000;
  days += 719468;
  const long long era = days / 146097;
  const long long dayOfEra = days - era * 146097;
  const long long yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const long long dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const long long monthIndex = (5 * dayOfYear + 2) / 153;
  const long long day = dayOfYear - (153 * monthIndex + 2) / 5 + 1;
  const long long month = monthIndex < 10 ? monthIndex + 3 : monthIndex - 9;
  const long long year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
  // Room for the widest text the formats allow, though a date needs 24.
  char text[160];
  std::snprintf(text, sizeof text, "%04lld-%02lld-%02lldT%02lld:%02lld:%02lld.%03lldZ", year, month,
                day, ofDay / 3600000, ofDay / 60000 % 60, ofDay / 1000 % 60, ofDay % 1000);
  return text;
}

EcuRecord &recordOf(const SessionReport::Ecu &ecu) {
  const std::string scenario = utf8Of(ecu.scenario);
  for (const auto &record : report->ecus)
    if (record->idTx == ecu.idTx && record->idRx == ecu.idRx && record->scenario == scenario)
      return *record;
  report->ecus.push_back(std::make_unique<EcuRecord>());
  EcuRecord &record = *report->ecus.back();
  record.idTx = ecu.idTx;
  record.idRx = ecu.idRx;
  record.scenario = scenario;
  return record;
}

EntryCount &entryOf(EcuRecord &record, unsigned line, const std::string &pattern) {
  const auto key = std::make_pair(line, pattern);
  const auto found = record.entryIndex.find(key);
  if (found != record.entryIndex.end())
    return record.entries[found->second];
  record.entryIndex.emplace(key, record.entries.size());
  record.entries.push_back(EntryCount{line, pattern, 0, 0, std::string()});
  return record.entries.back();
}

std::string json(const Report &data, bool ended) {
  std::string out = "{\n  \"format\": \"cansimu-report\",\n  \"version\": 1,\n";
  out += "  \"started\": " + quoted(data.started) + ",\n";
  out += "  \"written\": " + quoted(utcNow()) + ",\n";
  out += std::string("  \"ended\": ") + (ended ? "true" : "false") + ",\n";
  out += "  \"ecus\": [";
  const char *separator = "\n";
  for (const auto &ecu : data.ecus) {
    out += separator;
    separator = ",\n";
    out += "    {\"idTx\": " + quoted(idText(ecu->idTx)) +
           ", \"idRx\": " + quoted(idText(ecu->idRx)) + ", \"scenario\": " + quoted(ecu->scenario) +
           ",\n";
    out += "     \"answers\": " + std::to_string(ecu->answers) +
           ", \"negativeAnswers\": " + std::to_string(ecu->negativeAnswers) +
           ", \"dialogRefusals\": " + std::to_string(ecu->dialogRefusals) +
           ", \"unscriptedOthers\": " + std::to_string(ecu->unscriptedOthers) +
           ",\n     \"entries\": [";
    const char *inner = "";
    for (const EntryCount &entry : ecu->entries) {
      out += inner;
      inner = ",";
      out += "\n       {\"line\": " + std::to_string(entry.line) +
             ", \"pattern\": " + quoted(entry.pattern) +
             ", \"hits\": " + std::to_string(entry.hits);
      if (entry.refused != 0)
        out += ", \"refused\": " + std::to_string(entry.refused) +
               ", \"refusal\": " + quoted(entry.refusal);
      out += "}";
    }
    out += "],\n     \"unscripted\": [";
    inner = "";
    for (const Unscripted &request : ecu->unscripted) {
      out += inner;
      inner = ",";
      out += "\n       {\"request\": " + quoted(request.request) +
             ", \"count\": " + std::to_string(request.count) +
             ", \"first\": " + quoted(request.first) + "}";
    }
    out += "]}";
  }
  out += "],\n  \"armedStatuses\": [";
  separator = "";
  for (const auto &armed : data.armed) {
    out += separator;
    separator = ",";
    out += "\n    {\"export\": " + quoted(armed.first.first) +
           ", \"status\": " + std::to_string(armed.first.second.first) +
           ", \"detail\": " + std::to_string(armed.first.second.second) +
           ", \"count\": " + std::to_string(armed.second) + "}";
  }
  out += "],\n  \"injectedEvents\": [";
  separator = "";
  for (const auto &event : data.injected) {
    out += separator;
    separator = ",";
    out += "\n    {\"export\": " + quoted(event.first.first) +
           ", \"type\": " + std::to_string(event.first.second) +
           ", \"count\": " + std::to_string(event.second) + "}";
  }
  return out + "]\n}\n";
}

bool writeFile(const ACE_WString &path, const std::string &text) {
  const ACE_WString temporary = path + L".tmp";
  std::FILE *file = wideOpenFile(temporary.c_str(), "wb");
  if (file == nullptr)
    return false;
  const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  const bool closed = std::fclose(file) == 0;
  return written && closed && replaceFile(temporary.c_str(), path.c_str());
}

// Writes the report when `force`, or when it changed and the last write is
// a second old. Called without the data lock.
void writeReport(bool force, bool ended) {
  std::unique_lock<std::mutex> writing(writeLock, std::defer_lock);
  if (force)
    writing.lock();
  else if (!writing.try_lock())
    return; // another thread is writing right now
  std::string text;
  ACE_WString path;
  {
    std::lock_guard<std::mutex> guard(dataLock);
    if (report == nullptr)
      return;
    const auto now = std::chrono::steady_clock::now();
    if (!force && (!report->changed ||
                   (report->written && now - report->lastWrite < std::chrono::seconds(1))))
      return;
    report->lastWrite = now;
    report->written = true;
    report->changed = false;
    text = json(*report, ended);
    path = report->path;
  }
  const bool written = writeFile(path, text);
  bool logFailure = false;
  {
    std::lock_guard<std::mutex> guard(dataLock);
    if (report == nullptr)
      return;
    logFailure = !written && !report->failing;
    report->failing = !written;
  }
  if (logFailure)
    logMessage(L"Session report: writing <" + path +
               L"> failed: the report keeps counting and tries again");
}

} // namespace

std::atomic<bool> SessionReport::active{false};

void SessionReport::openFromEnvironment() {
  const ACE_WString named = environmentValue("CANSIMU_REPORT");
  if (named.length() != 0)
    openNamed(named, L"CANSIMU_REPORT");
}

void SessionReport::openNamed(const ACE_WString &path, const wchar_t *origin) {
  {
    std::lock_guard<std::mutex> guard(dataLock);
    if (report != nullptr)
      return;
    report = new Report;
    report->path = path;
    report->started = utcNow();
    active = true;
  }
  logMessage(L"Session report: written to <" + path + L"> named by " + ACE_WString(origin));
}

void SessionReport::flush() {
  if (enabled())
    writeReport(true, true);
}

void SessionReport::close() {
  // A copy of the library that saw nothing (a program that links it as
  // well as loading it) leaves the file to the copy that did.
  bool recorded = false;
  {
    std::lock_guard<std::mutex> guard(dataLock);
    recorded = report != nullptr && (report->written || report->changed);
  }
  if (recorded)
    flush();
  std::lock_guard<std::mutex> writing(writeLock);
  std::lock_guard<std::mutex> guard(dataLock);
  active = false;
  delete report;
  report = nullptr;
}

void SessionReport::entriesRead(const Ecu &ecu, const std::vector<Entry> &entries) {
  {
    std::lock_guard<std::mutex> guard(dataLock);
    if (report == nullptr)
      return;
    EcuRecord &record = recordOf(ecu);
    // Entries of the new read come first, in file order, with the hits and
    // refusals they had; entries gone from the file stay only if they were
    // hit or refused.
    std::vector<EntryCount> kept;
    std::map<std::pair<unsigned, std::string>, size_t> index;
    for (const Entry &entry : entries) {
      const std::string pattern = utf8Of(entry.pattern);
      const auto key = std::make_pair(static_cast<unsigned>(entry.line), pattern);
      if (index.count(key) != 0)
        continue;
      const auto old = record.entryIndex.find(key);
      index.emplace(key, kept.size());
      if (old != record.entryIndex.end()) {
        kept.push_back(record.entries[old->second]);
        continue;
      }
      kept.push_back(EntryCount{static_cast<unsigned>(entry.line), pattern, 0, 0, std::string()});
    }
    for (const EntryCount &old : record.entries) {
      const auto key = std::make_pair(old.line, old.pattern);
      if ((old.hits != 0 || old.refused != 0) && index.count(key) == 0) {
        index.emplace(key, kept.size());
        kept.push_back(old);
      }
    }
    record.entries.swap(kept);
    record.entryIndex.swap(index);
    report->changed = true;
  }
  // No write: a read of the files is no traffic, and the first request
  // is written at once.
}

void SessionReport::entryHit(const Ecu &ecu, ACE_UINT32 line, const ACE_WString &pattern,
                             bool negative) {
  {
    std::lock_guard<std::mutex> guard(dataLock);
    if (report == nullptr)
      return;
    EcuRecord &record = recordOf(ecu);
    ++entryOf(record, line, utf8Of(pattern)).hits;
    ++record.answers;
    if (negative)
      ++record.negativeAnswers;
    report->changed = true;
  }
  writeReport(false, false);
}

void SessionReport::entryRefused(const Ecu &ecu, ACE_UINT32 line, const ACE_WString &pattern,
                                 const ACE_WString &reason) {
  {
    std::lock_guard<std::mutex> guard(dataLock);
    if (report == nullptr)
      return;
    EcuRecord &record = recordOf(ecu);
    EntryCount &entry = entryOf(record, line, utf8Of(pattern));
    ++entry.refused;
    entry.refusal = utf8Of(reason);
    ++record.answers;
    ++record.negativeAnswers;
    report->changed = true;
  }
  writeReport(false, false);
}

void SessionReport::unscripted(const Ecu &ecu, const ACE_WString &request, bool negative) {
  {
    std::lock_guard<std::mutex> guard(dataLock);
    if (report == nullptr)
      return;
    EcuRecord &record = recordOf(ecu);
    if (negative) {
      ++record.answers;
      ++record.negativeAnswers;
    }
    const std::string text = utf8Of(request);
    const auto found = record.unscriptedIndex.find(text);
    if (found != record.unscriptedIndex.end())
      ++record.unscripted[found->second].count;
    else if (record.unscripted.size() < kMaxUnscripted) {
      record.unscriptedIndex.emplace(text, record.unscripted.size());
      record.unscripted.push_back(Unscripted{text, 1, utcNow()});
    } else
      ++record.unscriptedOthers;
    report->changed = true;
  }
  writeReport(false, false);
}

void SessionReport::dialogRefused(const Ecu &ecu) {
  {
    std::lock_guard<std::mutex> guard(dataLock);
    if (report == nullptr)
      return;
    ++recordOf(ecu).dialogRefusals;
    report->changed = true;
  }
  writeReport(false, false);
}

void SessionReport::armedStatus(const char *exportName, ACE_UINT32 status, ACE_UINT32 detail) {
  {
    std::lock_guard<std::mutex> guard(dataLock);
    if (report == nullptr)
      return;
    ++report->armed[std::make_pair(std::string(exportName), std::make_pair(status, detail))];
    report->changed = true;
  }
  writeReport(false, false);
}

void SessionReport::injectedEvent(const char *exportName, ACE_INT32 type) {
  {
    std::lock_guard<std::mutex> guard(dataLock);
    if (report == nullptr)
      return;
    ++report->injected[std::make_pair(std::string(exportName), type)];
    report->changed = true;
  }
  writeReport(false, false);
}
