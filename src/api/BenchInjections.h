// The configuration's INJECT elements, found anywhere in the document:
//
//   <INJECT export="CAN_ChnSendDiag" status="E_INVALID" detail="0"/>
//
// Each read of the configuration applies every one, once, in document order,
// exactly as setNextCANStatus(export, status, detail) would: the next call of
// the export answers the status (an earlier arming still waiting is kept),
// and for the three receive exports `status` is the type of an event queued
// at that level. Status and detail are numbers (decimal or 0x hexadecimal)
// or status names (E_INVALID); an event type is a number or a type name of
// its level (DRV_TYPE_, DEV_TYPE_, PRT_TYPE_). A missing detail is 0. An
// element with no or an unknown export name, no or an unknown status, or an
// unreadable detail is skipped; every element gets a log line.
#pragma once

class TDomData;

namespace BenchInjections {
void apply(const TDomData &document);
} // namespace BenchInjections
