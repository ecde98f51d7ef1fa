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
