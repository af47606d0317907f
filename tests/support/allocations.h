// What a test's own thread asks of operator new, and an operator new that fails when told to.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>

namespace quaylink::test {

struct Allocations {
  std::uint64_t count = 0;
  std::uint64_t bytes = 0;  // asked for in all, whether freed since or not
  std::int64_t live = 0;    // not freed yet
};

// Of the calling thread, since its beginning.
Allocations AllocationsSoFar();

// Lets one allocation of this thread fail while it lives: that of the given number, counted from 0
// for the next one.
class FailingAllocation {
 public:
  explicit FailingAllocation(std::uint64_t number);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;

  // False when there have not been so many allocations.
  bool HasFailed() const;
};

// Between a call with true and one with false nothing fails on this thread, as where other people's
// code runs.
void SuspendFailures(bool suspended);

// Calls the operation once for each allocation that it makes, with that one failing, and at last
// with none failing. `check` gets each result and whether an allocation failed. Returns how many
// did.
template <class Operation, class Check>
std::uint64_t FailEachAllocation(Operation operation, Check check) {
  for (std::uint64_t number = 0;; ++number) {
    const FailingAllocation failing(number);
    const std::int32_t result = operation();
    const bool failed = failing.HasFailed();
    check(result, failed);
    if (testing::Test::HasFailure()) ADD_FAILURE() << "allocation " << number;
    if (!failed || testing::Test::HasFailure()) return number;
  }
}

}  // namespace quaylink::test
