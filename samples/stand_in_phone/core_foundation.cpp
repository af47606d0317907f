// CoreFoundation.dll, as far as it is needed.
#include "stand_in_phone/call.h"

using quaylink::stand_in::Call;

namespace quaylink {

struct Allocator {};
// Known again by its mark in another copy of this library, too.
struct ServiceName {
  std::string string;
  std::uint32_t mark = 0x5EEDC0DEu;
};

namespace {

constexpr std::uint32_t kSystemEncoding = 0x0500;
Allocator defaultAllocator;

}  // namespace
}  // namespace quaylink

quaylink::Allocator* CFAllocatorGetDefault() {
  const Call call("CFAllocatorGetDefault");
  return call.Fails() ? nullptr : &quaylink::defaultAllocator;
}

std::uint32_t CFStringGetSystemEncoding() {
  const Call call("CFStringGetSystemEncoding");
  return call.Fails() ? 0 : quaylink::kSystemEncoding;
}

quaylink::ServiceName* CFStringCreateWithCString(quaylink::Allocator* allocator, const char* string,
                                                 std::uint32_t encoding) {
  const Call call("CFStringCreateWithCString", string);
  const bool isRight =
      call.Expect(allocator == &quaylink::defaultAllocator && encoding == quaylink::kSystemEncoding,
                  "wrong allocator or encoding");
  if (call.Fails() || !isRight) return nullptr;
  const auto destroy = [](quaylink::ServiceName* name) { delete name; };
  call->names.emplace_back(new quaylink::ServiceName{string}, destroy);
  return call->names.back().get();
}

const char* CFStringGetCStringPtr(const quaylink::ServiceName* string, std::uint32_t /*encoding*/) {
  return string && string->mark == quaylink::ServiceName().mark ? string->string.c_str() : nullptr;
}
