// The diagnostic exchange: one request on a channel, each of its ECUs asked
// for its answer, every answer queued as a channel event (or, for an ECU
// outside the association table, as a CAN frame on the port) before the
// host's call returns.
//
// A scenario answer is a hex frame, or up to three comma-separated fields: a
// channel event type name, the frame, a result code name. That is how a
// scenario makes the library report failures, time-outs and corrupt frames.
#include "channel/SimuChannel.h"

#include "core/BusTrace.h"
#include "core/CodeNames.h"
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
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <vector>

namespace {

// The request and response lines are formatted into buffers of this size.
const size_t kLineCapacity = 512;
// The longest frame an answer delivers: the classic ISO-TP limit.
const size_t kMaxFrameBytes = 4095;
// The short form of CAN_ChnResult ends where the frame fields begin.
const size_t kShortResultSize = offsetof(CAN_ChnResult, frameLength);

// A field of a response text: where it starts and how long it is.
struct Field {
  size_t start = 0, length = 0;
  bool empty() const { return length == 0; }
};

// Whether `name` is exactly the `length` characters at `text`; stops at the
// first difference.
bool isName(const char *name, const ACE_WCHAR_T *text, size_t length) {
  size_t i = 0;
  for (; i < length; ++i)
    if (name[i] == '\0' || static_cast<ACE_WCHAR_T>(name[i]) != text[i])
      return false;
  return name[i] == '\0';
}

// The value of the field's text in `table`, compared whole and
// case-sensitively.
bool lookUp(CodeTable table, const ACE_WString &text, Field field, ACE_UINT32 &value) {
  for (const CodeName &entry : table) {
    if (isName(entry.name, text.fast_rep() + field.start, field.length)) {
      value = entry.value;
      return true;
    }
  }
  return false;
}

// A response text cut into its type name, frame text and result code. The
// frame text is the response itself unless it has a second field, which is
// then copied out.
struct SplitResponse {
  SplitResponse() = default;
  SplitResponse(const SplitResponse &) = delete;
  SplitResponse &operator=(const SplitResponse &) = delete;

  Field typeName;
  const ACE_WString *frameText = nullptr;
  ACE_WString secondField;
  ACE_UINT8 resultCode = 0;
};

// Cuts at commas as a tokenizer does: empty fields are skipped, so runs of
// commas separate like one and commas at either end separate nothing. With
// fewer than two fields the whole text is both type name and frame text.
void splitResponse(const ACE_WString &text, SplitResponse &split) {
  Field fields[3];
  size_t found = 0;
  size_t start = 0;
  const size_t length = text.length();
  while (found < 3 && start < length) {
    size_t end = start;
    while (end < length && text[end] != L',')
      ++end;
    if (end > start)
      fields[found++] = Field{start, end - start};
    start = end + 1;
  }
  if (!fields[1].empty()) {
    split.typeName = fields[0];
    split.secondField = text.substring(fields[1].start, fields[1].length);
    split.frameText = &split.secondField;
  } else {
    split.typeName = Field{0, length};
    split.frameText = &text;
  }
  ACE_UINT32 code = 0;
  if (!fields[2].empty() && lookUp(CodeNames::resultCodes(), text, fields[2], code))
    split.resultCode = static_cast<ACE_UINT8>(code);
}

enum class ResultForm { None, Short, Frame };

ResultForm resultFormOf(ACE_UINT32 type) {
  switch (type) {
  case CHN_TYPE_CRSNDDIAGFRAME:
  case CHN_TYPE_SEND_FAILED_CRNEG:
    return ResultForm::Short;
  case CHN_TYPE_RCV_CORRUPTED_FRAME:
  case CHN_TYPE_RCV_STARTOK_NOTCOMPLIANT:
  case CHN_TYPE_RCV_SUCCESS:
  case CHN_TYPE_RCV_SUCCESS_BUT_UNEXPECTED:
    return ResultForm::Frame;
  default:
    return ResultForm::None;
  }
}

bool carriesRequestCopy(ACE_UINT32 type) {
  switch (type) {
  case CHN_TYPE_SEND_FAILED_LOSSOFCOM:
  case CHN_TYPE_SEND_FAILED_CRNEG:
  case CHN_TYPE_SEND_FAILED_TIMEOUT:
  case CHN_TYPE_SEND_FAILED_INTERNAL_DRIVER_ERROR:
  case CHN_TYPE_REQ_1_0_EMITTED:
  case CHN_TYPE_RCV_FAILED_TIMEOUT:
  case CHN_TYPE_RCV_FAILED_NO_RESPONSE:
    return true;
  default:
    return false;
  }
}

// A malloc'd copy of the host's request record and its bytes; null without
// memory.
CAN_DiagMsg *copyOfRequest(const CAN_DiagMsg &request) {
  auto *copy = static_cast<CAN_DiagMsg *>(std::calloc(1, sizeof(CAN_DiagMsg)));
  if (copy == nullptr)
    return nullptr;
  copy->header = request.header;
  copy->length = request.length;
  copy->data = static_cast<uint8_t *>(std::malloc(request.length == 0 ? 1 : request.length));
  if (copy->data == nullptr) {
    std::free(copy);
    return nullptr;
  }
  std::memcpy(copy->data, request.data, request.length);
  return copy;
}

struct FreeBytes {
  void operator()(unsigned char *bytes) const { std::free(bytes); }
};

// The request as it goes on the bus: to the ECU of a one-to-one channel on
// its transmit identifier, with its flow control on the receive identifier;
// to every ECU on the broadcast identifier.
void traceRequest(BusTrace::Batch &batch, const CAN_DiagMsg *request,
                  const ACE_WString &requestText, const std::vector<SimuECU *> &ecus,
                  bool broadcast) {
  std::unique_ptr<unsigned char, FreeBytes> converted;
  const unsigned char *bytes = nullptr;
  size_t length = 0;
  if (request != nullptr) {
    bytes = request->data;
    length = request->length;
  } else {
    converted.reset(hexToBytes(toAnsi(requestText.c_str()).get(), length));
    bytes = converted.get();
  }
  if (bytes == nullptr)
    return;
  if (broadcast) {
    batch.message(CAN_BROADCAST_ID, BusTrace::Batch::kNoReceiver, bytes, length);
    return;
  }
  if (!ecus.empty())
    batch.message(ecus.front()->idTx, ecus.front()->idRx, bytes, length);
}

} // namespace

