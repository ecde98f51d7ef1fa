// Compile-time checks that the records crossing the interface have exactly
// the 32-bit host's layout. On 64-bit targets pointers widen and the layout
// follows from natural alignment.
#include "cansimu/cansimu.h"

#include <cstddef>

#if UINTPTR_MAX == 0xFFFFFFFFu
#define CANSIMU_AT(record, field, offset) static_assert(offsetof(record, field) == offset, #record "." #field)

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
#undef CANSIMU_AT
#endif

// Sizes that hold on every target.
static_assert(sizeof(CAN_EnumDev) == 276, "CAN_EnumDev has no pointer");
static_assert(offsetof(CAN_EnumDev, disconnected) == 272, "CAN_EnumDev.disconnected");
