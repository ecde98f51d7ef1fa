/* A C host: includes the public header under strict C and drives the driver
 * and port queues through the exports. Exits non-zero on the first mismatch. */
#include "cansimu/cansimu.h"

#include <stdio.h>

#define EXPECT(condition)                                                                          \
  do {                                                                                             \
    if (!(condition)) {                                                                            \
      fprintf(stderr, "%s:%d: expected %s\n", __FILE__, __LINE__, #condition);                     \
      return 1;                                                                                    \
    }                                                                                              \
  } while (0)

int main(void) {
  CAN_EventDrv *event = NULL;
  uint32_t pending = 7;

  EXPECT(CAN_DrvInit(NULL) == E_SUCCESS);
  EXPECT(CAN_DrvRxMsg(NULL, &pending, 10) == E_NULL_POINTER);
  EXPECT(CAN_DrvRxMsg(&event, &pending, 0) == E_INVALID);
  EXPECT(CAN_DrvRxMsg(&event, &pending, 10) == E_NO_EVENT);
  EXPECT(event == NULL && pending == 0);

  setNextCANStatus("CAN_DrvRxMsg", DRV_TYPE_DEVICE_100, 0x42);
  EXPECT(CAN_DrvEndFifo() == E_SUCCESS);
  EXPECT(CAN_DrvRxMsg(&event, &pending, 1000) == E_SUCCESS);
  EXPECT(event != NULL && event->type == DRV_TYPE_DEVICE_100 && event->detail == 0x42);
  EXPECT(event->data != NULL && ((CAN_EnumDev *)event->data)->fixedOne == 1);
  EXPECT(pending == 1);
  EXPECT(CAN_DrvFreeRxMsg(event) == E_SUCCESS);
  EXPECT(CAN_DrvRxMsg(&event, &pending, 1000) == E_SUCCESS);
  EXPECT(event->type == DRV_TYPE_ENDFIFO && event->data == NULL);
  EXPECT(CAN_DrvFreeRxMsg(event) == E_SUCCESS);
  EXPECT(CAN_DrvFreeRxMsg(NULL) == E_SUCCESS);

  {
    CAN_DEV_HANDLE device = NULL;
    CAN_PRT_HANDLE port = NULL;
    CAN_EventPort *portEvent = NULL;
    EXPECT(CAN_DevReservation("", &device) == E_SUCCESS);
    EXPECT(CAN_PrtReservation(device, 96, &port) == E_SUCCESS && port != NULL);
    setNextCANStatus("CAN_PrtRxMsg", PRT_TYPE_FRAME, 0);
    EXPECT(CAN_PrtRxMsg(port, &portEvent, &pending, 1000) == E_SUCCESS);
    EXPECT(portEvent->type == PRT_TYPE_FRAME && ((CAN_FramePort *)portEvent->data)->length == 0);
    EXPECT(CAN_PrtFreeRxMsg(portEvent) == E_SUCCESS);
    EXPECT(CAN_PrtFree(port) == E_SUCCESS && CAN_DevFree(device) == E_SUCCESS);
  }

  setLogInformationMethod(NULL);
  setLogErrorMethod((void *)&pending);
  CAN_DrvEnd();
  CAN_DrvEnd();
  return 0;
}
