// A firmware image file read as a boot image and as an application image.
#include "FuzzSupport.h"
#include "device/FirmwareDownload.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string path = fuzz::writeScratch("image.bin", data, size);
  FirmwareVersions versions;
  readFirmwareFile(path.c_str(), nullptr, versions);
  readFirmwareFile(nullptr, path.c_str(), versions);
  readFirmwareFile(path.c_str(), path.c_str(), versions);
  return 0;
}
