#include "toolkit/internal/ParticleRamps.h"

#include "foundation/geometry/ParticleSystemChunk_v2.h"
#include "toolkit/internal/particle_values.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace vellum::toolkit {

namespace {

constexpr unsigned int SHOWN = 1;
constexpr float NOT_DRAWN = -1;

// Renderers compute lengths in single precision, whose squares have to be numbers.
constexpr double SMALLEST_RANGE = 1e-12;
constexpr double LARGEST_LENGTH = 1e18;

/// Writes particles to a copy, one after the other.
class Writer {
public:
    explicit Writer(ParticleSystem_v2& system) : chunk(system.firstChunk()) {}

    void add(Vector3<float> const& position, Vector3<float> const& shown) {
        if (slot == chunk->count()) {
            chunk = chunk->next();
            slot = 0;
        }
        chunk->channelData(ParticleRamps::POSITIONS)->asVectors()[slot] = position;
        chunk->channelData(SHOWN)->asVectors()[slot] = shown;
        ++slot;
    }

private:
    ParticleSystemChunk_v2* chunk;
    unsigned int slot = 0;
};

std::unique_ptr<ParticleSystem_v2> systemOf(unsigned int particles) {
    auto system = std::make_unique<ParticleSystem_v2>();
    system->addChannel("position", ParticleChannel_v2::VECTOR);
    system->addChannel("shown", ParticleChannel_v2::VECTOR);
    system->addParticles(particles);
    return system;
}

ParticleRamp constantRamp(Color4<float> const& color) {
    return {color, color, color, 0, 0};
}

}  // namespace

/// Where a particle goes: to which ramp, and what it shows there as a point or sphere.
struct ParticleRamps::Place {
    unsigned int ramp;
    float shown;
};

ParticleRamps::ParticleRamps(ParticleSystem_v2 const& system, ParticleLook const& look, ParticleMode mode)
    : system(&system), look(&look), areArrows(mode == ParticleMode::ARROWS) {
    ParticleChannel_v2 const* const record = system.findChannel(look.channel);
    bool const isScalar = record != nullptr && record->type == ParticleChannel_v2::SCALAR;
    isVector = record != nullptr && record->type == ParticleChannel_v2::VECTOR;
    if (isVector || isScalar) {
        shown = look.channel;
    }
    // Below `low` the library's ramp goes on beyond the first color: with a `low` above 0 there would be such
    // lengths.
    bool const isRamp = look.colors.colors.size() == 2 && look.low <= 0 && look.low >= -LARGEST_LENGTH &&
                        look.high - look.low >= SMALLEST_RANGE && look.high <= LARGEST_LENGTH;
    isDirectRoad = shown == ParticleChannel_v2::NONE ||
                   (isVector && look.quantity == ParticleQuantity::LENGTH && isRamp);
    if (areArrows && !isDirectRoad && look.high > 0) {
        vectorUnit = std::clamp(look.high, SMALLEST_UNIT, LARGEST_UNIT);
    }
}

ParticleRamps::Source ParticleRamps::source() const {
    Source source{
        system, system->size(), look->percent, shown, isDirectRoad, false, ParticleQuantity::LENGTH, 0, 0, 0};
    if (!isDirectRoad) {
        source.areArrows = areArrows;
        source.quantity = isVector ? look->quantity : ParticleQuantity::LENGTH;
        source.low = look->low;
        source.high = look->high;
        source.ramps = _rampCount();
    }
    return source;
}

bool ParticleRamps::_isByLength() const {
    return look->quantity == ParticleQuantity::LENGTH;
}

unsigned int ParticleRamps::_blended() const {
    std::size_t const colors = look->colors.colors.size();
    return static_cast<unsigned int>(std::clamp<std::size_t>(colors, 2, MOST + 1) - 1);
}

unsigned int ParticleRamps::_rampCount() const {
    if (isDirectRoad) {
        return 1;
    }
    if (!areArrows) {
        return _blended() + 1;
    }
    return (_isByLength() ? _blended() : STEPS) + 2;
}

