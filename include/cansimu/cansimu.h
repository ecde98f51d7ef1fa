/*
 * cansimu: a simulated CAN diagnostic interface box behind the flat C
 * interface of the box's driver library.
 *
 * Every export uses the cdecl calling convention and, except CAN_DrvEnd,
 * returns a CAN_STATUS. Records are laid out for the 32-bit host: fixed-width
 * fields in offset order with natural alignment; on 64-bit targets pointer
 * fields are 8 bytes wide and the rest follows from natural alignment.
 * Memory handed to the host is allocated with malloc: event records are
 * released with the level's ...FreeRxMsg, enumeration arrays with free().
 */
#ifndef CANSIMU_CANSIMU_H
#define CANSIMU_CANSIMU_H

#include <stdint.h>

#if defined(_WIN32)
#define CANSIMU_CALL __cdecl
#define CANSIMU_API
#elif defined(CANSIMU_BUILDING_LIBRARY)
#define CANSIMU_CALL
#define CANSIMU_API __attribute__((visibility("default")))
#else
#define CANSIMU_CALL
#define CANSIMU_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Result of every CAN_* export except CAN_DrvEnd. An armed injection entry
 * may make an export return any other value. */
typedef uint32_t CAN_STATUS;

#define E_SUCCESS 0u               /* success */
#define E_BOARD_ERROR_1 1u         /* the simulated box refused the operation */
#define E_BOARD_ERROR_2 2u         /* configured baud-rate outcome */
#define E_NO_EVENT 3u              /* no event within the timeout; outputs null and 0 */
#define E_INVALID 4u               /* invalid argument or state, allocation or queue failure */
#define E_ALREADY_RESERVED 6u      /* the device or the port is already reserved */
#define E_DISCONNECTED 7u          /* the simulated device or its port is disconnected */
#define E_NOMEM 9u                 /* configured baud-rate outcome */
#define E_NOT_FOUND 13u            /* no device of that name, no port of that number */
#define E_BAD_FILE 15u             /* the firmware file cannot be read or is no image */
#define E_RECONF_PROGRESS 18u      /* configured baud-rate outcome */
#define E_DENIED_KERNEL_ACCESS 19u /* configured baud-rate outcome */
#define E_NULL_POINTER 21u         /* a required pointer is null, or a list already holds items */
#define E_KERNEL_RW_ERROR 22u      /* configured baud-rate outcome */
#define E_CHANNEL_REFUSED 26u      /* a one-to-one channel asked for on a port that has a channel */
#define E_BUSOFF 27u               /* configured baud-rate outcome */

/* Driver event types. */
#define DRV_TYPE_ENDFIFO 0u      /* end marker: every word 0 */
#define DRV_TYPE_DEVICE_100 100u /* injected; data is a CAN_EnumDev */
#define DRV_TYPE_DEVICE_101 101u /* injected; data is a CAN_EnumDev */

/* Device event types, with what the event's data holds. */
#define DEV_TYPE_ENDFIFO 0u        /* end marker; data null */
#define DEV_TYPE_DISCONNECTED 101u /* null, or a CAN_EnumDev when injected */
#define DEV_TYPE_CONNECTED 102u    /* null, or a CAN_EnumDev when injected */
#define DEV_TYPE_STATUS_PAIR 200u  /* 2 bytes: the injected value, then 0 */
#define DEV_TYPE_CONFIG 201u       /* a CAN_ConfigDev with its own port array */
#define DEV_TYPE_TENSION 202u      /* a CAN_TensionDev */
#define DEV_TYPE_STATUS 203u       /* 1 byte: the injected value */
#define DEV_TYPE_MODE 204u         /* a CAN_ModeDev */
#define DEV_TYPE_RESET 205u        /* 1 byte: 0xF4 after CAN_DevHC16Reset */
#define DEV_TYPE_PROGRESS 1000u    /* data is the progress value itself */

/* Driver event (24 bytes on 32-bit hosts). A record with type 0 and all
 * other words 0 is the end marker. */
typedef struct CAN_EventDrv {
  uint32_t type;      /* event type */
  uint32_t detail;    /* detail byte of an injected event, zero-extended */
  uint32_t reserved1; /* always 0 */
  uint32_t reserved2; /* always 0 */
  void *data;         /* payload owned by the record, or null */
  uint32_t reserved3; /* always 0 */
} CAN_EventDrv;

