#pragma once

#include "viewport/files/common/PlyHeader.h"
#include "viewport/files/particles/FrameBuilder.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

namespace vellum::viewport {

/// The rows of a binary table: records of one size, each with one number for each column.
struct BinaryRows {
    char const* start = nullptr;  ///< all records lie within the file
    std::size_t count = 0;
    std::vector<PlyScalarType> fields;  ///< one for each column
    bool isBigEndian = false;
};

/// The bytes of a record.
std::size_t recordSize(std::vector<PlyScalarType> const& fields);

/// Adds them to a frame, on all cores.
/// \param passed gets the number of records read so far, now and then; may throw
/// \return the first record whose id is not a whole number; nothing where there is none. The frame is
/// undefined then.
std::optional<std::size_t> addRows(BinaryRows const& rows, FrameBuilder& builder,
                                   std::function<void(std::size_t)> const& passed);

}  // namespace vellum::viewport
