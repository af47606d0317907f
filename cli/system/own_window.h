// A program that was started by a double click has a window to itself, which closes when it ends.
#pragma once

namespace quaylink::cli {

// Tells there what to type, and waits until the user has read it; false when there is no such
// window.
bool ExplainInOwnWindow();

}  // namespace quaylink::cli