/* Device event (24 bytes on 32-bit hosts). For DEV_TYPE_PROGRESS, data holds
 * the progress value itself rather than a pointer. */
typedef struct CAN_EventDev {
  uint32_t type;
  uint32_t reserved1;
  uint32_t reserved2;
  uint32_t reserved3;
  void *data;
  uint32_t reserved4;
} CAN_EventDev;

/* One device as listed by CAN_DevEnumerate and carried by device events
 * (276 bytes). */
typedef struct CAN_EnumDev {
  char name[128];        /* serial number, ANSI code page, zero-terminated */
  uint8_t unused[136];   /* zeroed by the library */
  uint32_t fixedOne;     /* always 1 */
  uint8_t reserved;      /* 1 while the device is reserved */
  uint8_t padding[3];    /* zeroed by the library */
  uint32_t disconnected; /* 1 while the device is disconnected */
} CAN_EnumDev;

/* The host's enumeration list; the host passes it with records null. */
typedef struct CAN_EnumList {
  uint32_t count;
  void *records; /* malloc'd array, released by the host with free() */
} CAN_EnumList;

/* The host's handle on the simulated device, from CAN_DevReservation. */
typedef void *CAN_DEV_HANDLE;

/* One port of a device (3 bytes), in CAN_ConfigDev's port array. */
typedef struct CAN_EnumPort {
  uint8_t resultByte; /* 0 */
  uint8_t portNumber; /* 0x60 */
  uint8_t reserved;   /* 1 while the port is reserved */
} CAN_EnumPort;

/* Firmware versions of the device (67 bytes), from CAN_DevGetVersion. Each
 * text holds at most 10 characters and its terminating zero. */
typedef struct CAN_VersionDev {
  uint8_t resultByte; /* 0, or an injected detail value */
  char bootVersion[11];
  char bootDate[11];
  char bootCheckSum[11];
  char appVersion[11];
  char appDate[11];
  char appCheckSum[11];
} CAN_VersionDev;

/* Device configuration (76 bytes on 32-bit hosts), from CAN_DevGetConfig:
 * the versions of CAN_VersionDev, then the device's ports. */
typedef struct CAN_ConfigDev {
  uint8_t resultByte;
  char bootVersion[11];
  char bootDate[11];
  char bootCheckSum[11];
  char appVersion[11];
  char appDate[11];
  char appCheckSum[11];
  uint8_t padding;     /* not written */
  uint32_t count;      /* number of ports: 1 */
  CAN_EnumPort *ports; /* malloc'd array, released by the host with free() */
} CAN_ConfigDev;

/* Supply voltages of the device (16 bytes), from CAN_DevGetTension. */
typedef struct CAN_TensionDev {
  uint8_t resultByte;
  uint8_t padding[3]; /* not written */
  float batteryVoltage;
  float apcKelmora;
  float apcDravik;
} CAN_TensionDev;

/* Operating mode of the device (8 bytes), from CAN_DevGetMode. */
typedef struct CAN_ModeDev {
  uint8_t resultByte;
  uint8_t padding[3]; /* not written */
  uint32_t mode;      /* 0 download, 1 CAN parameters, 2 raw frames, 3 measures */
} CAN_ModeDev;

/* Self-test answer (12 bytes), from CAN_DevRunTest. */
typedef struct CAN_TestDev {
  uint8_t resultByte; /* 0, or an injected detail value */
  uint8_t padding[3]; /* not written */
  float firstValue;   /* 2.0 */
  float secondValue;  /* 2.7 */
} CAN_TestDev;

/* Outcome of a firmware download (2 bytes), from CAN_DevBoardTeleFirm. */
typedef struct DownloadResult {
  uint8_t errorCode; /* 0, 0x82 after a simulated upload failure, or an injected detail */
  uint8_t written;   /* 1 once the download has written the record */
} DownloadResult;

/* Port event types with names. The other types a harness may inject carry
 * small payloads: 300 to 306, 308, 309, 316 to 319 and 322 one byte (the
 * injected value); 307 and 321 16 bytes (the value, and 1 at byte 4); 310 and
 * 314 12 bytes, 315 8 bytes, 400 24 bytes (the value at byte 0); 312 two
 * bytes (the value, 0); 401 24 zero bytes; 324 and 325 none. */
