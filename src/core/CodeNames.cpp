#include "core/CodeNames.h"

#include "cansimu/cansimu.h"

namespace {

const CodeName kStatuses[] = {
    {"E_SUCCESS", E_SUCCESS},
    {"E_BOARD_ERROR_1", E_BOARD_ERROR_1},
    {"E_BOARD_ERROR_2", E_BOARD_ERROR_2},
    {"E_NO_EVENT", E_NO_EVENT},
    {"E_INVALID", E_INVALID},
    {"E_ALREADY_RESERVED", E_ALREADY_RESERVED},
    {"E_DISCONNECTED", E_DISCONNECTED},
    {"E_NOMEM", E_NOMEM},
    {"E_NOT_FOUND", E_NOT_FOUND},
    {"E_BAD_FILE", E_BAD_FILE},
    {"E_RECONF_PROGRESS", E_RECONF_PROGRESS},
    {"E_DENIED_KERNEL_ACCESS", E_DENIED_KERNEL_ACCESS},
    {"E_NULL_POINTER", E_NULL_POINTER},
    {"E_KERNEL_RW_ERROR", E_KERNEL_RW_ERROR},
    {"E_CHANNEL_REFUSED", E_CHANNEL_REFUSED},
    {"E_BUSOFF", E_BUSOFF},
};

const CodeName kDetectionOutcomes[] = {
    {"E_SUCCESS", E_SUCCESS},
    {"E_BOARD_ERROR_1", E_BOARD_ERROR_1},
    {"E_BOARD_ERROR_2", E_BOARD_ERROR_2},
    {"E_BUSOFF", E_BUSOFF},
    {"E_DISCONNECTED", E_DISCONNECTED},
    {"E_DENIED_KERNEL_ACCESS", E_DENIED_KERNEL_ACCESS},
    {"E_KERNEL_RW_ERROR", E_KERNEL_RW_ERROR},
    {"E_NOMEM", E_NOMEM},
    {"E_RECONF_PROGRESS", E_RECONF_PROGRESS},
};

const CodeName kDriverEventTypes[] = {
    {"DRV_TYPE_ENDFIFO", DRV_TYPE_ENDFIFO},
    {"DRV_TYPE_DEVICE_100", DRV_TYPE_DEVICE_100},
    {"DRV_TYPE_DEVICE_101", DRV_TYPE_DEVICE_101},
};

const CodeName kDeviceEventTypes[] = {
    {"DEV_TYPE_ENDFIFO", DEV_TYPE_ENDFIFO},     {"DEV_TYPE_DISCONNECTED", DEV_TYPE_DISCONNECTED},
    {"DEV_TYPE_CONNECTED", DEV_TYPE_CONNECTED}, {"DEV_TYPE_STATUS_PAIR", DEV_TYPE_STATUS_PAIR},
    {"DEV_TYPE_CONFIG", DEV_TYPE_CONFIG},       {"DEV_TYPE_TENSION", DEV_TYPE_TENSION},
    {"DEV_TYPE_STATUS", DEV_TYPE_STATUS},       {"DEV_TYPE_MODE", DEV_TYPE_MODE},
    {"DEV_TYPE_RESET", DEV_TYPE_RESET},         {"DEV_TYPE_PROGRESS", DEV_TYPE_PROGRESS},
};

const CodeName kPortEventTypes[] = {
    {"PRT_TYPE_ENDFIFO", PRT_TYPE_ENDFIFO}, {"PRT_TYPE_CAN_PARAM", PRT_TYPE_CAN_PARAM},
    {"PRT_TYPE_STATE", PRT_TYPE_STATE},     {"PRT_TYPE_MES_PHYS", PRT_TYPE_MES_PHYS},
    {"PRT_TYPE_FRAME", PRT_TYPE_FRAME},
};

const CodeName kChannelEventTypes[] = {
    {"CHN_TYPE_ENDFIFO", CHN_TYPE_ENDFIFO},
    {"CHN_TYPE_CRSNDDIAGFRAME", CHN_TYPE_CRSNDDIAGFRAME},
    {"CHN_TYPE_SEND_FAILED_LOSSOFCOM", CHN_TYPE_SEND_FAILED_LOSSOFCOM},
    {"CHN_TYPE_SEND_FAILED_CRNEG", CHN_TYPE_SEND_FAILED_CRNEG},
    {"CHN_TYPE_SEND_FAILED_TIMEOUT", CHN_TYPE_SEND_FAILED_TIMEOUT},
    {"CHN_TYPE_SEND_FAILED_INTERNAL_DRIVER_ERROR", CHN_TYPE_SEND_FAILED_INTERNAL_DRIVER_ERROR},
    {"CHN_TYPE_RCV_CORRUPTED_FRAME", CHN_TYPE_RCV_CORRUPTED_FRAME},
    {"CHN_TYPE_RCV_STARTOK_NOTCOMPLIANT", CHN_TYPE_RCV_STARTOK_NOTCOMPLIANT},
    {"CHN_TYPE_REQ_1_0_EMITTED", CHN_TYPE_REQ_1_0_EMITTED},
    {"CHN_TYPE_RCV_FAILED_TIMEOUT", CHN_TYPE_RCV_FAILED_TIMEOUT},
    {"CHN_TYPE_RCV_SUCCESS", CHN_TYPE_RCV_SUCCESS},
    {"CHN_TYPE_RCV_SUCCESS_BUT_UNEXPECTED", CHN_TYPE_RCV_SUCCESS_BUT_UNEXPECTED},
    {"CHN_TYPE_RCV_FAILED_NO_RESPONSE", CHN_TYPE_RCV_FAILED_NO_RESPONSE},
    {"CHN_TYPE_END_OF_RCV", CHN_TYPE_END_OF_RCV},
};

const CodeName kResultCodes[] = {
    {"cOk", 0},
    {"cNok", 1},
    {"cTimeOut", 2},
    {"cErreurParametre", 3},
    {"cCodeCommandeInvalide", 4},
    {"cCommandeNonImplementee", 5},
    {"cLongueurDonneesInvalide", 6},
    {"cParametreInvalide", 7},
    {"cErreurEcriture", 8},
    {"cErreurLecture", 9},
    {"cIdCanInvalide", 10},
    {"cOctetFiInvalide", 11},
    {"cBusOff", 12},
    {"cErreurPassiveBus", 13},
    {"cModeIncompatible", 14},
    {"cBrpInvalide", 20},
    {"cTseg1Invalide", 21},
    {"cTseg2Invalide", 22},
    {"cSamInvalide", 23},
    {"cSjwInvalide", 24},
    {"cMTypeInvalide", 30},
    {"cTaTypeInvalide", 31},
    {"cAbonneInconnu", 32},
    {"cErreurUsb", 64},
    {"cTimeOutOctet", 65},
    {"cTimeOutTrame", 66},
    {"cErreurCypress", 67},
    {"cLongueursIncoherentes", 68},
    {"cLongueurTrameFausse", 69},
    {"cLongueurTrameInvalide", 70},
    {"cTypeTrameInvalide", 71},
};

template <size_t N> CodeTable tableOf(const CodeName (&names)[N]) { return CodeTable{names, N}; }

} // namespace

namespace CodeNames {
CodeTable statuses() { return tableOf(kStatuses); }
CodeTable detectionOutcomes() { return tableOf(kDetectionOutcomes); }
CodeTable driverEventTypes() { return tableOf(kDriverEventTypes); }
CodeTable deviceEventTypes() { return tableOf(kDeviceEventTypes); }
CodeTable portEventTypes() { return tableOf(kPortEventTypes); }
CodeTable channelEventTypes() { return tableOf(kChannelEventTypes); }
CodeTable resultCodes() { return tableOf(kResultCodes); }
} // namespace CodeNames
