#pragma once

#include <functional>

namespace zarek {

// Told as long work goes on: how many of how many are done. The caller decides how to show it.
using WorkProgress = std::function<void(int done, int total)>;

}