CAN_STATUS SimuChannel::send(const CAN_DiagMsg &request) {
  if (!configured || !sessionOpen)
    return E_INVALID;
  const ACE_WString text = bytesToWideHex(request.data, request.length);
  exchange(&request, text);
  return E_SUCCESS;
}

void SimuChannel::exchange(const CAN_DiagMsg *request, const ACE_WString &requestText) {
  const bool oneToOne = channelType == CHN_ONE_TO_ONE;
  logMessage(fittedLine({oneToOne ? L"1-1 Request [" : L"Broadcast Request [", requestText, L"]"},
                        kLineCapacity));
  if (port.channelsCutOff()) {
    reportLossOfCommunication(request);
    return;
  }
  const Echo values = echoValues();
  const std::vector<SimuECU *> asked = port.copyOf(ecus);
  unsigned lastDueMs = 0;
  // Without a log reader, a report or a trace, none of this costs more
  // than these two tests.
  const bool notes = answerNotesWanted();
  // An empty start frame is no request of the host: nothing on the bus.
  const bool asksSomething = request != nullptr || requestText.length() != 0;
  std::optional<BusTrace::Batch> trace;
  if (BusTrace::enabled() && asksSomething) {
    trace.emplace();
    traceRequest(*trace, request, requestText, asked, channelType == CHN_BROADCAST);
  }
  for (SimuECU *ecu : asked) {
    // Unknown requests get a negative answer on one-to-one channels only.
    ACE_WString response;
    std::optional<AnswerOrigin> origin;
    if (notes)
      origin.emplace();
    AnswerTiming timing;
    if (!ecu->getResponse(requestText, response, oneToOne, origin ? &*origin : nullptr, timing)) {
      if (origin && asksSomething)
        noteAnswer(*ecu, requestText, *origin, false, response);
      continue;
    }
    logMessage(fittedLine({L"Response [", response, L"]"}, kLineCapacity));
    if (timing.delayed())
      logMessage(L"[" + identifierText(ecu->idRx) + L"]  Answer due in " +
                 decimalText(timing.finalDueMs()) + L" ms after " + decimalText(timing.pending) +
                 L" response-pending answers");
    lastDueMs = std::max(lastDueMs, timing.finalDueMs());
    // Built only for an answer that has response-pending answers before it.
    const ACE_WString pending =
        timing.pending != 0 ? negativeAnswerTo(requestText, kResponsePending) : ACE_WString();
    ACE_UINT8 responder = 0;
    if (!port.addressByIdRx(ecu->idRx, responder)) {
      // Outside the association table the answer travels as a CAN frame.
      SplitResponse split;
      splitResponse(response, split);
      for (unsigned i = 0; i < timing.pending; ++i)
        port.enqueueResponseAfter(ecu->idRx, pending, timing.pendingDueMs(i),
                                  trace ? &*trace : nullptr);
      port.enqueueResponseAfter(ecu->idRx, *split.frameText, timing.finalDueMs(),
                                trace ? &*trace : nullptr);
    } else {
      for (unsigned i = 0; i < timing.pending; ++i)
        queueAnswer(request, pending, responder, values, *ecu, requestText,
                    trace ? &*trace : nullptr, timing.pendingDueMs(i));
      queueAnswer(request, response, responder, values, *ecu, requestText,
                  trace ? &*trace : nullptr, timing.finalDueMs());
    }
    if (origin)
      noteAnswer(*ecu, requestText, *origin, true, response);
  }
  if (trace)
    trace->write();
  if (channelType == CHN_BROADCAST) {
    CAN_EventChn end = {};
    end.type = CHN_TYPE_END_OF_RCV;
    // The closing event follows the last delayed answer.
    deliverAt(end, lastDueMs);
  }
}

