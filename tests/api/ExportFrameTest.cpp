// The export frame as one mechanism, exercised with export names of later
// families: the order of its steps and what each one leaves behind.
#include "api/ExportCall.h"
#include "api/InjectionTable.h"
#include "cansimu/cansimu.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

namespace {
// A device-family export that sets a mode and has a detail byte.
CAN_STATUS fakeSetMode(const void *device, ACE_UINT8 *detail, int &mode, int newMode) {
  return ExportCall("CAN_DevSetMode", kDeviceFamily)
      .require(device)
      .require(detail)
      .inject(detail)
      .run([&] {
        mode = newMode;
        return E_SUCCESS;
      });
}
} // namespace

TEST(ExportFrame, NullChecksAnswerInArgumentOrderWithTheFamilyCode) {
  int mode = 0;
  ACE_UINT8 detail = 0;
  int device = 0;
  EXPECT_EQ(fakeSetMode(nullptr, &detail, mode, 3), E_NULL_POINTER);
  EXPECT_EQ(fakeSetMode(&device, nullptr, mode, 3), E_NULL_POINTER);
  EXPECT_EQ(mode, 0);
  const CAN_STATUS channel =
      ExportCall("CAN_ChnOpenSession", kChannelFamily).require(nullptr).inject().run([] {
        return E_SUCCESS;
      });
  EXPECT_EQ(channel, E_INVALID);
}

TEST(ExportFrame, AnArmedEntrySurvivesACallRejectedByItsNullChecks) {
  int mode = 0;
  int device = 0;
  ACE_UINT8 detail = 0;
  setNextCANStatus("CAN_DevSetMode", 0, 5);
  EXPECT_EQ(fakeSetMode(nullptr, &detail, mode, 3), E_NULL_POINTER);
  // The armed status 0 answers the next call: the detail is written and the
  // operation does not run.
  EXPECT_EQ(fakeSetMode(&device, &detail, mode, 3), E_SUCCESS);
  EXPECT_EQ(detail, 5);
  EXPECT_EQ(mode, 0);
  // One call only: the next one runs.
  EXPECT_EQ(fakeSetMode(&device, &detail, mode, 3), E_SUCCESS);
  EXPECT_EQ(mode, 3);
}

TEST(ExportFrame, OtherChecksComeAfterNullChecksAndBeforeInjection) {
  int p = 0;
  setNextCANStatus("CAN_PrtRxLike", 9, 0);
  auto call = [&](const void *ptr, bool ok) {
    return ExportCall("CAN_PrtRxLike", kPortFamily)
        .require(ptr)
        .check(ok, E_INVALID)
        .inject()
        .run([] { return E_SUCCESS; });
  };
  EXPECT_EQ(call(nullptr, false), E_NULL_POINTER);
  EXPECT_EQ(call(&p, false), E_INVALID);
  EXPECT_EQ(call(&p, true), 9u);

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
