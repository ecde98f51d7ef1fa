// The hex conversions: bytes survive a round trip, and any text converts
// without reading or writing outside its buffers.
#include "core/HexText.h"

#include <cstdlib>
#include <cstring>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const ACE_CString text = bytesToHex(data, size);
  if (text.length() != 2 * size)
    std::abort();
  size_t count = 0;
  unsigned char *bytes = hexToBytes(text.c_str(), count);
  if (bytes == nullptr || count != size || (size != 0 && std::memcmp(bytes, data, size) != 0))
    std::abort();
  std::free(bytes);
  const std::string raw(reinterpret_cast<const char *>(data), size);
  bytes = hexToBytes(raw.c_str(), count);
  if (bytes == nullptr || count != std::strlen(raw.c_str()) / 2)
    std::abort();
  std::free(bytes);
  return 0;
}