// A dead bus: the request cannot be sent, which the host learns as a send
// failure carrying its request; no ECU is asked.
void SimuChannel::reportLossOfCommunication(const CAN_DiagMsg *request) {
  logMessage(L"Loss of communication: the box is unplugged, the request is not sent");
  CAN_EventChn event = {};
  event.type = CHN_TYPE_SEND_FAILED_LOSSOFCOM;
  if (request != nullptr) {
    event.request = copyOfRequest(*request);
    if (event.request == nullptr)
      return;
  }
  if (events.push(event) != 0)
    releasePayload(event);
}

// A channel event held until it is due; released unread when the channel
// or the port goes first.
struct SimuChannel::DelayedEvent : AnswerScheduler::Delayed {
  DelayedEvent(SimuChannel &channel, const CAN_EventChn &event)
      : AnswerScheduler::Delayed(&channel), channel(channel), event(event) {}
  ~DelayedEvent() override {
    if (!delivered)
      releasePayload(event);
  }
  void deliver() override {
    delivered = true;
    // The answer is stamped when it arrives, not when it was built.
    if (event.data != nullptr)
      static_cast<CAN_ChnResult *>(event.data)->timestamp =
          static_cast<ACE_UINT32>(ACE_OS::gethrtime() / 1000u);
    if (channel.events.push(event) != 0)
      releasePayload(event);
  }
  SimuChannel &channel;
  CAN_EventChn event;
  bool delivered = false;
};

void SimuChannel::deliverAt(CAN_EventChn &event, unsigned dueMs) {
  if (dueMs == 0) {
    // A record the queue refuses is lost, with its payload released.
    if (events.push(event) != 0)
      releasePayload(event);
    return;
  }
  const auto due = AnswerScheduler::Clock::now() + std::chrono::milliseconds(dueMs);
  std::unique_ptr<AnswerScheduler::Delayed> held(new (std::nothrow) DelayedEvent(*this, event));
  if (!held)
    releasePayload(event);
  // From here the held record owns the payload, delivered or not.
  event = CAN_EventChn();
  if (!held || !port.scheduleAnswer(due, std::move(held)))
    logMessage(L"A delayed answer could not be held: lost");
}

void SimuChannel::queueAnswer(const CAN_DiagMsg *request, const ACE_WString &response,
                              ACE_UINT8 responder, const Echo &values, const SimuECU &ecu,
                              const ACE_WString &requestText, BusTrace::Batch *trace,
                              unsigned dueMs) {
  SplitResponse split;
  splitResponse(response, split);
  CAN_EventChn event = {};
  event.type = CHN_TYPE_RCV_SUCCESS;
  lookUp(CodeNames::channelEventTypes(), response, split.typeName, event.type);
  const ResultForm form = resultFormOf(event.type);
  // The payload is released if anything fails before the queue takes it.
  try {
    if (request != nullptr && carriesRequestCopy(event.type)) {
      event.request = copyOfRequest(*request);
      if (event.request == nullptr)
        return;
    }
    if (form != ResultForm::None) {
      auto *result = static_cast<CAN_ChnResult *>(
          std::calloc(1, form == ResultForm::Frame ? sizeof(CAN_ChnResult) : kShortResultSize));
      event.data = result;
      if (result == nullptr) {
        releasePayload(event);
        return;
      }
      result->resultCode = split.resultCode;
      result->timestamp = static_cast<ACE_UINT32>(ACE_OS::gethrtime() / 1000u);
      result->echoByte2 = values.echoByte2;
      result->echoByte1 = values.echoByte1;
      result->channelType = channelType;
      result->echoWord = values.echoWord;
      result->responderAddress = responder;
    }
    if (form == ResultForm::Frame) {
      auto *result = static_cast<CAN_ChnResult *>(event.data);
      size_t count = 0;
      result->frameData = hexToBytes(toAnsi(split.frameText->c_str()).get(), count);
      if (result->frameData == nullptr) {
        releasePayload(event);
        return;
      }
      if (count > kMaxFrameBytes) {
        logMessage(L"[" + identifierText(ecu.idRx) + L"]  Answer to " +
                   fittedLine(requestText, kLineCapacity) + L" holds " + decimalText(count) +
                   L" bytes: cut to 4095");
        count = kMaxFrameBytes;
      }
      result->frameLength = static_cast<ACE_UINT16>(count);
      logMessage(fittedLine({L"Frame [", *split.frameText, L"]"}, kLineCapacity));
      // The frame the host receives is what the ECU sent, segmented, with
      // the tester's flow control on the ECU's transmit identifier.
      if (trace != nullptr)
        trace->message(ecu.idRx, ecu.idTx, result->frameData, count);
    }
    deliverAt(event, dueMs);
  } catch (...) {
    releasePayload(event);
    throw;
  }
}
