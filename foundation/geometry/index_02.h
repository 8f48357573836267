#pragma once

namespace vellum {

/// The corners of a triangle, 0 to 2, in their circle: which one comes after a corner, and which before it.
/// The 16-bit tables hold the same for corners that come out of adjacency entries.
namespace index_02 {

namespace ui32 {
inline constexpr unsigned int NEXT_CIRCULAR[3] = {1, 2, 0};
inline constexpr unsigned int PREV_CIRCULAR[3] = {2, 0, 1};
}  // namespace ui32

namespace ui16 {
inline constexpr unsigned short NEXT_CIRCULAR[3] = {1, 2, 0};
inline constexpr unsigned short PREV_CIRCULAR[3] = {2, 0, 1};
}  // namespace ui16

}  // namespace index_02

}  // namespace vellum