#define PRT_TYPE_ENDFIFO 0u
#define PRT_TYPE_CAN_PARAM 311u /* a CAN_ParamPort */
#define PRT_TYPE_STATE 313u     /* a CAN_StatePort */
#define PRT_TYPE_MES_PHYS 320u  /* a CAN_MesPhysPort */
#define PRT_TYPE_FRAME 323u     /* a CAN_FramePort */

/* The identifier that offers a raw frame to every ECU of the bus. */
#define CAN_BROADCAST_ID 0x7D0u

/* Port event (24 bytes on 32-bit hosts). */
typedef struct CAN_EventPort {
  uint32_t type;
  uint32_t reserved1;
  uint32_t reserved2;
  uint32_t reserved3;
  void *data; /* payload of the type, or null */
  uint32_t reserved4;
} CAN_EventPort;

/* Measured bus values, result of CAN_PrtGetMesPhys (24 bytes). */
typedef struct CAN_MesPhysPort {
  uint8_t resultByte;
  uint8_t unused[3];
  float batteryVoltage;
  float canHmin;
  float canHmax;
  float canLmin;
  float canLmax;
} CAN_MesPhysPort;

/* CAN parameter block of CAN_PrtSetCanParam and CAN_PrtGetCanParam (20
 * bytes). The port stores the six parameters and gives them back unchanged. */
typedef struct CAN_ParamPort {
  uint8_t resultByte; /* never touched by the port; an injected detail goes here */
  uint8_t unused1[3];
  uint8_t param1;
  uint8_t param2;
  uint8_t param3;
  uint8_t unused2;
  uint32_t param4;
  uint8_t param5;
  uint8_t unused3[3];
  uint32_t param6;
} CAN_ParamPort;

/* Port state, result of CAN_PrtPortGetState (20 bytes). */
typedef struct CAN_StatePort {
  uint8_t resultByte;
  uint8_t unused[3];
  uint32_t word4;     /* always 1 */
  uint32_t word8;     /* always 1 */
  uint32_t word12;    /* always 0 */
  uint8_t bytes16[4]; /* always 0, 0xFF, 0, 0 */
} CAN_StatePort;

/* One 12-byte baud-rate setting, as the detection reads and writes it. */
typedef struct CAN_BaudSetting {
  uint8_t bytes[12];
} CAN_BaudSetting;

/* Request of CAN_PrtDetBaudRate: the candidate settings (the port reads the
 * count and the first candidate). */
typedef struct CAN_BaudSearchPort {
  uint8_t unused1[4];
  uint8_t candidateCount; /* the port refuses 0 */
  uint8_t unused2[3];
  CAN_BaudSetting candidates[1]; /* candidateCount settings follow */
} CAN_BaudSearchPort;

/* Answer of CAN_PrtDetBaudRate (16 bytes the port writes on success). */
typedef struct CAN_BaudFoundPort {
  uint8_t resultByte;
  uint8_t unused[3];
  CAN_BaudSetting found;
} CAN_BaudFoundPort;

/* One association of the host's table (28 bytes). */
typedef struct CAN_AssocEntry {
  uint8_t header[5];  /* copied, not interpreted */
  uint8_t ecuAddress; /* diagnostic address of the ECU */
  uint8_t unused[10]; /* copied, not interpreted */
  uint32_t idTx;      /* identifier of the frames the host sends to the ECU */
  uint32_t idRx;      /* identifier of the ECU's answers */
  uint32_t trailer;   /* copied, not interpreted */
} CAN_AssocEntry;

/* Argument of CAN_PrtLoadAssocTable (8 bytes on 32-bit hosts). */
typedef struct CAN_AssocTable {
  uint32_t count;
  CAN_AssocEntry *entries;
} CAN_AssocTable;

/* Result of CAN_PrtLoadAssocTable (2 bytes). */
typedef struct AssocResult {
  uint8_t errorCode; /* why a table was refused; an injected detail goes here */
  uint8_t zero;      /* 0 whenever the record is written */
} AssocResult;

/* One CAN frame (28 bytes): sent with CAN_PrtSendTrame, payload of
 * PRT_TYPE_FRAME. */
