// Tells the address sanitizer, where there is one, which memory of a larger block is in use.
#pragma once

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define QUAYLINK_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QUAYLINK_ADDRESS_SANITIZER 1
#endif
#endif

#ifdef QUAYLINK_ADDRESS_SANITIZER
#include <sanitizer/asan_interface.h>
#endif

namespace quaylink {

#ifdef QUAYLINK_ADDRESS_SANITIZER
inline constexpr bool kPoisons = true;
inline void Poison(const void* memory, std::size_t size) {
  __asan_poison_memory_region(memory, size);
}
inline void Unpoison(const void* memory, std::size_t size) {
  __asan_unpoison_memory_region(memory, size);
}
#else
inline constexpr bool kPoisons = false;
inline void Poison(const void* /*memory*/, std::size_t /*size*/) {}
inline void Unpoison(const void* /*memory*/, std::size_t /*size*/) {}
#endif

}  // namespace quaylink
