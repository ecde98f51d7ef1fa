// The raw frame path: a frame the host puts on the bus is offered, as hex
// text, to the ECUs its identifier addresses, and each answer comes back as
// one PRT_TYPE_FRAME event on the port queue. The channels' exchange queues
// the answers of ECUs outside the association table the same way.
#include "port/SimuPort.h"

#include "core/BusTrace.h"
#include "core/HexText.h"
#include "core/LogMessage.h"
#include "core/LogText.h"
#include "core/NumberText.h"
#include "ecu/AnswerNotes.h"
#include "ecu/SimuECU.h"
#include "platform/CodePage.h"

#include <ace/OS_NS_time.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>

namespace {

// The lines with an identifier are formatted into buffers of this many wide
// characters.
const size_t kFrameLineCapacity = 256;
const size_t kFrameBytes = 8;

void logFrameLine(ACE_UINT32 id, const wchar_t *what, const ACE_WString &text = ACE_WString()) {
  logMessage(fittedLine({L"[", identifierText(id), L"]  ", what, text}, kFrameLineCapacity));
}

struct FreeMemory {
  void operator()(void *memory) const { std::free(memory); }
};

} // namespace

CAN_STATUS SimuPort::sendTrame(const CAN_FramePort &frame) {
  if (!deviceConnected)
    return E_DISCONNECTED;
  if (mode != 2)
    return E_INVALID;
  // A CAN frame holds 8 data bytes; nothing past them is read.
  if (frame.length > kFrameBytes) {
    logMessage(L"CAN_PrtSendTrame: frame length " + decimalText(frame.length) +
               L" is above 8 bytes: frame refused");
    return E_NULL_POINTER;
  }
  const ACE_WString request = bytesToWideHex(frame.bytes, frame.length);
  logMessage(L"CAN frame : " + request);
  // The ECUs are asked without the port's lock: a look-up may re-read a
  // scenario file. The table only ever gains ECUs, and they live as long as
  // the port.
  const bool notes = answerNotesWanted();
  std::unique_ptr<BusTrace::Batch> trace;
  if (BusTrace::enabled()) {
    trace.reset(new BusTrace::Batch);
    trace->frame(frame.canId, frame.bytes, frame.length);
  }
  for (SimuECU *ecu : ecusInTableOrder()) {
    if (frame.canId != CAN_BROADCAST_ID && ecu->idTx != frame.canId)
      continue;
    ACE_WString response;
    std::optional<AnswerOrigin> origin;
    if (notes)
      origin.emplace();
    AnswerTiming timing;
    if (!ecu->getResponse(request, response, true, origin ? &*origin : nullptr, timing)) {
      if (origin)
        noteAnswer(*ecu, request, *origin, false, response);
      continue;
    }
    bool queued = true;
    // Response-pending answers first, each when its time comes.
    if (timing.pending != 0) {
      const ACE_WString pending = negativeAnswerTo(request, kResponsePending);
      for (unsigned i = 0; i < timing.pending && queued; ++i) {
        logFrameLine(ecu->idRx, L"Response : ", pending);
        queued = enqueueResponseAfter(ecu->idRx, pending, timing.pendingDueMs(i), trace.get());
      }
    }
    logFrameLine(ecu->idRx, L"Response : ", response);
    queued = queued && enqueueResponseAfter(ecu->idRx, response, timing.finalDueMs(), trace.get());
    if (origin)
      noteAnswer(*ecu, request, *origin, true, response);
    if (!queued) {
      if (trace)
        trace->write();
      return E_INVALID;
    }
  }
  if (trace)
    trace->write();
  return E_SUCCESS;
}

bool SimuPort::enqueueResponse(ACE_UINT32 canId, const ACE_WString &response,
                               BusTrace::Batch *trace) {
  CAN_FramePort *frame = frameOf(canId, response, trace);
  if (frame == nullptr)
    return false;
  if (!queueEvent(PRT_TYPE_FRAME, frame)) {
    logFrameLine(canId, L"Response not enqueued on port");
    return false;
  }
  logFrameLine(canId, L"Response enqueued on port");
  return true;
}

CAN_FramePort *SimuPort::frameOf(ACE_UINT32 canId, const ACE_WString &response,
                                 BusTrace::Batch *trace) {
  // Owned here until it is handed on, so that a failure on the way
  // releases it.
  std::unique_ptr<CAN_FramePort, FreeMemory> frame(
      static_cast<CAN_FramePort *>(std::calloc(1, sizeof(CAN_FramePort))));
  size_t count = 0;
  std::unique_ptr<unsigned char, FreeMemory> bytes(
      frame ? hexToBytes(toAnsi(response.c_str()).get(), count) : nullptr);
  if (!bytes) {
    logFrameLine(canId, L"Response not enqueued on port");
    return nullptr;
  }
  frame->canId = canId;
  frame->timestamp = static_cast<ACE_UINT32>(ACE_OS::gethrtime());
  // One frame carries 8 bytes; there is no segmentation.
  if (count > kFrameBytes) {
    logMessage(L"SimuPort::enqueueResponse() : Frame longer than expected!");
    count = kFrameBytes;
  }
  frame->length = static_cast<ACE_UINT32>(count);
  std::memcpy(frame->bytes, bytes.get(), count);
  if (trace != nullptr)
    trace->frame(canId, frame->bytes, count);
  return frame.release();
}

// A frame event held until it is due; released unread when the port or its
// reservation goes first.
struct SimuPort::DelayedFrame : AnswerScheduler::Delayed {
  DelayedFrame(SimuPort &port, CAN_FramePort *frame)
      : AnswerScheduler::Delayed(&port), port(port), frame(frame) {}
  ~DelayedFrame() override { std::free(frame); }
  void deliver() override {
    const ACE_UINT32 canId = frame->canId;
    // The frame is stamped when it reaches the bus, not when it was built.
    frame->timestamp = static_cast<ACE_UINT32>(ACE_OS::gethrtime());
    CAN_FramePort *handed = frame;
    frame = nullptr;
    if (!port.queueEvent(PRT_TYPE_FRAME, handed))
      logFrameLine(canId, L"Delayed response not enqueued on port");
  }
  SimuPort &port;
  CAN_FramePort *frame;
};

bool SimuPort::enqueueResponseAfter(ACE_UINT32 canId, const ACE_WString &response, unsigned delayMs,
                                    BusTrace::Batch *trace) {
  if (delayMs == 0)
    return enqueueResponse(canId, response, trace);
  CAN_FramePort *frame = frameOf(canId, response, trace);
  if (frame == nullptr)
    return false;
  std::unique_ptr<AnswerScheduler::Delayed> held(new DelayedFrame(*this, frame));
  const auto due = AnswerScheduler::Clock::now() + std::chrono::milliseconds(delayMs);
  if (!delayedAnswers.schedule(due, std::move(held))) {
    logFrameLine(canId, L"Response not enqueued on port");
    return false;
  }
  logFrameLine(canId, L"Response scheduled on port in ", decimalText(delayMs) + L" ms");
  return true;
}

bool SimuPort::scheduleAnswer(AnswerScheduler::Clock::time_point due,
                              std::unique_ptr<AnswerScheduler::Delayed> record) {
  return delayedAnswers.schedule(due, std::move(record));
}
