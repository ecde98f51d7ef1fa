// The export frame's null checks, export by export: each pointer argument in
// turn is passed null (the others as given) and the call must answer the
// family's code, before the injection step, so a status armed for the export
// is still armed afterwards.
#pragma once

#include "api/InjectionTable.h"
#include "api/StatusInjection.h"
#include "cansimu/cansimu.h"

#include <gtest/gtest.h>

#include <tuple>
#include <type_traits>
#include <utility>

namespace null_checks {

template <class T> T nullIf(T value, bool makeNull) {
  if constexpr (std::is_pointer_v<T>)
    return makeNull ? nullptr : value;
  else
    return value;
}

template <class Function, class Tuple, size_t... I>
CAN_STATUS callWithNull(Function function, const Tuple &args, size_t nulled,
                        std::index_sequence<I...>) {
  return function(nullIf(std::get<I>(args), I == nulled)...);
}

// `armable`: the export consults the injection table (the receive exports
// do not, and their names queue events instead of arming).
template <class Function, class... Args>
void expectEachNullRefused(const char *name, bool armable, CAN_STATUS code, Function function,
                           Args... args) {
  // The list that the configuration's INJECT elements are checked against.
  EXPECT_EQ(StatusInjection::isArmableExport(name), armable) << name;
  const std::tuple<Args...> values(args...);
  const bool isPointer[] = {std::is_pointer_v<Args>...};
  for (size_t i = 0; i < sizeof...(Args); ++i) {
    if (!isPointer[i])
      continue;
    if (armable)
      setNextCANStatus(name, 99, 0);
    EXPECT_EQ(callWithNull(function, values, i, std::index_sequence_for<Args...>()), code)
        << name << ", argument " << i;
    ACE_UINT32 status = 0;
    ACE_UINT8 detail = 0;
    if (armable) {
      EXPECT_TRUE(takeInjectedStatus(name, status, detail)) << name << " consumed its entry";
    }
  }
}

} // namespace null_checks

// EXPECT_NULLS_REFUSED(code, CAN_PrtGetMesPhys, port, &record): every pointer
// argument of the call, one at a time.
#define EXPECT_NULLS_REFUSED(code, function, ...)                                                  \
  null_checks::expectEachNullRefused(#function, true, code, function, __VA_ARGS__)
// The same for an export without an injection step.
#define EXPECT_NULLS_REFUSED_UNARMED(code, function, ...)                                          \
  null_checks::expectEachNullRefused(#function, false, code, function, __VA_ARGS__)
