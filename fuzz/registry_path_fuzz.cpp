// Splits the input as a registry path: the pieces, joined again, are the path.

#include "require.h"
#include "usb/registry.h"

namespace quaylink::fuzz {
namespace {

void Split(std::string_view path) {
  std::vector<std::string> components = {"kept"};
  std::string remainder = "replaced";
  SplitRegistryPath(path, components, remainder);

  Require(components.front() == "kept", "components are appended");
  std::string joined;
  for (std::size_t i = 1; i < components.size(); ++i) {
    Require(components[i].find('\\') == std::string::npos, "no component holds a backslash");
    joined += components[i] + '\\';
  }
  Require(remainder.find('\\') == std::string::npos, "the remainder holds no backslash");
  Require(joined + remainder == path, "the pieces are the whole path");
}

}  // namespace
}  // namespace quaylink::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  quaylink::fuzz::Split({reinterpret_cast<const char*>(data), size});
  return 0;
}
