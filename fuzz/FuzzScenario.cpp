// A scenario file read and looked up: fixed requests, and requests cut from
// the input itself so that look-ups meet the file's own patterns.
#include "FuzzSupport.h"
#include "ecu/Scenario.h"
#include "ecu/SimuECU.h"
#include "platform/CodePage.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string path = fuzz::writeScratch("scenario.xml", data, size);
  SimuECU ecu(0x7E8, 0x7E0, toWideString(path.c_str()), L"31");
  std::string text(reinterpret_cast<const char *>(data), size);
  const char *fixed[] = {"", "1", "10", "22F190", "3E00", "OPENDIALOG", "7F"};
  for (const char *request : fixed) {
    ACE_WString response;
    ecu.getResponse(toWideString(request), response, true);
  }
  // The 8 characters after a '>' look like the start of a pattern: the
  // first 32 such windows are asked too.
  size_t windows = 0;
  for (size_t at = text.find('>'); at != std::string::npos && at + 1 < text.size() && windows < 32;
       at = text.find('>', at + 1), ++windows) {
    ACE_WString response;
    ecu.getResponse(toWideString(text.substr(at + 1, 8).c_str()), response, false);
  }
  return 0;
}
