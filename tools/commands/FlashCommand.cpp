// flash: one firmware download with its progress bar.
#include "Command.h"
#include "Errors.h"
#include "files/Paths.h"
#include "output/Output.h"
#include "session/DeviceSteps.h"
#include "session/FirmwareFlash.h"
#include "session/Session.h"

namespace {

const char kFlashDetails[] =
    "Starts a session with CONFIG, reserves the box, puts it in mode 0 and\n"
    "downloads IMAGE (an application or boot image) with a live progress bar,\n"
    "then prints the box's versions. While the download runs it also reads\n"
    "the driver queue, as a host's reader does, so a bench saved meanwhile is\n"
    "read again: unplug the box there (CAN_DEVICESTATE) and the download shows\n"
    "it. The exit status is 0 when the download answered E_SUCCESS with the\n"
    "box still plugged in, and 1 otherwise (E_BOARD_ERROR_1 when the bench\n"
    "makes uploads fail, E_BAD_FILE for a file that is no image).\n";

int runFlash(const Arguments &arguments) {
  const std::string &image = arguments.positional[1];
  if (!fileReadable(image))
    throw SetupError("cannot read the firmware image " + image);
  Session session(arguments.library, arguments.positional[0]);
  const std::string imagePath = session.userPath(image);

  printStep("CAN_DrvInit(configuration)", session.start(), session.configuration());
  if (reserveDevice(session) != E_SUCCESS || setMode(session, 0) != E_SUCCESS)
    return kExitRefused;
  const size_t folderEnd = image.find_last_of("/\\");
  const std::string shown = folderEnd == std::string::npos ? image : image.substr(folderEnd + 1);
  const FlashOutcome flashed = flashFirmware(session, imagePath, shown);
  showVersion(session);
  session.freeDevice();
  return flashed.status == E_SUCCESS && !flashed.unplugged ? kExitDone : kExitRefused;
}

} // namespace

Command flashCommand() {
  return {"flash",
          "flash CONFIG IMAGE",
          "download a firmware image, with a progress bar",
          kFlashDetails,
          2,
          2,
          {},
          runFlash};
}
