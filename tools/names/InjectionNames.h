// What setNextCANStatus does with an export name, as the library does it:
// the receive exports of the driver, the device and the port queue an event
// of the type given as the status, if their level knows that type; the 42
// exports with an injection step answer an armed status at their next call
// (a name stays armed until then, and a second arming of it is dropped);
// any other name is kept by the library and never taken, so the program
// refuses it, as the library skips it in a bench.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

enum class InjectionRoute { Arm, DriverQueue, DeviceQueue, PortQueue, Nowhere };

InjectionRoute injectionRoute(const std::string &exportName);
// Every export name that takes an injection, the receive exports last.
std::vector<std::string> injectableExports();
// True when the route's level queues an event of `type` when asked to.
bool queuesEventType(InjectionRoute route, uint32_t type);

// An injection checked against the library's names.
struct Injection {
  std::string exportName;
  InjectionRoute route = InjectionRoute::Nowhere;
  uint32_t status = 0; // the status to arm, or the event type to queue
  uint32_t detail = 0;
};

// What is wrong with an injection: the library skips one with a bad name,
// status or detail, and queues nothing for an event type its level lacks.
enum class InjectionProblem { None, Name, Value, TypeNotQueued };

// Reads NAME, STATUS and DETAIL (empty: 0) as a tester writes them: STATUS
// a number or a status name, or for a receive export an event type of its
// level by number or name; DETAIL a number or a status name. `exported`
// says whether the loaded library exports a name (empty: no library to
// ask). None, or the problem with the reason in `why`.
InjectionProblem readInjection(const std::string &name, const std::string &status,
                               const std::string &detail,
                               const std::function<bool(const std::string &)> &exported,
                               Injection &injection, std::string &why);

// What the library does with it, in a few words: "the next CAN_DevGetVersion
// answers E_BUSOFF (27)", "DEV_TYPE_RESET (205) on the device queue".
std::string injectionEffect(const Injection &injection);
// "detail 300 is more than a byte: the library keeps 44"; empty for a
// detail that fits.
std::string detailNote(const Injection &injection);

// Edits (one character inserted, removed or replaced) that turn one name into
// the other, letter case aside: how far a misspelt name is from a known one.
size_t nameDistance(const std::string &a, const std::string &b);