typedef struct CAN_FramePort {
  uint32_t canId;
  uint32_t reserved1; /* 0 in frames the port produces */
  uint32_t reserved2; /* 0 in frames the port produces */
  uint32_t length;    /* 0 to 8 */
  uint8_t bytes[8];   /* bytes past length are 0 in frames the port produces */
  uint32_t timestamp; /* low 32 bits of the high-resolution clock */
} CAN_FramePort;

/* Channel event types, with what the event carries: a CAN_ChnResult in data
 * (short form, 24 bytes, or frame form with frameLength and frameData), a
 * copy of the request in request (null for the request of a session's
 * opening), or nothing. A scenario answer selects a type by its name. */
#define CHN_TYPE_ENDFIFO 0u                              /* nothing */
#define CHN_TYPE_CRSNDDIAGFRAME 400u                     /* short result */
#define CHN_TYPE_SEND_FAILED_LOSSOFCOM 2000u             /* request copy */
#define CHN_TYPE_SEND_FAILED_CRNEG 2001u                 /* short result, request copy */
#define CHN_TYPE_SEND_FAILED_TIMEOUT 2002u               /* request copy */
#define CHN_TYPE_SEND_FAILED_INTERNAL_DRIVER_ERROR 2003u /* request copy */
#define CHN_TYPE_RCV_CORRUPTED_FRAME 2004u               /* frame result */
#define CHN_TYPE_RCV_STARTOK_NOTCOMPLIANT 2005u          /* frame result */
#define CHN_TYPE_REQ_1_0_EMITTED 2006u                   /* request copy */
#define CHN_TYPE_RCV_FAILED_TIMEOUT 2007u                /* request copy */
#define CHN_TYPE_RCV_SUCCESS 2008u                       /* frame result: an ECU's answer */
#define CHN_TYPE_RCV_SUCCESS_BUT_UNEXPECTED 2009u        /* frame result */
#define CHN_TYPE_RCV_FAILED_NO_RESPONSE 2010u            /* request copy */
#define CHN_TYPE_END_OF_RCV 2011u                        /* nothing: a broadcast exchange ended */

/* Channel types of CAN_ChnCreate. */
#define CHN_ONE_TO_ONE 0u
#define CHN_BROADCAST 1u

/* Channel event (24 bytes on 32-bit hosts). */
typedef struct CAN_EventChn {
  uint32_t type;
  uint32_t reserved1;
  uint32_t reserved2;
  uint32_t reserved3;
  void *data;    /* a CAN_ChnResult, or null */
  void *request; /* a copy of the request (CAN_DiagMsg), or null */
} CAN_EventChn;

/* Result of a diagnostic exchange: 24 bytes in the short form, 32 in the
 * frame form (frameLength and frameData). */
typedef struct CAN_ChnResult {
  uint8_t resultCode;
  uint8_t unused1[3];
  uint32_t echoWord;
  uint8_t echoByte2;
  uint8_t responderAddress;
  uint8_t unused2[2];
  uint32_t channelType;
  uint8_t echoByte1;
  uint8_t unused3[3];
  uint32_t timestamp; /* high-resolution clock in microseconds, low 32 bits */
  uint16_t frameLength;
  uint8_t unused4[2];
  uint8_t *frameData; /* malloc'd frame bytes */
} CAN_ChnResult;

/* A diagnostic request (12 bytes on 32-bit hosts). */
typedef struct CAN_DiagMsg {
  uint32_t header; /* copied, not interpreted */
  uint32_t length;
  uint8_t *data;
} CAN_DiagMsg;

/* The host's channel configuration; only the fields the simulation reads are
 * named (76 bytes on 32-bit hosts). */
typedef struct CAN_ChnConfigRec {
  uint8_t ecuAddress;
  uint8_t echoByte1;
  uint8_t echoByte2;
  uint8_t unused1[9];
  uint32_t startFrameLength;
  uint8_t *startFrame;
  uint8_t unused2[72 - 16 - sizeof(uint8_t *)];
  uint32_t echoWord;
} CAN_ChnConfigRec;

/* One channel as listed by CAN_ChnEnumerate (20 bytes). */
typedef struct CAN_ChnInfo {
  uint32_t echoWord;
  uint8_t echoByte2;
  uint8_t ecuAddress;
  uint8_t unused1[2];
  uint32_t channelType;
  uint8_t echoByte1;
  uint8_t unused2[3];
  uint32_t sessionOpen; /* 1 while the session is open */
} CAN_ChnInfo;

