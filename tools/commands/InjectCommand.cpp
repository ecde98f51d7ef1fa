// inject: a fault or an event armed from the bench file, for a host that
// cannot call setNextCANStatus itself.
#include "Command.h"
#include "Errors.h"
#include "files/BenchEdit.h"
#include "files/BenchFile.h"
#include "files/Paths.h"
#include "library/LibraryLookup.h"
#include "names/InjectionNames.h"
#include "output/Output.h"
#include "system/LibraryLoader.h"

#include <cstdio>
#include <memory>

namespace {

const char kInjectDetails[] =
    "Appends to the bench BENCH the element\n"
    "  <INJECT export=\"NAME\" status=\"STATUS\" detail=\"DETAIL\"/>\n"
    "and saves the file, which moves its modification time. At each read of\n"
    "the bench (CAN_DrvInit, and the first CAN_DrvRxMsg after a save) the\n"
    "library applies every INJECT in document order, as the test harness's\n"
    "call setNextCANStatus(NAME, STATUS, DETAIL) would: it arms STATUS for the\n"
    "next call of the export NAME (a name still armed keeps its first arming\n"
    "and the new one is dropped) or, for CAN_DrvRxMsg, CAN_DevRxMsg and\n"
    "CAN_PrtRxMsg, queues an event of type STATUS on that level. So a tester\n"
    "arms a fault in an application they cannot change by saving its bench.\n"
    "\n"
    "NAME is checked against the exports of the library (see --library) and\n"
    "STATUS against the event types each level queues. STATUS and DETAIL\n"
    "(default 0) are numbers or names: E_INVALID, and for the receive exports\n"
    "DRV_TYPE_..., DEV_TYPE_..., PRT_TYPE_... Remove the element again when\n"
    "the fault has served: every read of the bench applies it anew.\n"
    "\n"
    "Exit status: 0 written, 2 a name or value the library would skip, 3 a\n"
    "bench or library that cannot be read, or a bench that cannot be saved.\n";

// What each read of the bench will do with the new element.
std::string effectAtRead(const Injection &injection) {
  if (injection.route == InjectionRoute::Arm)
    return "each read arms it: " + injectionEffect(injection);
  return "each read queues " + injectionEffect(injection);
}

int runInject(const Arguments &arguments) {
  const std::vector<std::string> &words = arguments.positional;
  const std::string &bench = words[0];
  if (!fileReadable(bench))
    throw SetupError("cannot read the bench " + bench);
  XmlSource file;
  if (file.load(bench) != XmlSource::Outcome::Read)
    throw SetupError(bench + " is not an XML file");
  const LibraryChoice choice = chooseLibrary(arguments.library);
  const auto library = std::make_unique<LibraryLoader>(choice.path);
  if (!library->loaded())
    throw SetupError("cannot load the library " + choice.path + ": " + library->error());

  Injection injection;
  std::string why;
  const auto exported = [&](const std::string &name) {
    return library->symbol(name.c_str()) != nullptr;
  };
  const std::string detail = words.size() > 3 ? words[3] : "0";
  if (readInjection(words[1], words[2], detail, exported, injection, why) != InjectionProblem::None)
    throw UsageError(why);
  // An earlier element for the same export arms it first at every read.
  unsigned earlier = 0;
  for (const BenchInjection &element : readBenchInjections(file))
    if (earlier == 0 && element.exportName == injection.exportName)
      earlier = element.line;

  const std::string element =
      "<INJECT export=\"" + words[1] + "\" status=\"" + words[2] + "\" detail=\"" + detail + "\"/>";
  const unsigned line = appendElement(bench, element);
  std::printf("%s:%u: %s\n", bench.c_str(), line, element.c_str());
  if (injection.route == InjectionRoute::Arm && earlier != 0)
    printDetail(2, "line " + std::to_string(earlier) + " arms " + injection.exportName +
                       " first: each read drops this one");
  else
    printDetail(2, effectAtRead(injection));
  const std::string note = detailNote(injection);
  if (!note.empty())
    printDetail(2, note);
  printDetail(2, "a running host reads it at its next CAN_DrvRxMsg");
  return kExitDone;
}

} // namespace

Command injectCommand() {
  return {"inject",
          "inject BENCH NAME STATUS [DETAIL]",
          "arm a fault or queue an event from the bench file",
          kInjectDetails,
          3,
          4,
          {},
          runInject};
}
