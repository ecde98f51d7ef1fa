#include "names/DiagnosticNames.h"

namespace {

enum class Kind { Service, NegativeResponse };

struct DiagnosticName {
  Kind kind;
  uint8_t value;
  const char *name;
};

// ISO 14229-1 (UDS) service identifiers and negative response codes.
const DiagnosticName kNames[] = {
    {Kind::Service, 0x10, "DiagnosticSessionControl"},
    {Kind::Service, 0x11, "ECUReset"},
    {Kind::Service, 0x14, "ClearDiagnosticInformation"},
    {Kind::Service, 0x19, "ReadDTCInformation"},
    {Kind::Service, 0x22, "ReadDataByIdentifier"},
    {Kind::Service, 0x23, "ReadMemoryByAddress"},
    {Kind::Service, 0x24, "ReadScalingDataByIdentifier"},
    {Kind::Service, 0x27, "SecurityAccess"},
    {Kind::Service, 0x28, "CommunicationControl"},
    {Kind::Service, 0x29, "Authentication"},
    {Kind::Service, 0x2A, "ReadDataByPeriodicIdentifier"},
    {Kind::Service, 0x2C, "DynamicallyDefineDataIdentifier"},
    {Kind::Service, 0x2E, "WriteDataByIdentifier"},
    {Kind::Service, 0x2F, "InputOutputControlByIdentifier"},
    {Kind::Service, 0x31, "RoutineControl"},
    {Kind::Service, 0x34, "RequestDownload"},
    {Kind::Service, 0x35, "RequestUpload"},
    {Kind::Service, 0x36, "TransferData"},
    {Kind::Service, 0x37, "RequestTransferExit"},
    {Kind::Service, 0x38, "RequestFileTransfer"},
    {Kind::Service, 0x3D, "WriteMemoryByAddress"},
    {Kind::Service, 0x3E, "TesterPresent"},
    {Kind::Service, 0x83, "AccessTimingParameter"},
    {Kind::Service, 0x84, "SecuredDataTransmission"},
    {Kind::Service, 0x85, "ControlDTCSetting"},
    {Kind::Service, 0x86, "ResponseOnEvent"},
    {Kind::Service, 0x87, "LinkControl"},
    {Kind::NegativeResponse, 0x10, "generalReject"},
    {Kind::NegativeResponse, 0x11, "serviceNotSupported"},
    {Kind::NegativeResponse, 0x12, "subFunctionNotSupported"},
    {Kind::NegativeResponse, 0x13, "incorrectMessageLengthOrInvalidFormat"},
    {Kind::NegativeResponse, 0x14, "responseTooLong"},
    {Kind::NegativeResponse, 0x21, "busyRepeatRequest"},
    {Kind::NegativeResponse, 0x22, "conditionsNotCorrect"},
    {Kind::NegativeResponse, 0x24, "requestSequenceError"},
    {Kind::NegativeResponse, 0x25, "noResponseFromSubnetComponent"},
    {Kind::NegativeResponse, 0x26, "failurePreventsExecutionOfRequestedAction"},
    {Kind::NegativeResponse, 0x31, "requestOutOfRange"},
    {Kind::NegativeResponse, 0x33, "securityAccessDenied"},
    {Kind::NegativeResponse, 0x34, "authenticationRequired"},
    {Kind::NegativeResponse, 0x35, "invalidKey"},
    {Kind::NegativeResponse, 0x36, "exceedNumberOfAttempts"},
    {Kind::NegativeResponse, 0x37, "requiredTimeDelayNotExpired"},
    {Kind::NegativeResponse, 0x70, "uploadDownloadNotAccepted"},
    {Kind::NegativeResponse, 0x71, "transferDataSuspended"},
    {Kind::NegativeResponse, 0x72, "generalProgrammingFailure"},
    {Kind::NegativeResponse, 0x73, "wrongBlockSequenceCounter"},
    {Kind::NegativeResponse, 0x78, "requestCorrectlyReceivedResponsePending"},
    {Kind::NegativeResponse, 0x7E, "subFunctionNotSupportedInActiveSession"},
    {Kind::NegativeResponse, 0x7F, "serviceNotSupportedInActiveSession"},
    {Kind::NegativeResponse, 0x81, "rpmTooHigh"},
    {Kind::NegativeResponse, 0x82, "rpmTooLow"},
    {Kind::NegativeResponse, 0x83, "engineIsRunning"},
    {Kind::NegativeResponse, 0x84, "engineIsNotRunning"},
    {Kind::NegativeResponse, 0x85, "engineRunTimeTooLow"},
    {Kind::NegativeResponse, 0x86, "temperatureTooHigh"},
    {Kind::NegativeResponse, 0x87, "temperatureTooLow"},
    {Kind::NegativeResponse, 0x88, "vehicleSpeedTooHigh"},
    {Kind::NegativeResponse, 0x89, "vehicleSpeedTooLow"},
    {Kind::NegativeResponse, 0x8A, "throttlePedalTooHigh"},
    {Kind::NegativeResponse, 0x8B, "throttlePedalTooLow"},
    {Kind::NegativeResponse, 0x8C, "transmissionRangeNotInNeutral"},
    {Kind::NegativeResponse, 0x8D, "transmissionRangeNotInGear"},
    {Kind::NegativeResponse, 0x8F, "brakeSwitchesNotClosed"},
    {Kind::NegativeResponse, 0x90, "shifterLeverNotInPark"},
    {Kind::NegativeResponse, 0x91, "torqueConverterClutchLocked"},
    {Kind::NegativeResponse, 0x92, "voltageTooHigh"},
    {Kind::NegativeResponse, 0x93, "voltageTooLow"},
};

const char *nameOf(Kind kind, uint8_t value) {
  for (const DiagnosticName &entry : kNames)
    if (entry.kind == kind && entry.value == value)
      return entry.name;
  return nullptr;
}

} // namespace

const char *serviceName(uint8_t serviceId) { return nameOf(Kind::Service, serviceId); }

const char *negativeResponseName(uint8_t code) { return nameOf(Kind::NegativeResponse, code); }
