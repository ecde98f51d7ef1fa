#include "Summary.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace {

struct Row {
  std::string figure, measured, judgedBy, target, met;
};

std::string format(const char *pattern, double value) {
  char text[64];
  std::snprintf(text, sizeof text, pattern, value);
  return text;
}

// 163450.2 -> "163 450"
std::string grouped(double value) {
  std::string digits = format("%.0f", value);
  for (int at = static_cast<int>(digits.size()) - 3; at > 0; at -= 3)
    digits.insert(static_cast<size_t>(at), " ");
  return digits;
}

std::string verdict(bool met) { return met ? "yes" : "NO"; }

const Measured *find(const Results &results, const std::string &name) {
  const auto found = results.find(name);
  return found == results.end() ? nullptr : &found->second;
}

double counter(const Measured &measured, const std::string &name) {
  const auto found = measured.counters.find(name);
  return found == measured.counters.end() ? 0 : found->second;
}

const char kNotMeasured[] = "not measured";

void roundTripRows(std::vector<Row> &rows, const Results &results,
                   const std::optional<double> &python) {
  const auto ratioTo = [&](const Measured &measured) { return *python / measured.seconds; };
  Row diagnostic{"One-to-one diagnostic round trip (scenario hit, logging on)", kNotMeasured, "",
                 "≥ 150 000/s and ≥ 5× python-can", ""};
  if (const Measured *measured = find(results, "host/diagnostic_round_trip")) {
    const double rate = 1 / measured->seconds;
    diagnostic.measured = grouped(rate) + "/s (" + format("%.2f µs", measured->seconds * 1e6) + ")";
    bool met = rate >= 150000;
    if (python) {
      diagnostic.judgedBy = format("%.2f× python-can", ratioTo(*measured));
      met = met && ratioTo(*measured) >= 5;
    }
    diagnostic.met = verdict(met);
  }
  rows.push_back(diagnostic);
  Row raw{"Raw frame round trip", kNotMeasured, "", "≥ 7× python-can", ""};
  if (const Measured *measured = find(results, "host/raw_frame_round_trip")) {
    raw.measured =
        grouped(1 / measured->seconds) + "/s (" + format("%.2f µs", measured->seconds * 1e6) + ")";
    if (python) {
      raw.judgedBy = format("%.2f× python-can", ratioTo(*measured));
      raw.met = verdict(ratioTo(*measured) >= 7);
    }
  }
  rows.push_back(raw);
  const Measured *plain = find(results, "host/diagnostic_round_trip");
  const std::pair<const char *, const char *> withOutputs[] = {
      {"host/diagnostic_round_trip_log", "log file on"},
      {"host/diagnostic_round_trip_trace_report", "bus trace and session report on"}};
  for (const auto &[name, label] : withOutputs) {
    const double limit = std::string(name).find("log") != std::string::npos ? 1.5 : 2;
    Row row{std::string("Diagnostic round trip, ") + label, kNotMeasured, "",
            format("≤ %.1f× without", limit), ""};
    if (const Measured *measured = find(results, name)) {
      row.measured = grouped(1 / measured->seconds) + "/s (" +
                     format("%.2f µs", measured->seconds * 1e6) + ")";
      if (plain != nullptr) {
        const double ratio = measured->seconds / plain->seconds;
        row.judgedBy = format("%.2f× without", ratio);
        row.met = verdict(ratio <= limit);
      }
    }
    rows.push_back(row);
  }
  Row reference{"Reference: python-can virtual bus, send + receive", kNotMeasured, "", "", ""};
  if (python)
    reference.measured = grouped(1 / *python) + "/s (" + format("%.2f µs", *python * 1e6) + ")";
  rows.push_back(reference);
}

void wakeUpRows(std::vector<Row> &rows, const Results &results) {
  const Measured *measured = find(results, "host/wake_up");
  const auto percentiles = [&](const char *kind) {
    return format("p50 %.1f µs", counter(*measured, std::string(kind) + "_p50_us")) +
           format(", p99 %.1f µs", counter(*measured, std::string(kind) + "_p99_us"));
  };
  Row woken{"Blocked CAN_ChnRxMsg woken by a request", kNotMeasured, "", "p99 ≤ 1.5× the event's",
            ""};
  Row event{"Reference: bare ACE auto-reset event ping-pong", kNotMeasured, "", "", ""};
  if (measured != nullptr && counter(*measured, "event_p99_us") > 0) {
    woken.measured = percentiles("channel");
    event.measured = percentiles("event");
    const double ratio = counter(*measured, "channel_p99_us") / counter(*measured, "event_p99_us");
    woken.judgedBy = format("p99 %.2f× the event's", ratio);
    woken.met = verdict(ratio <= 1.5);
  }
  rows.push_back(woken);
  rows.push_back(event);
}

