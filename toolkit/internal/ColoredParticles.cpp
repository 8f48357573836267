#include "toolkit/internal/ColoredParticles.h"

#include "foundation/geometry/ParticleSystemChunk_v2.h"
#include "foundation/raster/Core_RL.h"
#include "toolkit/internal/FixedPass.h"
#include "toolkit/internal/ParticleRamps.h"
#include "toolkit/internal/colored_effects.h"
#include "toolkit/internal/particle_values.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "toolkit/internal/gl.h"

namespace vellum::toolkit {

namespace {

// Not all memory: other buffers and the pictures need some.
constexpr unsigned int RESERVED_KILOBYTES = 25 * 1024;

bool isSize(float size) {
    return size > 0 && std::isfinite(size);
}

/// Whether a buffer is worth trying. 0 stands for "unknown".
bool mayFit(std::size_t bytes) {
    unsigned int const free = VL_Raster->getFreeGpuMemory();
    return free == 0 || (free > RESERVED_KILOBYTES && bytes / 1024 < free - RESERVED_KILOBYTES);
}

/// Calls visit(chunk, slot) for the particles that are drawn and have a place.
template <class Visit>
void forEachDrawn(ParticleSystem_v2 const& system, float percent, Visit const& visit) {
    EvenChoice choice(system.size(), drawnOf(system.size(), percent));
    for (ParticleSystemChunk_v2 const* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
        auto const visitSlot = visit(*chunk);
        Vector3<float> const* const positions = chunk->channelData(ParticleRamps::POSITIONS)->asVectors();
        for (unsigned int slot = 0; slot < chunk->count(); ++slot) {
            if (choice.takesNext() && isFinite(positions[slot])) {
                visitSlot(slot, positions[slot]);
            }
        }
    }
}

bool hasSizes(ParticleSystem_v2 const& system, ParticleLook const& look) {
    return isOfType(system, look.sizeChannel, ParticleChannel_v2::SCALAR);
}

bool hasColors(ParticleSystem_v2 const& system, ParticleLook const& look) {
    return isOfType(system, look.colorChannel, ParticleChannel_v2::VECTOR);
}

}  // namespace

struct ColoredParticles::PointRecord {
    Vector3<float> position;
    Vector3<float> color;
};

struct ColoredParticles::SphereRecord {
    Vector3<float> position;
    Vector3<float> color;
    float size;
};

struct ColoredParticles::ArrowRecord {
    Vector3<float> position;
    Vector3<float> along;
    Vector3<float> color;
};

/// Numbers the sizes of points: each that there is has one, or, where these are too many, each step between
/// the smallest and the largest.
class ColoredParticles::SizeNumbers {
public:
    static constexpr unsigned int MOST = ParticleLook::MOST_POINT_SIZES;

    /// The number of a size above 0, from 0 in the order of their first appearance; MOST: it is one too many.
    unsigned int of(float size) {
        least = std::min(least, size);
        most = std::max(most, size);
        unsigned int place = _placeOf(size);
        while (table[place] != FREE && sizes[table[place]] != size) {
            place = (place + 1) % PLACES;
        }
        if (table[place] == FREE) {
            if (count == MOST) {
                return MOST;
            }
            sizes[count] = size;
            table[place] = static_cast<unsigned short>(count++);
        }
        return table[place];
    }

    /// From now on the numbers are those of the steps, between the sizes that were numbered.
    void useSteps() {
        lowest = std::log(static_cast<double>(least));
        perStep = (std::log(static_cast<double>(most)) - lowest) / (MOST - 1);
        for (unsigned int k = 0; k < MOST; ++k) {
            sizes[k] = static_cast<float>(std::exp(lowest + perStep * k));
        }
        count = MOST;
    }

    unsigned int stepOf(float size) const {
        long const step = std::lround((std::log(static_cast<double>(size)) - lowest) / perStep);
        return static_cast<unsigned int>(std::clamp(step, 0L, static_cast<long>(MOST - 1)));
    }

    unsigned int size() const { return count; }
    float operator[](unsigned int number) const { return sizes[number]; }

private:
    static constexpr unsigned int PLACE_BITS = 10;
    static constexpr unsigned int PLACES = 1U << PLACE_BITS;  // four times the numbers: searches are short
    static constexpr unsigned short FREE = 0xFFFF;

