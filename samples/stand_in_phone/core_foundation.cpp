// CoreFoundation.dll, as far as it is needed.
#include "stand_in_phone/call.h"

using quaylink::stand_in::Call;
using quaylink::stand_in::CurrentPhone;

namespace quaylink {

struct Allocator {};
struct ServiceName {
  std::string string;
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
  for (const auto& name : CurrentPhone().names) {
    if (name.get() == string) return name->string.c_str();
  }
  return nullptr;
}
