// The channel-level exports: each runs the export frame, whose null checks
// answer 4 in this family, then hands over to the channel its handle names
// (creation and enumeration go through the port).
#include "api/ExportCall.h"
#include "api/Handles.h"
#include "cansimu/cansimu.h"
#include "channel/SimuChannel.h"
#include "core/LogMessage.h"
#include "port/SimuPort.h"

extern "C" {

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_ChnEnumerate(CAN_PRT_HANDLE port, CAN_EnumList *channels) {
  return ExportCall("CAN_ChnEnumerate", kChannelFamily)
      .require(port)
      .require(channels)
      .inject()
      .run([&] { return portOf(port)->enumerateChannels(*channels); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_ChnCreate(CAN_PRT_HANDLE port, uint32_t type, uint32_t,
                                                  CAN_CHN_HANDLE *channel) {
  return ExportCall("CAN_ChnCreate", kChannelFamily)
      .require(port)
      .require(channel)
      .inject()
      .run([&] { return portOf(port)->createChannel(type, channel); });
}

// The channel is freed and destroyed before the injection table is asked: an
// armed status replaces the result, but the channel is gone all the same.
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_ChnFree(CAN_CHN_HANDLE channel) {
  return ExportCall("CAN_ChnFree", kChannelFamily).require(channel).runThenInject([&] {
    const CAN_STATUS status = channelOf(channel)->free();
    if (status == E_SUCCESS)
      delete channelOf(channel);
    return status;
  });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_ChnConfig(CAN_CHN_HANDLE channel,
                                                  const CAN_ChnConfigRec *config) {
  return ExportCall("CAN_ChnConfig", kChannelFamily)
      .require(channel)
      .require(config)
      .inject()
      .run([&] { return channelOf(channel)->configure(*config); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_ChnOpenSession(CAN_CHN_HANDLE channel) {
  return ExportCall("CAN_ChnOpenSession", kChannelFamily).require(channel).inject().run([&] {
    return channelOf(channel)->openSession();
  });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_ChnCloseSession(CAN_CHN_HANDLE channel) {
  return ExportCall("CAN_ChnCloseSession", kChannelFamily).require(channel).inject().run([&] {
    return channelOf(channel)->closeSession();
  });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_ChnSendDiag(CAN_CHN_HANDLE channel,
                                                    const CAN_DiagMsg *request) {
  return ExportCall("CAN_ChnSendDiag", kChannelFamily)
      .require(channel)
      .require(request)
      .check(request == nullptr || request->data != nullptr, E_INVALID)
      .inject()
      .run([&] {
        logMessage(L"Call to CAN_ChnSendDiag()");
        return channelOf(channel)->send(*request);
      });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_ChnRxMsg(CAN_CHN_HANDLE channel, CAN_EventChn **event,
                                                 uint32_t *pending, uint32_t timeoutMs) {
  return ExportCall("CAN_ChnRxMsg", kChannelFamily)
      .require(channel)
      .require(event)
      .require(pending)
      .check(timeoutMs != 0, E_INVALID)
      .run([&] { return channelOf(channel)->rxMsg(event, pending, timeoutMs); });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_ChnFreeRxMsg(CAN_EventChn *event) {
  return ExportCall("CAN_ChnFreeRxMsg", kChannelFamily).run([&] {
    SimuChannel::freeRxMsg(event);
    return E_SUCCESS;
  });
}

CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_ChnEndFifo(CAN_CHN_HANDLE channel) {
  return ExportCall("CAN_ChnEndFifo", kChannelFamily).require(channel).run([&] {
    return channelOf(channel)->endFifo();
  });
}

} // extern "C"
