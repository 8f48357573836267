#pragma once

#include <cstdint>
#include <functional>

namespace vellum::viewport {

/// Called now and then while a file is read: the bytes done and the bytes in all. `done` never decreases.
using Progress = std::function<void(std::uint64_t done, std::uint64_t all)>;

}  // namespace vellum::viewport
