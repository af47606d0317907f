// What a test's own thread asks of operator new, and an operator new that fails when told to.
#pragma once

#include <cstdint>

namespace quaylink::test {

struct Allocations {
  std::uint64_t count = 0;
  std::uint64_t bytes = 0;  // asked for in all, whether freed since or not
  std::int64_t live = 0;    // not freed yet
};

// Of the calling thread, since its beginning.
Allocations AllocationsSoFar();

// Lets one allocation of this thread fail while it lives:
// that of the given number, counted from 0 for the next one.
class FailingAllocation {
 public:
  explicit FailingAllocation(std::uint64_t number);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;

  // False when there have not been so many allocations.
  bool HasFailed() const;
};

}  // namespace quaylink::test
