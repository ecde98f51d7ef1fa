// What the library tells about each ECU answer beyond the answer itself: a
// log line naming the scenario entry that answered (file and line, pattern,
// which response of the rotation) or why there was none, and the counts of
// the session report. Nothing is built when nobody reads the log and no
// report is kept.
#pragma once

#include "core/SessionReport.h"
#include "ecu/SimuECU.h"

#include <ace/SString.h>

// Whether answers are worth explaining right now.
bool answerNotesWanted();

// One ECU's answer to `request` (hex text): `origin` from getResponse,
// `answered` its result and `response` the text it set.
void noteAnswer(SimuECU &ecu, const ACE_WString &request, const AnswerOrigin &origin, bool answered,
                const ACE_WString &response);

// A one-to-one session the ECU refused when it opened: its dialog is closed.
void noteSessionRefused(SimuECU &ecu, const AnswerOrigin &origin);

// Hands the ECU's scenario entries to the report when its file was read
// since the last time.
void reportScenarioEntries(SimuECU &ecu);
