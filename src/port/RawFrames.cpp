// The raw frame path: a frame the host puts on the bus is offered, as hex
// text, to the ECUs its identifier addresses, and each answer comes back as
// one PRT_TYPE_FRAME event on the port queue. The channels' exchange queues
// the answers of ECUs outside the association table the same way.
#include "port/SimuPort.h"

#include "core/BusTrace.h"
#include "core/HexText.h"
#include "core/LogMessage.h"
#include "core/LogText.h"
#include "ecu/AnswerNotes.h"
#include "ecu/SimuECU.h"
#include "platform/CodePage.h"

#include <ace/OS_NS_time.h>

#include <algorithm>
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
    logMessage(L"CAN_PrtSendTrame: frame length " +
               ACE_WString(std::to_wstring(frame.length).c_str()) +
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
    if (!ecu->getResponse(request, response, true, origin ? &*origin : nullptr)) {
      if (origin)
        noteAnswer(*ecu, request, *origin, false, response);
      continue;
    }
    logFrameLine(ecu->idRx, L"Response : ", response);
    const bool queued = enqueueResponse(ecu->idRx, response, trace.get());
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
  // Owned here until the queue takes it, so that a failure on the way
  // releases it.
  std::unique_ptr<CAN_FramePort, FreeMemory> frame(
      static_cast<CAN_FramePort *>(std::calloc(1, sizeof(CAN_FramePort))));
  size_t count = 0;
  std::unique_ptr<unsigned char, FreeMemory> bytes(
      frame ? hexToBytes(toAnsi(response.c_str()).get(), count) : nullptr);
  if (!bytes) {
    logFrameLine(canId, L"Response not enqueued on port");
    return false;
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
  if (!queueEvent(PRT_TYPE_FRAME, frame.release())) {
    logFrameLine(canId, L"Response not enqueued on port");
    return false;
  }
  logFrameLine(canId, L"Response enqueued on port");
  return true;
}