/* Stores the configuration path and reads the configuration file. Always 0. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DrvInit(const char *configPath);
/* Destroys the simulated driver and forgets the configuration path. */
CANSIMU_API void CANSIMU_CALL CAN_DrvEnd(void);
/* Takes the oldest driver event, waiting up to timeoutMs: 0, 3 on timeout,
 * 21 for a null pointer, 4 for a zero timeout. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DrvRxMsg(CAN_EventDrv **event, uint32_t *pending,
                                                 uint32_t timeoutMs);
/* Releases a record from CAN_DrvRxMsg with its payload; null is accepted. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DrvFreeRxMsg(CAN_EventDrv *event);
/* Queues the driver end marker, waking a blocked CAN_DrvRxMsg. Always 0. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DrvEndFifo(void);

/* Lists the one simulated device: records must be null on entry (else 21);
 * count = 1 and records = a malloc'd CAN_EnumDev, 0; 4 without memory. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevEnumerate(CAN_EnumList *devices);
/* Takes the oldest device event, waiting up to timeoutMs: 0, 3 on timeout,
 * 21 for a null pointer, 4 for a zero timeout. A configuration that asks for
 * another connection state queues its event here first. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevRxMsg(CAN_DEV_HANDLE device, CAN_EventDev **event,
                                                 uint32_t *pending, uint32_t timeoutMs);
/* Releases a record from CAN_DevRxMsg with its payload; null is accepted. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevFreeRxMsg(CAN_EventDev *event);
/* Queues the device end marker: 0, 7 while disconnected. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevEndFifo(CAN_DEV_HANDLE device);
/* Reserves the device named by its serial number: 0 with the handle, 13 for
 * another name, 6 when already reserved, 7 while disconnected. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevReservation(const char *name, CAN_DEV_HANDLE *device);
/* Releases the reservation: 0, or 4 while the device's port is reserved. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevFree(CAN_DEV_HANDLE device);
/* Sets the operating mode of the device and its port: 0, 7 while
 * disconnected. *detail is written only by an injected status. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevSetMode(CAN_DEV_HANDLE device, uint32_t mode,
                                                   uint8_t *detail);
/* The record getters: 0 with the record filled, 7 while disconnected. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevGetMode(CAN_DEV_HANDLE device, CAN_ModeDev *mode);
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevGetConfig(CAN_DEV_HANDLE device, CAN_ConfigDev *config);
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevGetTension(CAN_DEV_HANDLE device,
                                                      CAN_TensionDev *tension);
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevGetVersion(CAN_DEV_HANDLE device,
                                                      CAN_VersionDev *version);
/* Accepted without effect: 0, 7 while disconnected. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevSetSleep(CAN_DEV_HANDLE device);
/* Answers {0, 2.0, 2.7} and 0 whatever the device's state; 21 for a null
 * device, 4 for a null result. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevRunTest(CAN_DEV_HANDLE device, uint32_t test,
                                                   CAN_TestDev *result);
/* Accepted without effect: 0. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevSndGenericFrame(CAN_DEV_HANDLE device,
                                                           const void *frame);
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevAutoConfig(CAN_DEV_HANDLE device);
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevAutoConfigRaz(CAN_DEV_HANDLE device);
/* Resets the box's processor: blocks 500 ms, then queues DEV_TYPE_RESET
 * (0xF4): 0, 7 while disconnected, 4 when the event cannot be queued. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevHC16Reset(CAN_DEV_HANDLE device);
/* Plays out a firmware download in mode 0: one DEV_TYPE_PROGRESS event every
 * 50 ms (2 to 100), then takes over the versions of the application or boot
 * image at firmwarePath: 0; 1 with {0x82, 1} when the configuration makes
 * the upload fail; 4 outside mode 0; 7 while disconnected; 15 for a file
 * that is no readable image. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_DevBoardTeleFirm(CAN_DEV_HANDLE device,
                                                         const char *firmwarePath,
                                                         DownloadResult *result);

/* The host's handle on the simulated port, from CAN_PrtReservation. */
typedef void *CAN_PRT_HANDLE;

