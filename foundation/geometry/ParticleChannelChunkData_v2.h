#pragma once

#include "foundation/basic/Array.h"
#include "foundation/export.h"
#include "foundation/geometry/Vector3.h"

namespace vellum {

/// The values of one channel for the particles of one chunk, contiguous and ordered by slot.
///
/// Renderers pass the arrays to the drawing system unchanged. This class serves channels of unknown types and
/// stores no values; ParticleChannelArray_v2 stores vectors or floats.
///
/// The order of the virtual operations is part of the interface.
class VL_FOUNDATION_EXPORT ParticleChannelChunkData_v2 {
public:
    ParticleChannelChunkData_v2() = default;
    ParticleChannelChunkData_v2(ParticleChannelChunkData_v2 const&) = delete;
    ParticleChannelChunkData_v2& operator=(ParticleChannelChunkData_v2 const&) = delete;
    virtual ~ParticleChannelChunkData_v2();

    virtual Vector3<float>* asVectors();  ///< The values of a vector channel; null for every other type.
    virtual float* asFloats();            ///< The values of a scalar channel; null for every other type.

    /// Moves values: slot k gets the value of slot remap[k], for each k that `remap` has; an empty array
    /// moves none. Slots that do not exist read as 0 and ignore writes.
    virtual void reorder(Array<unsigned int> const& remap);

    /// Sets the number of values to `slots`; new ones are 0. If the allocation throws, the data is unchanged.
    virtual void resize(unsigned int const& slots);
};

}  // namespace vellum
