#include "port/SimuPort.h"

#include "platform/TDomData.h"

void SimuPort::readConfiguration(const TDomData &document) { static_cast<void>(document); }