/* Lists the device's one port: records must be null on entry (else 21);
 * count = 1 and records = a malloc'd CAN_EnumPort, 0; 7 while the device is
 * disconnected; 4 without memory. An armed status answers before the list
 * is looked at. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtEnumerate(CAN_DEV_HANDLE device, CAN_EnumList *ports);
/* Reserves port 96 (only the number's low byte counts): 0 with the handle, 13
 * for another number, 6 when already reserved (handle null after both), 7
 * while disconnected (handle untouched). */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtReservation(CAN_DEV_HANDLE device, uint32_t portNumber,
                                                       CAN_PRT_HANDLE *port);
/* Releases the reservation. Always 0. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtFree(CAN_PRT_HANDLE port);
/* The measured bus voltages, in mode 3: 0, 4 in another mode, 7 while
 * disconnected. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtGetMesPhys(CAN_PRT_HANDLE port, CAN_MesPhysPort *values);
/* The CAN parameters, stored and given back unchanged, in mode 1: 0, 4 in
 * another mode, 7 while disconnected. Byte 0 of the block is never touched. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtSetCanParam(CAN_PRT_HANDLE port, CAN_ParamPort *params);
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtGetCanParam(CAN_PRT_HANDLE port, CAN_ParamPort *params);
/* Baud-rate detection in mode 1, playing the configuration's DETBAUDRATE
 * texts in turn: 0 with the first candidate copied into the answer, or the
 * status the text names (4 for an unknown text); 21 for no candidates, 4 in
 * another mode, 7 while disconnected. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtDetBaudRate(CAN_PRT_HANDLE port,
                                                       const CAN_BaudSearchPort *request,
                                                       CAN_BaudFoundPort *answer);
/* Keeps a copy of the host's association table, in mode 1: 0; 1 with
 * {14, 0} in another mode, 1 with {6, 0} for an empty table (the held table
 * stays); 21 for entries that are null, 4 without memory; 7 while
 * disconnected. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtLoadAssocTable(CAN_PRT_HANDLE port,
                                                          const CAN_AssocTable *table,
                                                          AssocResult *result);
/* Accepted without effect in mode 1: 0, 4 in another mode, 7 while
 * disconnected. Nothing is read from the arguments. *detail is written only
 * by an injected status. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtSetVoie(CAN_PRT_HANDLE port, uint32_t line,
                                                   uint8_t *detail);
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtSetHardFilt(CAN_PRT_HANDLE port, const void *filter,
                                                       uint8_t *detail);
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtSetSoftFilt(CAN_PRT_HANDLE port, const void *filter,
                                                       uint8_t *detail);
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtSetParamFlux(CAN_PRT_HANDLE port, const void *params,
                                                        uint32_t value);
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtRegulationOn(CAN_PRT_HANDLE port, uint32_t value,
                                                        const void *params);
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtRegulationOff(CAN_PRT_HANDLE port, const void *params);
/* The port's constant state, in any mode: 0, 7 while disconnected. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtPortGetState(CAN_PRT_HANDLE port, CAN_StatePort *state);
/* Cyclic frames and the controller re-init: accepted without effect, 0. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtSetSndCycl(CAN_PRT_HANDLE port, const void *cycle,
                                                      uint32_t value, uint8_t *detail);
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtActSndCycl(CAN_PRT_HANDLE port, uint32_t cycle,
                                                      uint8_t *detail);
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtUpdSndCycl(CAN_PRT_HANDLE port, const void *cycle,
                                                      uint8_t *detail);
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtDActSndCycl(CAN_PRT_HANDLE port, uint32_t cycle,
                                                       uint8_t *detail);
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtDelSndCycl(CAN_PRT_HANDLE port, uint32_t cycle,
                                                      uint8_t *detail);
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtCtrlReinit(CAN_PRT_HANDLE port, const void *params);
/* Puts a raw frame on the bus in mode 2: the ECU listening on its identifier
 * (every ECU for 0x7D0) answers with PRT_TYPE_FRAME events carrying its idRx.
 * 0 whether or not an ECU answered; 21 for a length above 8; 4 in another
 * mode or when an answer cannot be queued; 7 while disconnected. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtSendTrame(CAN_PRT_HANDLE port,
                                                     const CAN_FramePort *frame, uint8_t *detail);
/* Takes the oldest port event, waiting up to timeoutMs: 0, 3 on timeout, 7
 * while disconnected, 21 for a null pointer, 4 for a zero timeout. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtRxMsg(CAN_PRT_HANDLE port, CAN_EventPort **event,
                                                 uint32_t *pending, uint32_t timeoutMs);
/* Queues the port end marker, waking a blocked CAN_PrtRxMsg: 0, 4 when the
 * queue refuses it. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtEndFifo(CAN_PRT_HANDLE port);
/* Releases a record from CAN_PrtRxMsg with its payload; null is accepted. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_PrtFreeRxMsg(CAN_EventPort *event);

/* The host's handle on a diagnostic channel, from CAN_ChnCreate. */
typedef void *CAN_CHN_HANDLE;