    static unsigned int _placeOf(float size) {
        constexpr std::uint32_t GOLDEN_RATIO = 2654435769U;
        std::uint32_t bits = 0;
        std::memcpy(&bits, &size, sizeof(bits));
        return (bits * GOLDEN_RATIO) >> (32U - PLACE_BITS);
    }

    std::array<float, MOST> sizes{};
    std::array<unsigned short, PLACES> table = [] {
        std::array<unsigned short, PLACES> places{};
        places.fill(FREE);
        return places;
    }();
    unsigned int count = 0;
    float least = std::numeric_limits<float>::max();
    float most = 0;
    double lowest = 0;   // logarithm of the first step
    double perStep = 1;  // of logarithms
};

ColoredParticles::ColoredParticles() = default;

ColoredParticles::~ColoredParticles() {
    _deleteBuffer();
}

bool ColoredParticles::isNeeded(ParticleSystem_v2 const& system, ParticleLook const& look,
                                ParticleMode mode) {
    return hasColors(system, look) || (mode != ParticleMode::ARROWS && hasSizes(system, look));
}

// == Filling ==

void ColoredParticles::fill(ParticleSystem_v2 const& system, ParticleLook const& look, ParticleMode mode) {
    system.compact();
    areArrows = mode == ParticleMode::ARROWS;
    areSpheres = mode == ParticleMode::SPHERES;
    recordCount = 0;
    groups.clear();
    std::size_t const most = drawnOf(system.size(), look.percent);
    struct Closing {
        ~Closing() { particles._close(); }
        ColoredParticles& particles;
    } const closing{*this};  // also where memory does not suffice
    switch (mode) {
    case ParticleMode::ARROWS:
    case ParticleMode::SOLID_ARROWS:
        _writeArrows(system, look, static_cast<ArrowRecord*>(_open(most * sizeof(ArrowRecord))));
        break;
    case ParticleMode::SPHERES:
        _writeSpheres(system, look, static_cast<SphereRecord*>(_open(most * sizeof(SphereRecord))));
        break;
    case ParticleMode::POINTS: {
        auto* const records = static_cast<PointRecord*>(_open(most * sizeof(PointRecord)));
        if (hasSizes(system, look)) {
            _writePointsBySize(system, look, records);
        } else {
            _writePoints(system, look, records);
        }
        break;
    }
    }
}

void ColoredParticles::_writePoints(ParticleSystem_v2 const& system, ParticleLook const& look,
                                    PointRecord* records) {
    PointRecord* out = records;
    forEachDrawn(system, look.percent, [&](ParticleSystemChunk_v2 const& chunk) {
        return [&out, colors = ShownColors(chunk, look, true)](unsigned int slot,
                                                               Vector3<float> const& position) {
            *out++ = {position, colors[slot]};
        };
    });
    recordCount = static_cast<unsigned int>(out - records);
    groups.push_back({1, 0, recordCount});
}

void ColoredParticles::_writeSpheres(ParticleSystem_v2 const& system, ParticleLook const& look,
                                     SphereRecord* records) {
    SphereRecord* out = records;
    bool const areSized = hasSizes(system, look);
    bool const areColored = hasColors(system, look);
    forEachDrawn(system, look.percent, [&](ParticleSystemChunk_v2 const& chunk) {
        float const* const sizes = areSized ? chunk.channelData(look.sizeChannel)->asFloats() : nullptr;
        return [&out, sizes, colors = ShownColors(chunk, look, areColored)](unsigned int slot,
                                                                            Vector3<float> const& position) {
            float const size = sizes != nullptr ? sizes[slot] : 1;
            if (isSize(size)) {
                *out++ = {position, colors[slot], size};
            }
        };
    });
    recordCount = static_cast<unsigned int>(out - records);
}

// Sorted by counting: points of one size lie side by side.
void ColoredParticles::_writePointsBySize(ParticleSystem_v2 const& system, ParticleLook const& look,
                                          PointRecord* records) {
    SizeNumbers sizes;
    numbers.clear();
    numbers.reserve(drawnOf(system.size(), look.percent));
    constexpr unsigned short NO_SIZE = SizeNumbers::MOST + 1;
    bool areTooMany = false;
    auto const sizesOf = [&look](ParticleSystemChunk_v2 const& chunk) {
        return chunk.channelData(look.sizeChannel)->asFloats();
    };
    forEachDrawn(system, look.percent, [&](ParticleSystemChunk_v2 const& chunk) {
        return [&, values = sizesOf(chunk)](unsigned int slot, Vector3<float> const& /*position*/) {
            unsigned int const number = isSize(values[slot]) ? sizes.of(values[slot]) : NO_SIZE;
            areTooMany = areTooMany || number == SizeNumbers::MOST;
            numbers.push_back(static_cast<unsigned short>(number));
        };
    });
    if (areTooMany) {
        sizes.useSteps();
        auto number = numbers.begin();
        forEachDrawn(system, look.percent, [&](ParticleSystemChunk_v2 const& chunk) {
            return [&, values = sizesOf(chunk)](unsigned int slot, Vector3<float> const& /*position*/) {
                if (*number != NO_SIZE) {
                    *number = static_cast<unsigned short>(sizes.stepOf(values[slot]));
                }
                ++number;
            };
        });
    }

    std::array<unsigned int, NO_SIZE + 1> ends{};  // the places after the last records, by number
    for (unsigned short const number : numbers) {
        ++ends[number];
    }
    for (unsigned int k = 0; k < sizes.size(); ++k) {
        unsigned int const count = ends[k];
        ends[k] = recordCount;  // the next place, for the writing
        if (count != 0) {
            groups.push_back({sizes[k], recordCount, count});
        }
        recordCount += count;
    }
    bool const areColored = hasColors(system, look);
    auto number = numbers.begin();
    forEachDrawn(system, look.percent, [&](ParticleSystemChunk_v2 const& chunk) {
        return [&, colors = ShownColors(chunk, look, areColored)](unsigned int slot,
                                                                  Vector3<float> const& position) {
            if (*number != NO_SIZE) {
                records[ends[*number]++] = {position, colors[slot]};
            }
            ++number;
        };
    });
}

void ColoredParticles::_writeArrows(ParticleSystem_v2 const& system, ParticleLook const& look,
                                    ArrowRecord* records) {
    auto const vectorsOf = [&look](ParticleSystemChunk_v2 const& chunk) {
        return chunk.channelData(look.channel)->asVectors();
    };
    double longest = 0;
    forEachDrawn(system, look.percent, [&](ParticleSystemChunk_v2 const& chunk) {
        return [&longest, along = vectorsOf(chunk)](unsigned int slot, Vector3<float> const& /*position*/) {
            if (isFinite(along[slot])) {
                longest = std::max(longest, length(convert<double>(along[slot])));
            }
        };
    });
    vectorUnit = longest > 0 ? std::clamp(longest, SMALLEST_UNIT, LARGEST_UNIT) : 1;
    auto const part = static_cast<float>(1 / vectorUnit);
    ArrowRecord* out = records;
    forEachDrawn(system, look.percent, [&](ParticleSystemChunk_v2 const& chunk) {
        return [&out, part, along = vectorsOf(chunk),
                colors = ShownColors(chunk, look, true)](unsigned int slot, Vector3<float> const& position) {
            if (isFinite(along[slot])) {
                *out++ = {position, along[slot] * part, colors[slot]};
            }
        };
    });
    recordCount = static_cast<unsigned int>(out - records);
}

// == Memory ==

void* ColoredParticles::_open(std::size_t bytes) {
    if (!hasBuffers) {
        hasBuffers = VL_Raster->isExtensionSupported("GL_ARB_vertex_buffer_object") ||
                     VL_Raster->isExtensionSupported("ARB_vertex_buffer_object");
    }
    if (*hasBuffers && mayFit(bytes)) {
        if (void* const store = _openBuffer(bytes)) {
            host = {};
            return store;
        }
    }
    _deleteBuffer();
    host.resize(bytes / sizeof(float));
    return host.data();
}

void* ColoredParticles::_openBuffer(std::size_t bytes) {
    if (bufferId == 0) {
        VL_Raster->genBuffers(1, &bufferId);
    }
    if (bufferId == 0 || bytes == 0) {
        return nullptr;
    }
    VL_Raster->bindBuffer(BufferTarget::ARRAY_BUFFER, bufferId);
    VL_Raster->bufferData(BufferTarget::ARRAY_BUFFER, bytes, nullptr, BufferUsage::STREAM_DRAW);
    void* const store = VL_Raster->mapBuffer(BufferTarget::ARRAY_BUFFER, BufferAccess::WRITE_ONLY);
    // An error of the application cannot be told from one of these calls. Main memory serves in both cases.
    if (VL_Raster->getError("ColoredParticles", 0) || store == nullptr) {
        VL_Raster->bindBuffer(BufferTarget::ARRAY_BUFFER, 0);
        return nullptr;  // the caller deletes the buffer, which ends the mapping
    }
    return store;
}

void ColoredParticles::_close() {
    if (bufferId != 0) {
        VL_Raster->unmapBuffer(BufferTarget::ARRAY_BUFFER);
        VL_Raster->bindBuffer(BufferTarget::ARRAY_BUFFER, 0);
    }
}

void ColoredParticles::_deleteBuffer() {
    if (bufferId != 0) {
        glDeleteBuffers(1, &bufferId);  // ends the mapping; there may be no layer any more
        bufferId = 0;
    }
}

// == Drawing ==

void ColoredParticles::_openArrays() {
    if (bufferId != 0) {
        VL_Raster->bindBuffer(BufferTarget::ARRAY_BUFFER, bufferId);
    }
    auto const at = [this](std::size_t offset) -> void* {
        return bufferId != 0 ? reinterpret_cast<void*>(offset)
                             : static_cast<void*>(host.data() + offset / sizeof(float));
    };
    VL_Raster->enableClientState(ClientCapability::VERTEX_ARRAY);
    VL_Raster->enableClientState(ClientCapability::COLOR_ARRAY);
    if (areArrows) {
        VL_Raster->enableClientState(ClientCapability::NORMAL_ARRAY);
        VL_Raster->vertexPointer(3, DataType::FLOAT, sizeof(ArrowRecord), at(0));
        VL_Raster->colorPointer(3, DataType::FLOAT, sizeof(ArrowRecord), at(offsetof(ArrowRecord, along)));
        glNormalPointer(GL_FLOAT, sizeof(ArrowRecord), at(offsetof(ArrowRecord, color)));
        return;
    }
    static_assert(offsetof(PointRecord, color) == offsetof(SphereRecord, color));
    static_assert(offsetof(SphereRecord, size) == offsetof(SphereRecord, color) + sizeof(Vector3<float>));
    std::size_t const stride = areSpheres ? sizeof(SphereRecord) : sizeof(PointRecord);
    VL_Raster->vertexPointer(3, DataType::FLOAT, stride, at(0));
    VL_Raster->colorPointer(areSpheres ? 4 : 3, DataType::FLOAT, stride, at(offsetof(PointRecord, color)));
}

void ColoredParticles::_closeArrays() const {
    if (bufferId != 0) {
        VL_Raster->bindBuffer(BufferTarget::ARRAY_BUFFER, 0);
    }
    VL_Raster->disableClientState(ClientCapability::VERTEX_ARRAY);
    VL_Raster->disableClientState(ClientCapability::COLOR_ARRAY);
    if (areArrows) {
        VL_Raster->disableClientState(ClientCapability::NORMAL_ARRAY);
    }
}

ParticlePath ColoredParticles::drawPoints(float pixels, float smallest) {
    if (recordCount == 0) {
        return ParticlePath::NONE;
    }
    FixedPass const pass;
    _openArrays();
    for (Group const& group : groups) {
        VL_Raster->setPointSize(std::max(pixels * group.size, smallest));
        VL_Raster->drawArrays(Primitive::POINTS, group.first, group.count);
    }
    _closeArrays();
    return bufferId != 0 ? ParticlePath::BUFFER : ParticlePath::MEMORY;
}

ParticlePath ColoredParticles::drawWithEffect(float size) {
    if (recordCount == 0) {
        return ParticlePath::NONE;
    }
    if (areArrows) {
        _drawWith(arrows, size);
    } else {
        _drawWith(spheres, size);
    }
    return bufferId != 0 ? ParticlePath::BUFFER_AND_EFFECT : ParticlePath::CHUNKS_AND_EFFECT;
}

template <class Effect>
void ColoredParticles::_drawWith(std::unique_ptr<Effect>& effect, float size) {
    VL_Raster->pushFillingFront(FILLING_SOLID);
    VL_Raster->pushFillingBack(FILLING_SOLID);
    if (effect == nullptr) {
        effect = std::make_unique<Effect>();
        effect->create();
    }
    effect->init();
    effect->setSize(size);
    effect->preprocess();
    _openArrays();
    VL_Raster->drawArrays(Primitive::POINTS, 0, recordCount);
    _closeArrays();
    effect->postprocess();
    effect->cleanup();
    VL_Raster->popFillingFront();
    VL_Raster->popFillingBack();
}

}  // namespace vellum::toolkit
