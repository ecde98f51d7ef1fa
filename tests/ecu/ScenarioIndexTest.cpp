// The scenario's indexed look-up against the plain bucket walk: the same
// random scenario files, read by a Scenario and fed to a reference table that
// walks its buckets (ACE's hash map with the scenario's own hash and match
// functors, newest entry of a bucket first), must answer every request with
// the same response, rotation included, across reloads.
#include "ecu/Scenario.h"
#include "platform/CodePage.h"
#include "support/TempDir.h"
#include "support/XmlFiles.h"

#include <ace/Hash_Map_Manager_T.h>
#include <ace/Null_Mutex.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

ACE_WString wide(const std::string &text) { return toWideString(text.c_str()); }

struct Event {
  std::string pattern;
  std::vector<std::string> responses;
};

// What the document describes, without an index: a pattern is first looked
// up like a request (its bucket walked from the head); a match takes its
// responses, otherwise it is bound at the head of its bucket.
class WalkedTable {
public:
  explicit WalkedTable(const std::vector<Event> &events) : table_(32) {
    for (const Event &event : events) {
      Rotation *rotation = nullptr;
      if (table_.find(wide(event.pattern), rotation) != 0) {
        rotations_.push_back(std::make_unique<Rotation>());
        rotation = rotations_.back().get();
        table_.trybind(wide(event.pattern), rotation);
      }
      rotation->responses = event.responses;
      rotation->cursor = 0;
    }
  }
  size_t entryCount() const { return table_.current_size(); }
  // The response handed out for `request`, or "" when nothing answers.
  std::string ask(const std::string &request) {
    Rotation *rotation = nullptr;
    if (table_.find(wide(request), rotation) != 0 || rotation->responses.empty())
      return "";
    const std::string response = rotation->responses[rotation->cursor];
    rotation->cursor = (rotation->cursor + 1) % rotation->responses.size();
    return response;
  }

private:
  struct Rotation {
    std::vector<std::string> responses;
    size_t cursor = 0;
  };
  ACE_Hash_Map_Manager_Ex<ACE_WString, Rotation *, ScenarioKeyHash, ScenarioKeyMatch,
                          ACE_Null_Mutex>
      table_;
  std::vector<std::unique_ptr<Rotation>> rotations_;
};

// Random texts over a few characters, so that patterns share prefixes,
// buckets collide, wildcards fall anywhere and requests often match.
class TextSource {
public:
  explicit TextSource(std::uint32_t seed) : random_(seed) {}
  size_t below(size_t bound) { return static_cast<size_t>(random_() % bound); }
  bool chance(size_t percent) { return below(100) < percent; }

  std::string text(size_t maxLength, size_t wildcardPercent) {
    static const char *const kStarts[] = {"",   "2",  "22", "22F1", "22F19", "2E",
                                          "10", "3E", "?2", "2?",   "*",     "F1"};
    static const char kCharacters[] = "2F1E90";
    std::string text = kStarts[below(sizeof kStarts / sizeof kStarts[0])];
    const size_t extra = below(maxLength + 1);
    for (size_t i = 0; i < extra; ++i) {
      if (chance(wildcardPercent))
        text += chance(70) ? '?' : '*';
      else
        text += kCharacters[below(sizeof kCharacters - 1)];
    }
    return text;
  }

private:
  std::mt19937 random_;
};

std::vector<Event> randomEvents(TextSource &source, size_t fileNumber) {
  std::vector<Event> events(1 + source.below(200));
  // Some files have no wildcard at all, others many.
  const size_t wildcardPercent = source.chance(30) ? 0 : source.below(25);
  for (size_t i = 0; i < events.size(); ++i) {
    Event &event = events[i];
    event.pattern = i > 0 && source.chance(10) ? events[source.below(i)].pattern
                                               : source.text(6, wildcardPercent);
    const size_t count = source.below(4);
    for (size_t k = 0; k < count; ++k)
      event.responses.push_back("F" + std::to_string(fileNumber) + "E" + std::to_string(i) + "R" +
                                std::to_string(k));
  }
  return events;
}

std::string scenarioXml(const std::vector<Event> &events) {
  ScenarioFile file;
  for (const Event &event : events)
    file.event(event.pattern, event.responses);
  return file.xml();
}

} // namespace

TEST(ScenarioIndexTest, RandomScenarios_AnswerEveryRequestAsTheBucketWalkDoes) {
  TextSource source(20251123);
  TempDir dir;
  const std::string path = dir.file("ecu.xml");
  long long fileTime = 1000000;
  std::unique_ptr<Scenario> scenario;
  for (size_t file = 0; file < 150; ++file) {
    const std::vector<Event> events = randomEvents(source, file);
    // Every third file is saved over the previous one and reloaded by the
    // next look-up; the others are loaded by a new scenario.
    writeFile(path, scenarioXml(events));
    setModificationTime(path, ++fileTime);
    if (!scenario || file % 3 != 0) {
      scenario = std::make_unique<Scenario>(wide(path));
      ASSERT_TRUE(scenario->load());
    }
    auto walked = std::make_unique<WalkedTable>(events);
    for (size_t round = 0; round < 300; ++round) {
      // Requests: a pattern as written, a pattern extended or cut, or
      // random text, now and then with wildcards of its own.
      std::string request = source.text(8, source.chance(10) ? 20 : 0);
      if (source.chance(50)) {
        request = events[source.below(events.size())].pattern;
        if (source.chance(50))
          request += source.text(3, 0);
        else if (!request.empty() && source.chance(50))
          request.pop_back();
      }
      ACE_WString response(L"untouched");
      const std::string indexed = scenario->findResponse(wide(request), response) == 0
                                      ? toAnsiString(response).c_str()
                                      : "";
      ASSERT_EQ(indexed, walked->ask(request))
          << "file " << file << ", request '" << request << "'";
      if (round == 0) {
        ASSERT_EQ(scenario->entryCount(), walked->entryCount()) << "file " << file;
      }
    }
    // The same content saved again: every rotation starts over.
    if (file % 5 == 0) {
      setModificationTime(path, ++fileTime);
      walked = std::make_unique<WalkedTable>(events);
      const std::string &first = events[0].pattern;
      ACE_WString response;
      const std::string indexed =
          scenario->findResponse(wide(first), response) == 0 ? toAnsiString(response).c_str() : "";
      ASSERT_EQ(indexed, walked->ask(first)) << "file " << file << " reloaded";
    }
  }
}