std::vector<ParticleRamp> ParticleRamps::ramps() const {
    ColorMap const& map = look->colors;
    Color4<float> const first = map.at(0);
    if (shown == ParticleChannel_v2::NONE) {
        return {constantRamp(first)};
    }
    if (isDirectRoad) {
        auto const low = static_cast<float>(look->low);
        auto const high = static_cast<float>(look->high);
        return {{map.colors[0], map.colors[1], map.above, low, high + HAIR * (high - low)}};
    }
    std::vector<ParticleRamp> ramps;
    ramps.reserve(_rampCount());
    unsigned int const blended = _blended();
    if (!areArrows) {
        for (unsigned int k = 0; k < blended; ++k) {
            ramps.push_back({map.at(1.0 * k / blended), map.at((k + 1.0) / blended), map.above, 0, 1 + HAIR});
        }
        // With an extent: without shaders, the library has no color for a ramp without one.
        ramps.push_back({map.undefined, map.undefined, map.undefined, 0, 1});
        return ramps;
    }
    ramps.push_back(constantRamp(first));
    for (unsigned int k = 0; k < blended && _isByLength(); ++k) {
        Color4<float> const highest = map.at((k + 1.0) / blended);
        auto const lengthAt = [&](double t) {
            return static_cast<float>((look->low + (look->high - look->low) * t) / vectorUnit);
        };
        ramps.push_back({map.at(1.0 * k / blended), highest, highest, lengthAt(1.0 * k / blended),
                         lengthAt((k + 1.0) / blended)});
    }
    for (unsigned int k = 0; k < STEPS && !_isByLength(); ++k) {
        ramps.push_back(constantRamp(map.at(k / (STEPS - 1.0))));
    }
    ramps.push_back(constantRamp(map.above));
    return ramps;
}

ParticleRamps::Place ParticleRamps::_placeOf(double value) const {
    constexpr float ABOVE = 2;
    double const t = placeInRange(*look, value);
    unsigned int const last = _rampCount() - 1;
    unsigned int const blended = _blended();
    if (std::isnan(t)) {
        return {last, 0};  // not of arrows: these have finite vectors
    }
    if (t <= 0) {
        return {0, 0};
    }
    if (t > 1) {
        return {areArrows ? last : blended - 1, ABOVE};
    }
    if (areArrows && !_isByLength()) {
        return {1 + static_cast<unsigned int>(std::lround(t * (STEPS - 1))), 0};
    }
    double const place = t * blended;
    unsigned int const ramp = std::min(static_cast<unsigned int>(place), blended - 1);
    return {ramp + (areArrows ? 1 : 0), static_cast<float>(place - ramp)};
}

void ParticleRamps::copy(std::vector<std::unique_ptr<ParticleSystem_v2>>& copies) const {
    system->compact();
    unsigned int const count = system->size();
    std::vector<Place> places;
    std::vector<unsigned int> counts(_rampCount(), 0U);
    places.reserve(count);
    EvenChoice choice(count, drawnOf(count, look->percent));
    for (ParticleSystemChunk_v2 const* chunk = system->firstChunk(); chunk != nullptr;
         chunk = chunk->next()) {
        Vector3<float> const* const positions = chunk->channelData(POSITIONS)->asVectors();
        ShownValues const values(*chunk, shown, look->quantity);
        Vector3<float> const* const along = areArrows ? values.vectors : nullptr;
        for (unsigned int slot = 0; slot < chunk->count(); ++slot) {
            bool const isDrawn = choice.takesNext() && isFinite(positions[slot]) &&
                                 (along == nullptr || isFinite(along[slot]));
            places.push_back(isDrawn ? _placeOf(values[slot]) : Place{0, NOT_DRAWN});
            counts[places.back().ramp] += isDrawn ? 1 : 0;
        }
    }
    std::vector<Writer> writers;
    writers.reserve(counts.size());
    copies.resize(counts.size());
    for (std::size_t k = 0; k < counts.size(); ++k) {
        if (copies[k] == nullptr || copies[k]->size() != counts[k]) {
            copies[k] = nullptr;  // the memory of the former one first
            copies[k] = systemOf(counts[k]);
        }
        writers.emplace_back(*copies[k]);
    }
    auto const part = static_cast<float>(1 / vectorUnit);
    auto place = places.begin();
    for (ParticleSystemChunk_v2 const* chunk = system->firstChunk(); chunk != nullptr;
         chunk = chunk->next()) {
        Vector3<float> const* const positions = chunk->channelData(POSITIONS)->asVectors();
        ShownValues const values(*chunk, shown, look->quantity);
        Vector3<float> const* const along = areArrows ? values.vectors : nullptr;
        for (unsigned int slot = 0; slot < chunk->count(); ++slot, ++place) {
            if (place->shown != NOT_DRAWN) {
                writers[place->ramp].add(positions[slot], along != nullptr
                                                              ? along[slot] * part
                                                              : Vector3<float>{place->shown, 0, 0});
            }
        }
    }
}

}  // namespace vellum::toolkit
