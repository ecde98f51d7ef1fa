// What no export may let out: an exception of any kind becomes E_INVALID and
// a log line. The order of the frame's steps is checked export by export by
// the host's export table.
#include "api/ExportCall.h"
#include "cansimu/cansimu.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

TEST(ExportFrame, NoExceptionLeavesAnExportAndEachIsLogged) {
  LogCapture log;
  const CAN_STATUS failed = ExportCall("CAN_DevGetMode", kDeviceFamily).run([]() -> CAN_STATUS {
    throw std::bad_alloc();
  });
  EXPECT_EQ(failed, E_INVALID);
  const CAN_STATUS odd =
      ExportCall("CAN_DevGetMode", kDeviceFamily).run([]() -> CAN_STATUS { throw 42; });
  EXPECT_EQ(odd, E_INVALID);
  EXPECT_EQ(log.count("CAN_DevGetMode(): unexpected failure"), 2u);
  EXPECT_NO_THROW(ExportCall::guardedVoid("CAN_DrvEnd", [] { throw std::runtime_error("x"); }));
}
