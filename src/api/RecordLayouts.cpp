// Compile-time checks that the records crossing the interface have exactly
// the 32-bit host's layout. On 64-bit targets pointers widen and the layout
// follows from natural alignment.
#include "cansimu/cansimu.h"

#include <cstddef>

#define CANSIMU_AT(record, field, offset)                                                          \
  static_assert(offsetof(record, field) == (offset), #record "." #field)

#if UINTPTR_MAX == 0xFFFFFFFFu
static_assert(sizeof(CAN_EventDrv) == 24, "CAN_EventDrv");
CANSIMU_AT(CAN_EventDrv, type, 0);
CANSIMU_AT(CAN_EventDrv, detail, 4);
CANSIMU_AT(CAN_EventDrv, data, 16);

static_assert(sizeof(CAN_EventDev) == 24, "CAN_EventDev");
CANSIMU_AT(CAN_EventDev, type, 0);
CANSIMU_AT(CAN_EventDev, data, 16);

static_assert(sizeof(CAN_EnumList) == 8, "CAN_EnumList");
CANSIMU_AT(CAN_EnumList, count, 0);
CANSIMU_AT(CAN_EnumList, records, 4);

static_assert(sizeof(CAN_EnumDev) == 276, "CAN_EnumDev");
CANSIMU_AT(CAN_EnumDev, name, 0);
CANSIMU_AT(CAN_EnumDev, fixedOne, 264);
CANSIMU_AT(CAN_EnumDev, reserved, 268);
CANSIMU_AT(CAN_EnumDev, disconnected, 272);

static_assert(sizeof(CAN_ConfigDev) == 76, "CAN_ConfigDev");
CANSIMU_AT(CAN_ConfigDev, count, 68);
CANSIMU_AT(CAN_ConfigDev, ports, 72);
static_assert(sizeof(CAN_EventPort) == 24, "CAN_EventPort");
CANSIMU_AT(CAN_EventPort, type, 0);
CANSIMU_AT(CAN_EventPort, data, 16);
static_assert(sizeof(CAN_EventChn) == 24, "CAN_EventChn");
CANSIMU_AT(CAN_EventChn, type, 0);
CANSIMU_AT(CAN_EventChn, data, 16);
CANSIMU_AT(CAN_EventChn, request, 20);

static_assert(sizeof(CAN_MesPhysPort) == 24, "CAN_MesPhysPort");
CANSIMU_AT(CAN_MesPhysPort, resultByte, 0);
CANSIMU_AT(CAN_MesPhysPort, batteryVoltage, 4);
CANSIMU_AT(CAN_MesPhysPort, canHmin, 8);
CANSIMU_AT(CAN_MesPhysPort, canHmax, 12);
CANSIMU_AT(CAN_MesPhysPort, canLmin, 16);
CANSIMU_AT(CAN_MesPhysPort, canLmax, 20);

static_assert(sizeof(CAN_ParamPort) == 20, "CAN_ParamPort");
CANSIMU_AT(CAN_ParamPort, resultByte, 0);
CANSIMU_AT(CAN_ParamPort, param1, 4);
CANSIMU_AT(CAN_ParamPort, param2, 5);
CANSIMU_AT(CAN_ParamPort, param3, 6);
CANSIMU_AT(CAN_ParamPort, param4, 8);
CANSIMU_AT(CAN_ParamPort, param5, 12);
CANSIMU_AT(CAN_ParamPort, param6, 16);

static_assert(sizeof(CAN_StatePort) == 20, "CAN_StatePort");
CANSIMU_AT(CAN_StatePort, resultByte, 0);
CANSIMU_AT(CAN_StatePort, word4, 4);
CANSIMU_AT(CAN_StatePort, word8, 8);
CANSIMU_AT(CAN_StatePort, word12, 12);
CANSIMU_AT(CAN_StatePort, bytes16, 16);

CANSIMU_AT(CAN_BaudSearchPort, candidateCount, 4);
CANSIMU_AT(CAN_BaudSearchPort, candidates, 8);
static_assert(sizeof(CAN_BaudSetting) == 12, "CAN_BaudSetting");
static_assert(sizeof(CAN_BaudFoundPort) == 16, "CAN_BaudFoundPort");
CANSIMU_AT(CAN_BaudFoundPort, resultByte, 0);
CANSIMU_AT(CAN_BaudFoundPort, found, 4);

static_assert(sizeof(CAN_AssocTable) == 8, "CAN_AssocTable");
CANSIMU_AT(CAN_AssocTable, count, 0);
CANSIMU_AT(CAN_AssocTable, entries, 4);
static_assert(sizeof(CAN_AssocEntry) == 28, "CAN_AssocEntry");
CANSIMU_AT(CAN_AssocEntry, ecuAddress, 5);
CANSIMU_AT(CAN_AssocEntry, idTx, 16);
CANSIMU_AT(CAN_AssocEntry, idRx, 20);
static_assert(sizeof(AssocResult) == 2, "AssocResult");
CANSIMU_AT(AssocResult, errorCode, 0);
CANSIMU_AT(AssocResult, zero, 1);

static_assert(sizeof(CAN_FramePort) == 28, "CAN_FramePort");
CANSIMU_AT(CAN_FramePort, canId, 0);
CANSIMU_AT(CAN_FramePort, length, 12);
CANSIMU_AT(CAN_FramePort, bytes, 16);
CANSIMU_AT(CAN_FramePort, timestamp, 24);

static_assert(sizeof(CAN_ChnResult) == 32, "CAN_ChnResult, frame form");
CANSIMU_AT(CAN_ChnResult, resultCode, 0);
CANSIMU_AT(CAN_ChnResult, echoWord, 4);
CANSIMU_AT(CAN_ChnResult, echoByte2, 8);
CANSIMU_AT(CAN_ChnResult, responderAddress, 9);
CANSIMU_AT(CAN_ChnResult, channelType, 12);
CANSIMU_AT(CAN_ChnResult, echoByte1, 16);
CANSIMU_AT(CAN_ChnResult, timestamp, 20);
CANSIMU_AT(CAN_ChnResult, frameLength, 24); // the short form ends here
CANSIMU_AT(CAN_ChnResult, frameData, 28);

static_assert(sizeof(CAN_DiagMsg) == 12, "CAN_DiagMsg");
CANSIMU_AT(CAN_DiagMsg, header, 0);
CANSIMU_AT(CAN_DiagMsg, length, 4);
CANSIMU_AT(CAN_DiagMsg, data, 8);

static_assert(sizeof(CAN_ChnConfigRec) == 76, "CAN_ChnConfigRec");
CANSIMU_AT(CAN_ChnConfigRec, ecuAddress, 0);
CANSIMU_AT(CAN_ChnConfigRec, echoByte1, 1);
CANSIMU_AT(CAN_ChnConfigRec, echoByte2, 2);
CANSIMU_AT(CAN_ChnConfigRec, startFrameLength, 12);
CANSIMU_AT(CAN_ChnConfigRec, startFrame, 16);
CANSIMU_AT(CAN_ChnConfigRec, echoWord, 72);

static_assert(sizeof(CAN_ChnInfo) == 20, "CAN_ChnInfo");
CANSIMU_AT(CAN_ChnInfo, echoWord, 0);
CANSIMU_AT(CAN_ChnInfo, echoByte2, 4);
CANSIMU_AT(CAN_ChnInfo, ecuAddress, 5);
CANSIMU_AT(CAN_ChnInfo, channelType, 8);
CANSIMU_AT(CAN_ChnInfo, echoByte1, 12);
CANSIMU_AT(CAN_ChnInfo, sessionOpen, 16);
#endif

// Records without pointers have the same layout on every target.
static_assert(sizeof(CAN_EnumDev) == 276, "CAN_EnumDev has no pointer");
CANSIMU_AT(CAN_EnumDev, disconnected, 272);

static_assert(sizeof(CAN_EnumPort) == 3, "CAN_EnumPort");
CANSIMU_AT(CAN_EnumPort, resultByte, 0);
CANSIMU_AT(CAN_EnumPort, portNumber, 1);
CANSIMU_AT(CAN_EnumPort, reserved, 2);

static_assert(sizeof(CAN_VersionDev) == 67, "CAN_VersionDev");
CANSIMU_AT(CAN_VersionDev, resultByte, 0);
CANSIMU_AT(CAN_VersionDev, bootVersion, 1);
CANSIMU_AT(CAN_VersionDev, bootDate, 12);
CANSIMU_AT(CAN_VersionDev, bootCheckSum, 23);
CANSIMU_AT(CAN_VersionDev, appVersion, 34);
CANSIMU_AT(CAN_VersionDev, appDate, 45);
CANSIMU_AT(CAN_VersionDev, appCheckSum, 56);

// CAN_ConfigDev starts with exactly the fields of CAN_VersionDev.
CANSIMU_AT(CAN_ConfigDev, resultByte, 0);
CANSIMU_AT(CAN_ConfigDev, bootVersion, 1);
CANSIMU_AT(CAN_ConfigDev, bootDate, 12);
CANSIMU_AT(CAN_ConfigDev, bootCheckSum, 23);
CANSIMU_AT(CAN_ConfigDev, appVersion, 34);
CANSIMU_AT(CAN_ConfigDev, appDate, 45);
CANSIMU_AT(CAN_ConfigDev, appCheckSum, 56);
CANSIMU_AT(CAN_ConfigDev, padding, 67);
CANSIMU_AT(CAN_ConfigDev, count, 68);

static_assert(sizeof(CAN_TensionDev) == 16, "CAN_TensionDev");
CANSIMU_AT(CAN_TensionDev, resultByte, 0);
CANSIMU_AT(CAN_TensionDev, batteryVoltage, 4);
CANSIMU_AT(CAN_TensionDev, apcKelmora, 8);
CANSIMU_AT(CAN_TensionDev, apcDravik, 12);

static_assert(sizeof(CAN_ModeDev) == 8, "CAN_ModeDev");
CANSIMU_AT(CAN_ModeDev, resultByte, 0);
CANSIMU_AT(CAN_ModeDev, mode, 4);

static_assert(sizeof(CAN_TestDev) == 12, "CAN_TestDev");
CANSIMU_AT(CAN_TestDev, resultByte, 0);
CANSIMU_AT(CAN_TestDev, firstValue, 4);
CANSIMU_AT(CAN_TestDev, secondValue, 8);

static_assert(sizeof(DownloadResult) == 2, "DownloadResult");
CANSIMU_AT(DownloadResult, errorCode, 0);
CANSIMU_AT(DownloadResult, written, 1);
#undef CANSIMU_AT
