// cansimu: a command-line host for the simulated interface box. It loads the
// library at run time, as a diagnostic application does, and drives it.
#include "DriverApi.h"
#include "LibraryLoader.h"
#include "StatusNames.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

const char kUsage[] =
    "usage: cansimu demo [CONFIG] [--library PATH]\n"
    "\n"
    "  demo      a short host session over the simulated driver: initialise with\n"
    "            CONFIG (default: the bench in examples/), poll the driver queue,\n"
    "            inject a device event as a test harness would, read it back, end.\n"
    "  --library the cansimu library to load (default: the one built with this tool)\n";

struct Options {
  std::string command;
  std::string config;
  std::string library = CANSIMU_BUILD_LIBRARY;
  bool help = false;
};

bool parseArguments(int argc, char **argv, Options &options, std::string &error) {
  std::vector<std::string> positional;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--help" || argument == "-h") {
      options.help = true;
    } else if (argument == "--library") {
      if (++i == argc) {
        error = "--library needs a path";
        return false;
      }
      options.library = argv[i];
    } else if (!argument.empty() && argument[0] == '-') {
      error = "unknown option " + argument;
      return false;
    } else {
      positional.push_back(argument);
    }
  }
  if (!positional.empty())
    options.command = positional[0];
  if (positional.size() > 1)
    options.config = positional[1];
  if (positional.size() > 2) {
    error = "too many arguments";
    return false;
  }
  return true;
}

void step(const std::string &call, CAN_STATUS status, const std::string &note = "") {
  std::printf("  %-44s %-22s %s\n", call.c_str(), statusText(status).c_str(), note.c_str());
}

std::string describeEvent(const CAN_EventDrv &event) {
  if (event.type == DRV_TYPE_ENDFIFO)
    return "end marker";
  std::string text =
      "device event " + std::to_string(event.type) + ", detail " + std::to_string(event.detail);
  if (event.data != nullptr) {
    const auto *device = static_cast<const CAN_EnumDev *>(event.data);
    text += ", device \"" + std::string(device->name) + "\"";
    text += device->disconnected ? ", disconnected" : ", connected";
  }
  return text;
}

bool fileReadable(const std::string &path) {
  FILE *file = std::fopen(path.c_str(), "rb");
  if (file == nullptr)
    return false;
  std::fclose(file);
  return true;
}

int runDemo(const DriverApi &api, const std::string &config) {
  std::printf("cansimu demo: a host session with the simulated interface box\n");
  std::printf("  configuration: %s\n\n", config.c_str());

  step("CAN_DrvInit(configuration)", api.DrvInit(config.c_str()), "configuration read");

  CAN_EventDrv *event = nullptr;
  uint32_t pending = 0;
  step("CAN_DrvRxMsg(timeout 100 ms)", api.DrvRxMsg(&event, &pending, 100), "nothing queued yet");

  api.setNextCANStatus("CAN_DrvRxMsg", DRV_TYPE_DEVICE_100, 7);
  std::printf("  %-44s %-22s %s\n", "setNextCANStatus(\"CAN_DrvRxMsg\", 100, 7)", "",
              "harness queues a device event");
  step("CAN_DrvEndFifo()", api.DrvEndFifo(), "end marker queued behind it");

  for (int read = 0; read < 2; ++read) {
    const CAN_STATUS status = api.DrvRxMsg(&event, &pending, 1000);
    if (status != E_SUCCESS) {
      step("CAN_DrvRxMsg(timeout 1000 ms)", status, "expected an event");
      api.DrvEnd();
      return 1;
    }
    step("CAN_DrvRxMsg(timeout 1000 ms)", status,
         describeEvent(*event) + ", " + std::to_string(pending) + " left");
    step("CAN_DrvFreeRxMsg(event)", api.DrvFreeRxMsg(event));
  }
  api.DrvEnd();
  std::printf("  %-44s %-22s %s\n", "CAN_DrvEnd()", "", "driver destroyed");
  return 0;
}

} // namespace

int main(int argc, char **argv) {
  Options options;
  std::string error;
  if (!parseArguments(argc, argv, options, error)) {
    std::fprintf(stderr, "cansimu: %s\n%s", error.c_str(), kUsage);
    return 2;
  }
  if (options.help || options.command.empty()) {
    std::fputs(kUsage, options.help ? stdout : stderr);
    return options.help ? 0 : 2;
  }
  if (options.command != "demo") {
    std::fprintf(stderr, "cansimu: unknown command '%s'\n%s", options.command.c_str(), kUsage);
    return 2;
  }
  const std::string config =
      options.config.empty() ? std::string(CANSIMU_EXAMPLES_DIR) + "/bench.xml" : options.config;
  if (!fileReadable(config)) {
    std::fprintf(stderr, "cansimu: cannot read the configuration %s\n", config.c_str());
    return 1;
  }
  LibraryLoader library(options.library);
  if (!library.loaded()) {
    std::fprintf(stderr, "cansimu: cannot load the library: %s\n", library.error().c_str());
    return 1;
  }
  DriverApi api;
  std::string missing;
  if (!api.resolve(library, missing)) {
    std::fprintf(stderr, "cansimu: %s does not export %s\n", options.library.c_str(),
                 missing.c_str());
    return 1;
  }
  return runDemo(api, config);
}
