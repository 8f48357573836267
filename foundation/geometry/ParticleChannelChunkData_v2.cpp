#include "foundation/geometry/ParticleChannelChunkData_v2.h"

namespace vellum {

ParticleChannelChunkData_v2::~ParticleChannelChunkData_v2() = default;

Vector3<float>* ParticleChannelChunkData_v2::asVectors() {
    return nullptr;
}

float* ParticleChannelChunkData_v2::asFloats() {
    return nullptr;
}

void ParticleChannelChunkData_v2::reorder(Array<unsigned int> const& /*remap*/) {}

void ParticleChannelChunkData_v2::resize(unsigned int const& /*slots*/) {}

}  // namespace vellum
