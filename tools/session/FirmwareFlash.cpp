#include "session/FirmwareFlash.h"

#include "output/Output.h"
#include "output/ProgressBar.h"
#include "output/Records.h"
#include "system/Console.h"

#include <atomic>
#include <cstdio>
#include <thread>
#include <vector>

namespace {

// How long the reader waits for each device event: a download sends one
// every 50 ms, so a queue quiet this long after the call returned is
// drained. Between two device reads the driver queue is read briefly.
constexpr uint32_t kReaderTimeoutMs = 100;
constexpr uint32_t kDriverReadMs = 1;

struct ProgressReader {
  ProgressReader(const Session &session, ProgressBar &bar) : session(session), bar(bar) {}

  const Session &session;
  ProgressBar &bar;
  // Set by the downloading thread once the call has returned, before it
  // queues the end marker that stops the reader; an end marker read earlier
  // is an older one. `endKnown` and `endQueued` say whether that marker
  // could be queued: without one the reader stops on a quiet queue.
  std::atomic<bool> downloadDone{false};
  std::atomic<bool> endKnown{false};
  std::atomic<bool> endQueued{false};
  unsigned progressEvents = 0;
  bool unplugged = false;
  bool cutShort = false;
  std::vector<std::string> otherEvents;

  void run() {
    const DriverApi &api = session.api();
    for (;;) {
      readDriverQueue();
      noticeInterrupt();
      CAN_EventDev *event = nullptr;
      uint32_t pending = 0;
      const CAN_STATUS status = api.DevRxMsg(session.device(), &event, &pending, kReaderTimeoutMs);
      if (status != E_SUCCESS || event == nullptr) {
        if (endKnown && !endQueued)
          return;
        continue;
      }
      const uint32_t type = event->type;
      session.noteConnection(type);
      unplugged = unplugged || type == DEV_TYPE_DISCONNECTED;
      if (type == DEV_TYPE_PROGRESS) {
        ++progressEvents;
        if (!cutShort)
          bar.update(progressValue(*event));
      } else if (type != DEV_TYPE_ENDFIFO) {
        otherEvents.push_back("device " + describeDeviceEvent(*event));
      }
      api.DevFreeRxMsg(event);
      if (type == DEV_TYPE_ENDFIFO && downloadDone)
        return;
    }
  }

  // The driver's read also reads an edited configuration again.
  void readDriverQueue() {
    const DriverApi &api = session.api();
    CAN_EventDrv *event = nullptr;
    uint32_t pending = 0;
    while (api.DrvRxMsg(&event, &pending, kDriverReadMs) == E_SUCCESS && event != nullptr) {
      otherEvents.push_back("driver " + describeDriverEvent(*event));
      api.DrvFreeRxMsg(event);
    }
  }

  void noticeInterrupt() {
    if (cutShort || session.wait() == nullptr || !session.wait()->cancelled())
      return;
    cutShort = true;
    bar.finish("Ctrl-C");
    printDetail(6, "the download call cannot be broken off: waiting for its end");
  }
};

std::string resultText(const DownloadResult &result) {
  char text[48];
  std::snprintf(text, sizeof text, "result {0x%02X, %u}", static_cast<unsigned>(result.errorCode),
                static_cast<unsigned>(result.written));
  return text;
}

} // namespace

FlashOutcome flashFirmware(const Session &session, const std::string &image,
                           const std::string &shownName) {
  const DriverApi &api = session.api();
  ProgressBar bar(outputIsTerminal());
  ProgressReader reader(session, bar);
  std::thread readerThread([&reader] { reader.run(); });

  FlashOutcome outcome;
  outcome.status = api.DevBoardTeleFirm(session.device(), image.c_str(), &outcome.result);
  // The end marker wakes the reader behind the last progress event.
  reader.downloadDone = true;
  reader.endQueued = api.DevEndFifo(session.device()) == E_SUCCESS;
  reader.endKnown = true;
  readerThread.join();

  outcome.progress = bar.percent();
  outcome.progressEvents = reader.progressEvents;
  outcome.unplugged = reader.unplugged;
  if (!reader.cutShort)
    bar.finish(std::to_string(outcome.progressEvents) + " events");
  printStep("CAN_DevBoardTeleFirm(" + shownName + ")", outcome.status, resultText(outcome.result));
  for (const std::string &other : reader.otherEvents)
    printDetail(6, "during the download: " + other);
  if (outcome.unplugged)
    printDetail(6, "the box was unplugged: the download went on, calls now answer E_DISCONNECTED");
  return outcome;
}
