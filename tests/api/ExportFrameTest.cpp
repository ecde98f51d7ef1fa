// The export frame as one mechanism, exercised with export names of later
// families: the order of its steps and what each one leaves behind.
#include "api/ExportCall.h"
#include "api/InjectionTable.h"
#include "cansimu/cansimu.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

TEST(ExportFrame, StepsAnswerInTheOrderWrittenAndRejectedCallsLeaveTheArmedEntry) {
  int device = 0, runs = 0;
  ACE_UINT8 detail = 0;
  auto call = [&](const void *pointer, bool ok) {
    return ExportCall("CAN_ChnSetMode", kChannelFamily)
        .require(pointer)
        .check(ok, E_NULL_POINTER)
        .inject(&detail)
        .run([&] { return ++runs, E_SUCCESS; });
  };
  setNextCANStatus("CAN_ChnSetMode", 0, 5);
  EXPECT_EQ(call(nullptr, false), E_INVALID) << "the null check, with the family's code";
  EXPECT_EQ(call(&device, false), E_NULL_POINTER);
  // The armed status 0 answers the next call alone: the detail is written and
  // the operation does not run.
  EXPECT_EQ(call(&device, true), E_SUCCESS);
  EXPECT_EQ(detail, 5);
  EXPECT_EQ(runs, 0);
  EXPECT_EQ(call(&device, true), E_SUCCESS);
  EXPECT_EQ(runs, 1);

  // Written after the injection step, a check lets an armed entry answer first.
  setNextCANStatus("CAN_PrtEnumerate", 17, 0);
  auto late = [] {
    return ExportCall("CAN_PrtEnumerate", kPortFamily)
        .inject()
        .check(false, E_NULL_POINTER)
        .run([] { return E_SUCCESS; });
  };
  EXPECT_EQ(late(), 17u);
  EXPECT_EQ(late(), E_NULL_POINTER);
}

TEST(ExportFrame, RunThenInjectRunsTheOperationAndReplacesItsStatus) {
  int freed = 0;
  auto call = [&] {
    return ExportCall("CAN_ChnFree", kChannelFamily).runThenInject([&] {
      ++freed;
      return E_SUCCESS;
    });
  };
  setNextCANStatus("CAN_ChnFree", 12, 0);
  EXPECT_EQ(call(), 12u);
  EXPECT_EQ(freed, 1);
  EXPECT_EQ(call(), E_SUCCESS);
  EXPECT_EQ(freed, 2);
}

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
