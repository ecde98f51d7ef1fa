#include "library/AceRuntime.h"

#include <ace/Init_ACE.h>

AceRuntime::AceRuntime() { ACE::init(); }

AceRuntime::~AceRuntime() { ACE::fini(); }
