#pragma once

#include <cstddef>

namespace vellum {

/// What a test program and the libraries that it uses take through the global operators new. A program that
/// compiles counted_memory.cpp has that file's operators in the place of the usual ones; blocks of malloc,
/// which drivers take, do not count. The counts are of all threads.
namespace counted_memory {

/// Blocks of at least so many bytes also count as large.
inline constexpr std::size_t LARGE = 4096;

/// How many blocks have been taken since the program began.
std::size_t allocations();
/// How many of them were large.
std::size_t largeAllocations();

/// The bytes of the blocks that are held now, as many as malloc really sets aside.
std::size_t held();
/// The most that was held at any time since markHeld() or, without it, since the program began.
std::size_t mostHeld();
/// Restarts mostHeld() from the bytes held now, and returns them.
std::size_t markHeld();

}  // namespace counted_memory

}  // namespace vellum
