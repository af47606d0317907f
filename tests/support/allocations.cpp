#include "support/allocations.h"

#include <cstdlib>
#include <new>

namespace quaylink::test {
namespace {

constexpr std::uint64_t kNever = UINT64_MAX;

thread_local Allocations allocations;
thread_local std::uint64_t allocationsUntilFailure = kNever;
thread_local bool hasFailed = false;
thread_local bool areSuspended = false;

}  // namespace

Allocations AllocationsSoFar() {
  return allocations;
}

FailingAllocation::FailingAllocation(std::uint64_t number) {
  hasFailed = false;
  allocationsUntilFailure = number;
}

FailingAllocation::~FailingAllocation() {
  allocationsUntilFailure = kNever;
}

bool FailingAllocation::HasFailed() const {
  return hasFailed;
}

void SuspendFailures(bool suspended) {
  areSuspended = suspended;
}

static void* Allocate(std::size_t size) noexcept {
  if (!areSuspended && allocationsUntilFailure != kNever && allocationsUntilFailure-- == 0) {
    allocationsUntilFailure = kNever;
    hasFailed = true;
    return nullptr;
  }
  ++allocations.count;
  allocations.bytes += size;
  ++allocations.live;
  return std::malloc(size == 0 ? 1 : size);
}

static void Free(void* memory) noexcept {
  if (!memory) return;
  --allocations.live;
  std::free(memory);
}

}  // namespace quaylink::test

// All the forms without an alignment, as a sanitizer may bring its own of each.

void* operator new(std::size_t size) {
  void* memory = quaylink::test::Allocate(size);
  if (!memory) throw std::bad_alloc();
  return memory;
}
void* operator new[](std::size_t size) {
  return operator new(size);
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return quaylink::test::Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return quaylink::test::Allocate(size);
}
void operator delete(void* memory) noexcept {
  quaylink::test::Free(memory);
}
void operator delete[](void* memory) noexcept {
  quaylink::test::Free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
  quaylink::test::Free(memory);
}
void operator delete[](void* memory, std::size_t /*size*/) noexcept {
  quaylink::test::Free(memory);
}
void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept {
  quaylink::test::Free(memory);
}
void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept {
  quaylink::test::Free(memory);
}
