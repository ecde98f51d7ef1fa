// Boot and application firmware versions, dates and checksums: what the
// configuration file gives the device and what a firmware image carries.
#pragma once

#include <ace/SString.h>

// Narrow text in the ANSI code page, each meant to be at most 10 characters.
struct FirmwareVersions {
  ACE_CString BootVersion;
  ACE_CString BootDate;
  ACE_CString BootCheckSum;
  ACE_CString AppVersion;
  ACE_CString AppDate;
  ACE_CString AppCheckSum;
};
