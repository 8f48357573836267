#include "toolkit/internal/SolidArrows.h"

#include "foundation/geometry/ParticleSystemChunk_v2.h"
#include "foundation/raster/Core_RL.h"
#include "toolkit/internal/FixedPass.h"
#include "toolkit/internal/particle_values.h"

#include <algorithm>
#include <cmath>

namespace vellum::toolkit {

namespace {

// The layer divides by the length of what is left after its additions, and takes shorter ones as none.
constexpr float SHORTEST = 1e-14F;

bool isArrow(Vector3<float> const& tail, Vector3<float> const& along) {
    float const shaft = length(tail + along - tail);
    return shaft > SHORTEST && std::isfinite(shaft);  // not NaN
}

}  // namespace

void SolidArrows::fill(ParticleSystem_v2 const& system, ParticleLook const& look) {
    system.compact();
    unsigned int const most = std::min(drawnOf(system.size(), look.percent), MOST_SOLID_ARROWS);
    Array<Vector3<float>> tails;
    Array<Vector3<float>> directions;
    Array<Color4<float>> ofArrows;
    tails.reserve(most, false);
    directions.reserve(most, false);
    ofArrows.reserve(most, false);
    tails.clear();
    directions.clear();
    ofArrows.clear();
    bool const areColored = isOfType(system, look.colorChannel, ParticleChannel_v2::VECTOR);
    EvenChoice choice(system.size(), most);
    for (ParticleSystemChunk_v2 const* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
        Vector3<float> const* const positions = chunk->channelData(0)->asVectors();
        Vector3<float> const* const vectors = chunk->channelData(look.channel)->asVectors();
        ShownColors const shown(*chunk, look, areColored);
        for (unsigned int slot = 0; slot < chunk->count(); ++slot) {
            if (!choice.takesNext()) {
                continue;
            }
            Vector3<float> const along =
                convert<float>(convert<double>(vectors[slot]) * static_cast<double>(look.size));
            if (isArrow(positions[slot], along)) {
                Vector3<float> const color = shown[slot];
                tails.pushBack(positions[slot]);
                directions.pushBack(along);
                ofArrows.pushBack({color.x, color.y, color.z, 1});
            }
        }
    }
    VL_Raster->createBuffers_forRenderArrow3(tails, directions, ofArrows, 1, vertices, triangles, lines,
                                             quads, colors);
}

unsigned int SolidArrows::count() const {
    return lines.size() / 2;
}

ParticlePath SolidArrows::draw() const {
    if (count() == 0) {
        return ParticlePath::NONE;
    }
    FixedPass const pass;
    VL_Raster->renderArrow3_usingBuffers(vertices, triangles, lines, quads, colors);
    return ParticlePath::MEMORY;
}

}  // namespace vellum::toolkit
