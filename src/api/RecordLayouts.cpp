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
