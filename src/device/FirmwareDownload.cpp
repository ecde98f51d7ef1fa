#include "device/FirmwareDownload.h"

#include "core/HexText.h"
#include "core/LogMessage.h"
#include "device/SimuDevice.h"
#include "platform/AppendBuffer.h"
#include "platform/CodePage.h"
#include "platform/FileSystem.h"

#include <ace/Guard_T.h>
#include <ace/OS_NS_stdio.h>
#include <ace/OS_NS_unistd.h>
#include <ace/Time_Value.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {

// The box reports progress in steps of 2 %, one every 50 ms, and a failing
// upload gives up once it reaches 80 %.
constexpr ACE_UINT32 kProgressStep = 2;
constexpr ACE_UINT32 kProgressEnd = 100;
constexpr ACE_UINT32 kFailurePoint = 80;
const ACE_Time_Value kProgressInterval(0, 50000);
constexpr ACE_UINT8 kUploadFailureCode = 0x82;

// Where one kind of image keeps its identifier and version fields; the
// fields follow the identifier at fixed distances.
struct ImageLayout {
  long identifierOffset;
  const char *identifier;
  ACE_CString FirmwareVersions::*checkSum;
  ACE_CString FirmwareVersions::*version;
  ACE_CString FirmwareVersions::*date;
};

const ImageLayout kBootImage = {754, "0268", &FirmwareVersions::BootCheckSum,
                                &FirmwareVersions::BootVersion, &FirmwareVersions::BootDate};
const ImageLayout kApplicationImage = {46, "0622", &FirmwareVersions::AppCheckSum,
                                       &FirmwareVersions::AppVersion, &FirmwareVersions::AppDate};

bool readImage(const char *path, const ImageLayout &layout, FirmwareVersions &out) {
  FILE *file = ansiOpenFile(path, "rb");
  if (file == nullptr)
    return false;
  const long at = layout.identifierOffset;
  ACE_CString identifier;
  const bool read = readField(file, at, 4, identifier, false) && identifier == layout.identifier &&
                    readField(file, at + 4, 4, out.*layout.checkSum, false) &&
                    readField(file, at + 8, 10, out.*layout.version, true) &&
                    readField(file, at + 18, 18, out.*layout.date, true);
  const bool closed = ACE_OS::fclose(file) == 0;
  return read && closed;
}

ACE_WString wide(const char *text) { return toWideString(text); }

// Takes the three texts of one kind of image over from `image` into
// `versions`, all of them or none: the log line is made first, and the texts
// are swapped in, which cannot fail.
CAN_STATUS takeOver(FirmwareVersions &image, const ImageLayout &layout, const wchar_t *kind,
                    const char *path, FirmwareVersions &versions,
                    ACE_Recursive_Thread_Mutex &lock) {
  const ACE_WString line = ACE_WString(L"Firmware download: ") + kind + L" image <" + wide(path) +
                           L">, version <" + wide((image.*layout.version).c_str()) + L">";
  ACE_GUARD_RETURN(ACE_Recursive_Thread_Mutex, guard, lock, E_INVALID);
  (versions.*layout.version).swap(image.*layout.version);
  (versions.*layout.date).swap(image.*layout.date);
  (versions.*layout.checkSum).swap(image.*layout.checkSum);
  logMessage(line);
  return E_SUCCESS;
}

struct FreeMemory {
  void operator()(void *memory) const { std::free(memory); }
};

} // namespace

bool readField(FILE *file, long offset, size_t length, ACE_CString &text, bool hexadecimal) {
  if (ACE_OS::fseek(file, offset, SEEK_SET) != 0)
    return false;
  // One more zero byte than the field, so the raw bytes always end as text.
  std::string raw(length + 1, '\0');
  if (ACE_OS::fread(&raw[0], 1, length, file) != length)
    return false;
  if (!hexadecimal) {
    text = ACE_CString(raw.c_str());
    return true;
  }
  size_t count = 0;
  const std::unique_ptr<unsigned char, FreeMemory> bytes(hexToBytes(raw.c_str(), count));
  if (!bytes)
    return false;
  const auto *decoded = reinterpret_cast<const char *>(bytes.get());
  const void *zero = std::memchr(decoded, 0, count);
  const size_t kept =
      zero == nullptr ? count : static_cast<size_t>(static_cast<const char *>(zero) - decoded);
  text = ACE_CString(decoded, kept);
  return true;
}

bool readFirmwareFile(const char *bootPath, const char *appPath, FirmwareVersions &out) {
  out = FirmwareVersions();
  if (bootPath != nullptr && !readImage(bootPath, kBootImage, out))
    return false;
  if (appPath != nullptr && !readImage(appPath, kApplicationImage, out))
    return false;
  return true;
}

CAN_STATUS SimuDevice::downloadFirmware(const char *path, DownloadResult *result) {
  if (!connected)
    return E_DISCONNECTED;
  if (mode != 0)
    return E_INVALID;
  result->errorCode = 0;
  result->written = 1;
  // The progress phase: the host's reader sees each step as it is queued.
  for (ACE_UINT32 progress = kProgressStep; progress <= kProgressEnd; progress += kProgressStep) {
    if (!queueProgress(progress))
      return E_INVALID;
    AppendBuffer::callEnds();
    ACE_OS::sleep(kProgressInterval);
    if (simulateUploadFailure && progress >= kFailurePoint)
      break;
  }
  if (simulateUploadFailure) {
    result->errorCode = kUploadFailureCode;
    logMessage(L"Firmware download failed at 80 %, as SimulateUploadFailure asks");
    return E_BOARD_ERROR_1;
  }
  // An application image wins over a boot image; each replaces only its own
  // three texts.
  FirmwareVersions image;
  if (readFirmwareFile(nullptr, path, image))
    return takeOver(image, kApplicationImage, L"application", path, versions, valuesLock);
  if (readFirmwareFile(path, nullptr, image))
    return takeOver(image, kBootImage, L"boot", path, versions, valuesLock);
  if (!ansiFileExists(path))
    logMessage(ACE_WString(L"The file <") + wide(path) + ACE_WString(L"> is unreachable"));
  else
    logMessage(ACE_WString(L"The firmware file <") + wide(path) +
               ACE_WString(L"> is neither an application nor a boot image"));
  return E_BAD_FILE;
}