void lookUpRows(std::vector<Row> &rows, const Results &results) {
  const std::pair<const char *, const char *> kinds[] = {
      {"first_in_file", "first pattern of the file"},
      {"last_in_file", "last pattern of the file"},
      {"no_match", "no match"}};
  for (const auto &[name, label] : kinds) {
    Row row{std::string("Look-up, ") + label + ", 10 / 1 000 / 10 000 patterns", "", "",
            "10 000 ≤ 2× 10", ""};
    const Measured *small = nullptr, *large = nullptr;
    for (const char *count : {"10", "1000", "10000"}) {
      const Measured *measured = find(results, std::string("lookup/") + name + "/" + count);
      row.measured += (row.measured.empty() ? "" : " / ") +
                      (measured ? format("%.2f", measured->seconds * 1e6) : std::string("-"));
      (std::string(count) == "10" ? small : large) = measured;
    }
    row.measured += " µs";
    if (small != nullptr && large != nullptr) {
      const double ratio = large->seconds / small->seconds;
      row.judgedBy = format("10 000 / 10: %.2f×", ratio);
      row.met = verdict(ratio <= 2);
    }
    rows.push_back(row);
  }
}

void loadRow(std::vector<Row> &rows, const Results &results) {
  Row row{"Load, 1 000 / 10 000 / 30 000 patterns", "", "",
          "linear (per pattern ≤ 1.5×), 30 000 ≤ 50 ms", ""};
  for (const char *count : {"1000", "10000", "30000"}) {
    const Measured *measured = find(results, std::string("load/") + count);
    row.measured += (row.measured.empty() ? "" : " / ") +
                    (measured ? format("%.1f", measured->seconds * 1e3) : std::string("-"));
  }
  row.measured += " ms";
  const Measured *small = find(results, "load/1000");
  const Measured *large = find(results, "load/30000");
  if (small != nullptr && large != nullptr) {
    const double perPattern = (large->seconds / 30000) / (small->seconds / 1000);
    row.judgedBy = format("per pattern, 30 000 / 1 000: %.2f×", perPattern);
    row.met = verdict(perPattern <= 1.5 && large->seconds <= 0.050);
  }
  rows.push_back(row);
}

void checkRow(std::vector<Row> &rows, const Results &results) {
  Row row{"cansimu check, 2 000 / 20 000 entries", "", "", "linear, 20 000 < 1 s", ""};
  const Measured *small = find(results, "check/2000");
  const Measured *large = find(results, "check/20000");
  row.measured = (small ? format("%.2f", counter(*small, "seconds")) : std::string("-")) + " / " +
                 (large ? format("%.2f", counter(*large, "seconds")) : std::string("-")) + " s";
  if (small != nullptr && large != nullptr && counter(*small, "seconds") > 0) {
    const double perEntry =
        (counter(*large, "seconds") / 20000) / (counter(*small, "seconds") / 2000);
    row.judgedBy = format("per entry, 20 000 / 2 000: %.2f×", perEntry);
    row.met = verdict(counter(*large, "seconds") < 1);
  }
  rows.push_back(row);
}

void memoryRow(std::vector<Row> &rows, const Results &results) {
  const Measured *measured = find(results, "host/resident_memory");
  if (measured == nullptr) {
    rows.push_back(
        {"Resident memory after a number of requests", kNotMeasured, "", "grows ≤ 1 MB", ""});
    return;
  }
  const double first = counter(*measured, "first_bytes"),
               second = counter(*measured, "second_bytes");
  rows.push_back({"Resident memory after " + grouped(counter(*measured, "first_requests")) + " / " +
                      grouped(counter(*measured, "second_requests")) + " requests",
                  format("%.2f", first / 1048576) + format(" / %.2f MB", second / 1048576),
                  format("grows %.2f MB", (second - first) / 1048576), "grows ≤ 1 MB",
                  verdict(second - first <= 1048576)});
}

// Display width of UTF-8 text: one column per character.
size_t widthOf(const std::string &text) {
  return static_cast<size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

} // namespace

void printSummary(std::ostream &out, const Results &results,
                  const std::optional<double> &pythonCanSeconds) {
  std::vector<Row> rows = {{"Figure", "Measured", "Judged by", "Target", "Met"}};
  roundTripRows(rows, results, pythonCanSeconds);
  wakeUpRows(rows, results);
  lookUpRows(rows, results);
  loadRow(rows, results);
  checkRow(rows, results);
  memoryRow(rows, results);
  size_t widths[5] = {};
  for (const Row &row : rows) {
    const std::string *cells[] = {&row.figure, &row.measured, &row.judgedBy, &row.target, &row.met};
    for (size_t i = 0; i < 5; ++i)
      widths[i] = std::max(widths[i], widthOf(*cells[i]));
  }
  for (size_t r = 0; r < rows.size(); ++r) {
    const Row &row = rows[r];
    const std::string *cells[] = {&row.figure, &row.measured, &row.judgedBy, &row.target, &row.met};
    std::string line;
    for (size_t i = 0; i < 5; ++i)
      line += (i ? " | " : "") + *cells[i] + std::string(widths[i] - widthOf(*cells[i]), ' ');
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << "\n";
    if (r == 0) {
      std::string rule;
      for (size_t i = 0; i < 5; ++i)
        rule += (i ? "-|-" : "") + std::string(widths[i], '-');
      out << rule << "\n";
    }
  }
  out << "\nTimes are CPU time per operation, python-can's too; wake-ups are wall-clock "
         "latencies.\n";
}
