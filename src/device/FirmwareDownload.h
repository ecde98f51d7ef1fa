// The firmware download of CAN_DevBoardTeleFirm: the reader of firmware
// image files. SimuDevice::downloadFirmware, which plays the download out in
// time and takes over an image's versions, is defined beside it.
//
// An image is recognised by a four-character identifier at a fixed offset;
// the reader looks at fixed byte positions only:
//   application image: "0622" at 46, checksum at 50 (4 characters),
//                      version at 54 (10 hex digits), date at 64 (18 hex digits)
//   boot image:        "0268" at 754, checksum at 758, version at 762, date at 772
#pragma once

#include "device/FirmwareVersions.h"

#include <cstddef>
#include <cstdio>

// Empties the six texts of `out`, then reads the boot fields of the image at
// `bootPath` and the application fields of the one at `appPath` (a null
// path is skipped). False as soon as a given file cannot be opened, lacks
// its identifier or is too short for its fields; `out` may then hold part of
// what was read. Files are read in binary mode, paths are ANSI text.
bool readFirmwareFile(const char *bootPath, const char *appPath, FirmwareVersions &out);

// Reads `length` bytes at `offset` of an open file into `text`: plain, the
// bytes as characters; hexadecimal, the bytes decoded as hex text into
// length / 2 bytes. Either way the text stops at the first zero byte. False
// when the file cannot be positioned or holds fewer bytes; `text` is then
// unchanged.
bool readField(FILE *file, long offset, size_t length, ACE_CString &text, bool hexadecimal);