/* The channel family answers 4 (E_INVALID) for every null pointer. */

/* Lists the port's channels in creation order: count and a malloc'd array of
 * CAN_ChnInfo (released by the host with free()). 0; 4 without memory. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_ChnEnumerate(CAN_PRT_HANDLE port, CAN_EnumList *channels);
/* Creates a channel of `type` (CHN_ONE_TO_ONE, CHN_BROADCAST) on the port: 0
 * with the handle; 26 for a broadcast channel on a port that has channels. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_ChnCreate(CAN_PRT_HANDLE port, uint32_t type,
                                                  uint32_t value, CAN_CHN_HANDLE *channel);
/* Frees a channel whose session is closed, giving its ECUs back: 0; 4 while
 * its session is open (the channel stays). */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_ChnFree(CAN_CHN_HANDLE channel);
/* Attaches the ECU whose address the association table maps to an idTx (a
 * broadcast channel: every free ECU) and keeps the start frame and the echo
 * values: 0; 4, with a log line, when no ECU was found. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_ChnConfig(CAN_CHN_HANDLE channel,
                                                  const CAN_ChnConfigRec *config);
/* Opens the session of a configured channel: 0; 4 when not configured or,
 * one-to-one, when the ECU refuses the dialog. Other types send their start
 * frame first, as a request. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_ChnOpenSession(CAN_CHN_HANDLE channel);
/* 0; 4 when no session is open. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_ChnCloseSession(CAN_CHN_HANDLE channel);
/* Sends a request to the channel's ECUs; every answer is queued as a channel
 * event (or, for an ECU outside the association table, a port frame) before
 * it returns: 0; 4 when the session is not open or request->data is null. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_ChnSendDiag(CAN_CHN_HANDLE channel,
                                                    const CAN_DiagMsg *request);
/* Takes the oldest channel event, waiting up to timeoutMs: 0, 3 on timeout,
 * 4 for a null pointer or a zero timeout. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_ChnRxMsg(CAN_CHN_HANDLE channel, CAN_EventChn **event,
                                                 uint32_t *pending, uint32_t timeoutMs);
/* Releases a record from CAN_ChnRxMsg with its result, frame and request
 * copy; null is accepted. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_ChnFreeRxMsg(CAN_EventChn *event);
/* Queues the channel end marker: 0; 4 while the session is open. */
CANSIMU_API CAN_STATUS CANSIMU_CALL CAN_ChnEndFifo(CAN_CHN_HANDLE channel);

/* Test hook: arms the status the next call of the named export returns, or,
 * for "CAN_DrvRxMsg", "CAN_DevRxMsg" and "CAN_PrtRxMsg", queues an event of
 * type `status` with the low byte of `detail`. */
CANSIMU_API void CANSIMU_CALL setNextCANStatus(const char *exportName, uint32_t status,
                                               uint32_t detail);

/* Log-method setters of the original interface: accepted and ignored. */
CANSIMU_API void CANSIMU_CALL setLogCriticalMethod(void *method);
CANSIMU_API void CANSIMU_CALL setLogErrorMethod(void *method);
CANSIMU_API void CANSIMU_CALL setLogFrameCriticalMethod(void *method);
CANSIMU_API void CANSIMU_CALL setLogFrameErrorMethod(void *method);
CANSIMU_API void CANSIMU_CALL setLogFrameInformationMethod(void *method);
CANSIMU_API void CANSIMU_CALL setLogFrameWarningMethod(void *method);
CANSIMU_API void CANSIMU_CALL setLogInformationMethod(void *method);
CANSIMU_API void CANSIMU_CALL setLogWarningMethod(void *method);

#ifdef __cplusplus
}
#endif

#endif /* CANSIMU_CANSIMU_H */
