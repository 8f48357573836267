#pragma once

#include "tests/support/build_facts.h"

#include <vector>

/// The limits of threads that results are compared with: one, as many as machines have, an odd number, and
/// more than there are cores. Fewer under the address sanitizer, with which a comparison of millions takes a
/// minute.
inline std::vector<int> threadLimits() {
    return isAddressSanitized() ? std::vector<int>{1, 3} : std::vector<int>{1, 2, 3, 8};
}
