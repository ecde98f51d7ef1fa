// The checks of a stateful scenario: the values of its STATE declarations
// and of its entries' state and timing attributes, read by the library's
// own readers, and the entries their state can never admit.
#pragma once

#include "files/FileChecks.h"
#include "files/XmlSource.h"

void checkScenarioState(const XmlSource &file, FileReport &report);
