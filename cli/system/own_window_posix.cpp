#include "cli/system/own_window.h"

namespace quaylink::cli {

bool ExplainInOwnWindow() {
  return false;
}

}  // namespace quaylink::cli
