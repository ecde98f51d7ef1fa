#include "names/InjectionNames.h"

#include "api/StatusInjection.h"
#include "names/StatusNames.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <vector>

namespace {

// A receive export's level: its name, the event types it queues (ranges,
// inclusive) and how its type names read.
struct Level {
  const char *exportName;
  InjectionRoute route;
  const char *queue;
  std::vector<std::pair<uint32_t, uint32_t>> types;
  bool (*typeOf)(const std::string &, uint32_t &);
  const char *(*nameOf)(uint32_t);
  const char *prefix;
};

const Level kLevels[] = {
    {"CAN_DrvRxMsg",
     InjectionRoute::DriverQueue,
     "driver",
     {{0, 0}, {100, 101}},
     driverEventType,
     driverEventName,
     "DRV_TYPE_"},
    {"CAN_DevRxMsg",
     InjectionRoute::DeviceQueue,
     "device",
     {{0, 0}, {101, 102}, {200, 205}, {1000, 1000}},
     deviceEventType,
     deviceEventName,
     "DEV_TYPE_"},
    {"CAN_PrtRxMsg",
     InjectionRoute::PortQueue,
     "port",
     {{0, 0}, {300, 325}, {400, 401}},
     portEventType,
     portEventName,
     "PRT_TYPE_"},
};

const Level *levelOf(InjectionRoute route) {
  for (const Level &level : kLevels)
    if (level.route == route)
      return &level;
  return nullptr;
}

// "0, 101, 102, 200 to 205, 1000"
std::string typesText(const Level &level) {
  std::string text;
  for (const auto &[first, last] : level.types) {
    text += text.empty() ? "" : ", ";
    text += std::to_string(first);
    if (last == first + 1)
      text += ", " + std::to_string(last);
    else if (last > first)
      text += " to " + std::to_string(last);
  }
  return text;
}

// " (did you mean CAN_DevGetVersion?)" for a near miss of a name that takes
// an injection; empty otherwise.
std::string suggestion(const std::string &name) {
  const std::vector<std::string> names = injectableExports();
  const std::string *best = nullptr;
  size_t bestDistance = 4;
  for (const std::string &candidate : names) {
    const size_t d = nameDistance(name, candidate);
    if (d < bestDistance) {
      best = &candidate;
      bestDistance = d;
    }
  }
  return best == nullptr ? "" : " (did you mean " + *best + "?)";
}

// A number up to UINT32_MAX or a name `byName` knows; false with `why`.
bool readValue(const std::string &text, bool (*byName)(const std::string &, uint32_t &),
               const std::string &names, uint32_t &value, std::string &why) {
  const NumberReading reading = readNumber(text, UINT32_MAX, value);
  if (reading == NumberReading::Read || byName(text, value))
    return true;
  why = reading == NumberReading::OutOfRange ? numberProblem(text, reading, UINT32_MAX)
                                             : "'" + text + "' is neither a number nor " + names;
  return false;
}

} // namespace

std::vector<std::string> injectableExports() {
  size_t count = 0;
  const char *const *armable = StatusInjection::armableExports(count);
  std::vector<std::string> names(armable, armable + count);
  for (const Level &level : kLevels)
    names.push_back(level.exportName);
  return names;
}

InjectionRoute injectionRoute(const std::string &exportName) {
  for (const Level &level : kLevels)
    if (exportName == level.exportName)
      return level.route;
  if (StatusInjection::isArmableExport(exportName.c_str()))
    return InjectionRoute::Arm;
  return InjectionRoute::Nowhere;
}

bool queuesEventType(InjectionRoute route, uint32_t type) {
  const Level *level = levelOf(route);
  if (level == nullptr)
    return false;
  for (const auto &[first, last] : level->types)
    if (type >= first && type <= last)
      return true;
  return false;
}

InjectionProblem readInjection(const std::string &name, const std::string &status,
                               const std::string &detail,
                               const std::function<bool(const std::string &)> &exported,
                               Injection &injection, std::string &why) {
  const InjectionRoute route = injectionRoute(name);
  if (exported && !exported(name)) {
    why = "'" + name + "' is not an export of the library" + suggestion(name);
    return InjectionProblem::Name;
  }
  if (route == InjectionRoute::Nowhere) {
    why = exported ? name + " takes no injection: the library would keep it armed for ever"
                   : "no export named '" + name + "' takes an injection" + suggestion(name);
    return InjectionProblem::Name;
  }
  Injection read{name, route, 0, 0};
  const Level *level = levelOf(route);
  const std::string names = level == nullptr ? std::string("a status name")
                                             : std::string("a ") + level->queue + " event type (" +
                                                   level->prefix + "...)";
  if (!readValue(status, level == nullptr ? statusValue : level->typeOf, names, read.status, why))
    return InjectionProblem::Value;
  if (!detail.empty() && !readValue(detail, statusValue, "a status name", read.detail, why)) {
    why = "detail " + why;
    return InjectionProblem::Value;
  }
  injection = read;
  if (level != nullptr && !queuesEventType(route, read.status)) {
    why = std::string("the ") + level->queue + " queue takes no event of type " +
          std::to_string(read.status) + " (only " + typesText(*level) + ")";
    return InjectionProblem::TypeNotQueued;
  }
  return InjectionProblem::None;
}

std::string injectionEffect(const Injection &injection) {
  const std::string detail =
      (injection.detail & 0xFFu) == 0 ? "" : ", detail " + std::to_string(injection.detail & 0xFFu);
  const Level *level = levelOf(injection.route);
  if (level == nullptr)
    return "the next " + injection.exportName + " answers " + statusText(injection.status) + detail;
  const std::string event = injection.status == 0
                                ? std::string("an end marker")
                                : eventTypeText(level->nameOf(injection.status), injection.status);
  return event + " on the " + level->queue + " queue" + detail;
}

std::string detailNote(const Injection &injection) {
  if (injection.detail <= 0xFF)
    return "";
  return "detail " + std::to_string(injection.detail) + " is more than a byte: the library keeps " +
         std::to_string(injection.detail & 0xFFu);
}

size_t nameDistance(const std::string &a, const std::string &b) {
  std::vector<size_t> row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j)
    row[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    size_t diagonal = row[0];
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const bool same = std::tolower(static_cast<unsigned char>(a[i - 1])) ==
                        std::tolower(static_cast<unsigned char>(b[j - 1]));
      const size_t next = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (same ? 0 : 1)});
      diagonal = row[j];
      row[j] = next;
    }
  }
  return row[b.size()];
}
