#include "Particles_RL_GL_v2.h"

#include "glsl_shader/ArrowRendering_shader.h"
#include "glsl_shader/PointRendering_shader.h"
#include "glsl_shader/SphereRendering_shader.h"
#include "internal/misuse.h"
#include "internal/particles/even_thinning.h"
#include "internal/particles/particle_colors.h"
#include "internal/particles/particle_memory.h"
#include "internal/particles/particle_records.h"

#include "foundation/geometry/ParticleSystemChunk_v2.h"
#include "foundation/raster/Core_RL.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <memory>
#include <new>
#include <utility>

namespace vellum {

namespace {

constexpr unsigned int CHUNK = ParticleSystemChunk_v2::CAPACITY;
constexpr unsigned long RECORD_STRIDE = sizeof(ParticleRecord);
constexpr std::size_t COLOR_OFFSET = offsetof(ParticleRecord, color);
constexpr unsigned int VECTOR_STRIDE = sizeof(Vector3<float>);
// Deliberate (scalar-stride): green and blue of a particle are the scalars of the next two.
constexpr unsigned int SCALAR_STRIDE = sizeof(float);
constexpr unsigned int BATCH_BITS = 19;  // 524288 particles
constexpr unsigned int BATCH = 1U << BATCH_BITS;

// The values of lastPath.
constexpr unsigned int PATH_VBO_WITH_EFFECT = 1;
// Deliberate (path-two): counts as a filled buffer; only a subclass sets it.
constexpr unsigned int PATH_VBO_OF_SUBCLASS = 2;
constexpr unsigned int PATH_VBO_OR_CHUNKS = 3;
constexpr unsigned int PATH_MEMORY = 4;

// Deliberate (line-tags): tags by which a render layer distinguishes the two paths, not lines of this source.
constexpr int LINE_OF_VBO_NO_SHADERS = 1109;
constexpr int LINE_OF_VBO_WITH_SHADERS = 884;

void reportUnknownType() {
    std::cerr << "channel.getType() not found. Default value will be used.";
}

template <class Effect>
Effect& makeEffect(Effect*& effect, Base_shader::ProcessType type) {
    if (effect == nullptr || effect->processType() != type) {
        delete std::exchange(effect, nullptr);
        effect = new Effect(type);
        effect->create();
        effect->init();
    }
    return *effect;
}

template <class Effect>
void setRange(Effect& effect, float scale, float minMagnitude, float maxMagnitude,
              Color4<float> const& minColor, Color4<float> const& maxColor) {
    effect.setMaxMagnitude(maxMagnitude);
    effect.setMinMagnitude(minMagnitude);
    effect.setMagnitudeScale(scale);
    effect.setMinColor(minColor);
    effect.setMaxColor(maxColor);
}

}  // namespace

/// The source of the records of a buffer.
struct Particles_RL_GL_v2::BufferFilling {
    ParticleSystem_v2 const& system;
    unsigned int channel;
    ColorParameters look;
    EvenThinning thinning;
    RecordFormula (*colors)(ParticleChannelKind kind, ColorParameters const& look);
};

// == Lifecycle ==

Particles_RL_GL_v2::Particles_RL_GL_v2() {
    _setDefaults();
    vboSupported = false;
}

Particles_RL_GL_v2::~Particles_RL_GL_v2() {
    resetBuffers();
    delete[] std::exchange(shuffledIndices, nullptr);
    ::operator delete(ownedBlock);
}

void Particles_RL_GL_v2::init() {
    misuse::requireLayer("Particles_RL_GL_v2::init");
    misuse::requireContext("Particles_RL_GL_v2::init");
    delete[] std::exchange(hostBuffer, nullptr);
    delete[] std::exchange(shuffledIndices, nullptr);
    _setDefaults();
    vboSupported = VL_Raster->isExtensionSupported("GL_ARB_vertex_buffer_object") ||
                   VL_Raster->isExtensionSupported("ARB_vertex_buffer_object");
    shuffledIndices = new unsigned short[CHUNK]();
}

void Particles_RL_GL_v2::_setDefaults() {
    vboId = 0;
    vboSizeKB = 0;
    vboParticleCount = 0;
    hostCapacity = 0;
    vboCapacity = 0;
    reservedMode = 2;
    programId = 0;
    std::fill(std::begin(shaderIds), std::end(shaderIds), 0U);
    renderMode = RenderMode::POINTS;
    lastPath = 0;
    pointShader = nullptr;
    sphereShader = nullptr;
    arrowShader = nullptr;
    shuffledCount = 0;
    vboRecords = 0;
}

void Particles_RL_GL_v2::clear() {
    delete[] std::exchange(hostBuffer, nullptr);
    if (vboId != 0) {
        misuse::requireLayer("Particles_RL_GL_v2::clear");
        misuse::requireContext("Particles_RL_GL_v2::clear");
        VL_Raster->deleteBuffers(1, &vboId);
        vboId = 0;
    }
    vboRecords = 0;
    hostCapacity = 0;
}

void Particles_RL_GL_v2::resetBuffers() {
    // Deliberate (kept-buffer-sizes): the counters keep their values.
    delete[] std::exchange(hostBuffer, nullptr);
    if (vboId != 0) {
        misuse::requireLayer("Particles_RL_GL_v2::resetBuffers");
        misuse::requireContext("Particles_RL_GL_v2::resetBuffers");
        VL_Raster->bindBuffer(BufferTarget::ARRAY_BUFFER, vboId);
        VL_Raster->bufferData(BufferTarget::ARRAY_BUFFER, 1, nullptr, BufferUsage::STREAM_DRAW);
        VL_Raster->mapBuffer(BufferTarget::ARRAY_BUFFER, BufferAccess::READ_WRITE);
        VL_Raster->deleteBuffers(1, &vboId);  // ends the mapping
        vboId = 0;
    }
    vboRecords = 0;
    for (unsigned int const id : shaderIds) {
        if (id != 0) {
            VL_Raster->detachShader(programId, id);
        }
    }
    for (unsigned int& id : shaderIds) {
        if (id != 0) {
            VL_Raster->deleteShader(id);
            id = 0;
        }
    }
    if (programId != 0) {
        VL_Raster->deleteProgram(programId);
        programId = 0;
    }
}

void Particles_RL_GL_v2::releaseEffects() {
    delete std::exchange(pointShader, nullptr);
    delete std::exchange(sphereShader, nullptr);
    delete std::exchange(arrowShader, nullptr);
}

void Particles_RL_GL_v2::setRenderMode(RenderMode::type mode) {
    renderMode = mode;
}

// == Drawing ==

void Particles_RL_GL_v2::render(ParticleSystem_v2 const& system, bool /*flag*/, float const& /*unused*/,
                                float const& percent) {
    misuse::requireLayer("Particles_RL_GL_v2::render");
    misuse::requireContext("Particles_RL_GL_v2::render");
    system.compact();
    unsigned int const position = system.channelId("position");
    unsigned int number = 0;
    for (ParticleSystemChunk_v2 const* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
        ParticleChannelChunkData_v2* const data = chunk->channelData(position);
        renderChunkRaw(number, data != nullptr ? data->asVectors() : nullptr, nullptr, chunk->count(),
                       percent, true, 0, false);
        ++number;
    }
}

void Particles_RL_GL_v2::render(ParticleSystem_v2 const& system, bool keepFlag, bool rebuild,
                                float const& scale, float const& minMagnitude, float const& maxMagnitude,
                                Color4<float> const& minColor, Color4<float> const& maxColor,
                                Color4<float> const& maxClampColor, float const& pointSize,
                                unsigned int const& channel, float const& percent, bool useVbo,
                                bool useShaders, RenderMagnitude::type magnitude) {
    misuse::requireLayer("Particles_RL_GL_v2::render");
    misuse::requireContext("Particles_RL_GL_v2::render");
    bool const fits = fitsIntoVideoMemory(percent, system.size(), VL_Raster->getFreeGpuMemory(), vboSizeKB);
    bool const vboOk = fits && useVbo && vboSupported;
    if (VL_Raster->checkShaderSupport() && useShaders) {
        if (vboOk &&
            renderFromVboWithShaders(system, keepFlag, rebuild, scale, minMagnitude, maxMagnitude, minColor,
                                     maxColor, maxClampColor, pointSize, channel, percent, magnitude)) {
            return;
        }
        renderFromChunksWithShaders(system, keepFlag, false, scale, minMagnitude, maxMagnitude, minColor,
                                    maxColor, maxClampColor, pointSize, channel, percent, magnitude);
        return;
    }
    if (vboOk && renderFromVboNoShaders(system, false, rebuild, scale, minMagnitude, maxMagnitude, minColor,
                                        maxColor, maxClampColor, pointSize, channel, percent, magnitude)) {
        return;
    }
    renderFromMemoryNoShaders(system, false, rebuild, scale, minMagnitude, maxMagnitude, minColor, maxColor,
                              maxClampColor, pointSize, channel, percent, magnitude);
}

// == Paths ==

bool Particles_RL_GL_v2::renderFromVboNoShaders(ParticleSystem_v2 const& system, bool /*keepFlag*/,
                                                bool rebuild, float const& scale, float const& minMagnitude,
                                                float const& maxMagnitude, Color4<float> const& minColor,
                                                Color4<float> const& maxColor,
                                                Color4<float> const& maxClampColor, float const& pointSize,
                                                unsigned int const& channel, float const& percent,
                                                RenderMagnitude::type magnitude) {
    BufferFilling const filling{
        system,
        channel,
        {scale, minMagnitude, maxMagnitude, minColor, maxColor, maxClampColor, magnitude},
        EvenThinning(system.size(), percent),
        particle_colors::inBuffer};
    if (!_prepareVbo(filling, rebuild, "renderFromVboNoShaders", LINE_OF_VBO_NO_SHADERS)) {
        return false;
    }
    _drawFromVbo(filling.thinning.target(), &pointSize);
    lastPath = PATH_VBO_OR_CHUNKS;
    return true;
}

bool Particles_RL_GL_v2::renderFromVboWithShaders(ParticleSystem_v2 const& system, bool /*keepFlag*/,
                                                  bool rebuild, float const& scale, float const& minMagnitude,
                                                  float const& maxMagnitude, Color4<float> const& minColor,
                                                  Color4<float> const& maxColor,
                                                  Color4<float> const& maxClampColor, float const& pointSize,
                                                  unsigned int const& channel, float const& percent,
                                                  RenderMagnitude::type magnitude) {
    configureShaders(false, pointSize, scale, minMagnitude, maxMagnitude, minColor, maxColor, maxClampColor,
                     magnitude);
    BufferFilling const filling{
        system,
        channel,
        {scale, minMagnitude, maxMagnitude, minColor, maxColor, maxClampColor, magnitude},
        EvenThinning(system.size(), percent),
        particle_colors::forEffect};
    bool const isReady = _prepareVbo(filling, rebuild, "renderFromVboWithShaders", LINE_OF_VBO_WITH_SHADERS);
    if (isReady) {
        _drawFromVbo(filling.thinning.target(), nullptr);
    }
    _closeEffect();
    if (isReady) {
        lastPath = PATH_VBO_WITH_EFFECT;
    }
    return isReady;
}

void Particles_RL_GL_v2::renderFromMemoryNoShaders(
    ParticleSystem_v2 const& system, bool /*keepFlag*/, bool rebuild, float const& scale,
    float const& minMagnitude, float const& maxMagnitude, Color4<float> const& minColor,
    Color4<float> const& maxColor, Color4<float> const& maxClampColor, float const& pointSize,
    unsigned int const& channel, float const& percent, RenderMagnitude::type magnitude) {
    BufferFilling const filling{
        system,
        channel,
        {scale, minMagnitude, maxMagnitude, minColor, maxColor, maxClampColor, magnitude},
        EvenThinning(system.size(), percent),
        particle_colors::inMemory};
    unsigned int const target = filling.thinning.target();
    // Buffers that were reset are gone, although their capacity is still known.
    bool const isTooSmall = target > hostCapacity || hostBuffer == nullptr;
    if (isTooSmall) {
        delete[] std::exchange(hostBuffer, nullptr);
        hostCapacity = 0;
        hostBuffer = new float[std::size_t{target} * RECORD_FLOATS];
        hostCapacity = target;
    }
    if (isTooSmall || rebuild || lastPath != PATH_MEMORY) {
        _fill(filling, hostBuffer);
    }

    VL_Raster->setPointSize(pointSize);
    float* batch = hostBuffer;
    for (unsigned int drawn = 0; drawn <= target >> BATCH_BITS; ++drawn) {
        bool const isLast = drawn == target >> BATCH_BITS;
        VL_Raster->enableClientState(ClientCapability::VERTEX_ARRAY);
        VL_Raster->enableClientState(ClientCapability::COLOR_ARRAY);
        VL_Raster->vertexPointer(3, DataType::FLOAT, RECORD_STRIDE, batch);
        VL_Raster->colorPointer(3, DataType::FLOAT, RECORD_STRIDE, batch + COLOR_OFFSET / sizeof(float));
        VL_Raster->drawArrays(Primitive::POINTS, 0, isLast ? target & (BATCH - 1) : BATCH);
        VL_Raster->disableClientState(ClientCapability::VERTEX_ARRAY);
        VL_Raster->disableClientState(ClientCapability::COLOR_ARRAY);
        if (!isLast) {
            batch += std::size_t{BATCH} * RECORD_FLOATS;
        }
    }
    lastPath = PATH_MEMORY;
}

void Particles_RL_GL_v2::renderFromChunksWithShaders(
    ParticleSystem_v2 const& system, bool /*keepFlag*/, bool /*rebuild*/, float const& scale,
    float const& minMagnitude, float const& maxMagnitude, Color4<float> const& minColor,
    Color4<float> const& maxColor, Color4<float> const& maxClampColor, float const& pointSize,
    unsigned int const& channel, float const& percent, RenderMagnitude::type magnitude) {
    configureShaders(false, pointSize, scale, minMagnitude, maxMagnitude, minColor, maxColor, maxClampColor,
                     magnitude);
    system.compact();

    unsigned int const position = system.channelId("position");
    ParticleChannelKind const kind = kindOf(channel, system.findChannel(channel));
    bool const isOneColor =
        (magnitude == RenderMagnitude::MIN_COLOR || magnitude == RenderMagnitude::MAX_COLOR) &&
        (renderMode == RenderMode::POINTS || renderMode == RenderMode::SPHERES);
    unsigned int number = 0;
    for (ParticleSystemChunk_v2 const* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
        ParticleChannelChunkData_v2* const positions = chunk->channelData(position);
        void* colors = nullptr;
        unsigned int stride = 0;
        if (kind == ParticleChannelKind::SCALAR) {
            colors = chunk->channelData(channel)->asFloats();
            stride = SCALAR_STRIDE;
        } else if (kind == ParticleChannelKind::VECTOR) {
            colors = chunk->channelData(channel)->asVectors();
            stride = VECTOR_STRIDE;
        } else if (kind == ParticleChannelKind::UNKNOWN) {
            reportUnknownType();
        }
        renderChunkRaw(number, positions != nullptr ? positions->asVectors() : nullptr, colors,
                       chunk->count(), percent, colors == nullptr || isOneColor, static_cast<int>(stride),
                       false);
        ++number;
    }
    _closeEffect();
    lastPath = PATH_VBO_OR_CHUNKS;
}

// == Parts of the paths ==

void Particles_RL_GL_v2::renderChunkRaw(unsigned int /*chunk*/, Vector3<float>* positions, void* colors,
                                        unsigned int count, float percent, bool noColor, int colorStride,
                                        bool /*flag*/) {
    if (positions == nullptr) {
        return;
    }
    bool const hasColors = !noColor && colors != nullptr;
    VL_Raster->enableClientState(ClientCapability::VERTEX_ARRAY);
    if (hasColors) {
        VL_Raster->enableClientState(ClientCapability::COLOR_ARRAY);
    }
    bool const isThinned = percent != 100.0F;
    if (isThinned) {
        count = std::min(count, CHUNK);
        initIndices(static_cast<int>(count));
    }
    VL_Raster->vertexPointer(3, DataType::FLOAT, VECTOR_STRIDE, positions);
    if (hasColors) {
        VL_Raster->colorPointer(3, DataType::FLOAT, static_cast<unsigned long>(colorStride), colors);
    }
    if (isThinned) {
        VL_Raster->drawElements(Primitive::POINTS, partOf(count, percent), DataType::UNSIGNED_SHORT,
                                shuffledIndices);
    } else {
        VL_Raster->drawArrays(Primitive::POINTS, 0, count);
    }
    VL_Raster->disableClientState(ClientCapability::VERTEX_ARRAY);
    if (hasColors) {
        VL_Raster->disableClientState(ClientCapability::COLOR_ARRAY);
    }
}

bool Particles_RL_GL_v2::checkEnoughMemoryinGPU(ParticleSystem_v2 const& system, float const& percent) const {
    return fitsIntoVideoMemory(percent, system.size(), VL_Raster->getFreeGpuMemory(), vboSizeKB);
}

void Particles_RL_GL_v2::initIndices(int count) {
    if (count < 0 || count > static_cast<int>(CHUNK) || shuffledIndices == nullptr ||
        shuffledCount == static_cast<unsigned int>(count)) {
        return;
    }
    for (int i = 0; i < count; ++i) {
        shuffledIndices[i] = static_cast<unsigned short>(i);
    }
    // Deliberate (srand-shuffle): the C library's own generator, seeded with the count, so that the same
    // particles are chosen in every frame.
    std::srand(static_cast<unsigned int>(count));
    for (int i = 0; i < count - 1; ++i) {
        int const j = i + std::rand() / (RAND_MAX / (count - i) + 1);
        std::swap(shuffledIndices[i], shuffledIndices[j]);
    }
    shuffledCount = static_cast<unsigned int>(count);
}

void Particles_RL_GL_v2::configureShaders(bool /*flag*/, float const& size, float const& scale,
                                          float const& minMagnitude, float const& maxMagnitude,
                                          Color4<float> minColor, Color4<float> maxColor,
                                          Color4<float> maxClampColor, RenderMagnitude::type magnitude) {
    VL_Raster->pushFillingFront(FILLING_SOLID);
    VL_Raster->pushFillingBack(FILLING_SOLID);

    bool const areArrowsPoints =
        renderMode == RenderMode::ARROWS && magnitude == RenderMagnitude::LENGTH_OF_POINTS;
    RenderMode::type const mode = areArrowsPoints ? RenderMode::POINTS : renderMode;
    auto const type = Base_shader::ProcessType(magnitude);
    // Deliberate (setter-order): spheres have the last two setters in another order.
    switch (mode) {
    case RenderMode::POINTS: {
        VL_Raster->setPointSize(size);
        PointRendering_shader& effect = makeEffect(pointShader, type);
        setRange(effect, scale, minMagnitude, maxMagnitude, minColor, maxColor);
        effect.setSize(size);
        effect.setMaxClampColor(maxClampColor);
        effect.preprocess();
        break;
    }
    case RenderMode::SPHERES: {
        SphereRendering_shader& effect = makeEffect(sphereShader, type);
        setRange(effect, scale, minMagnitude, maxMagnitude, minColor, maxColor);
        effect.setMaxClampColor(maxClampColor);
        effect.setSize(size);
        effect.preprocess();
        break;
    }
    case RenderMode::ARROWS: {
        ArrowRendering_shader& effect = makeEffect(arrowShader, type);
        setRange(effect, scale, minMagnitude, maxMagnitude, minColor, maxColor);
        effect.setSize(size);
        effect.setMaxClampColor(maxClampColor);
        effect.preprocess();
        break;
    }
    default:
        break;
    }
}

Array<char> Particles_RL_GL_v2::getShader(char const* path) {
    Array<char> text;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> const file(
        path != nullptr ? std::fopen(path, "r") : nullptr, std::fclose);
    if (file == nullptr || std::fseek(file.get(), 0, SEEK_END) != 0) {
        return text;
    }
    long const length = std::ftell(file.get());
    // A folder can be opened as well, and reports the largest number as its length.
    if (length < 0 || static_cast<unsigned long>(length) >= std::numeric_limits<int>::max()) {
        return text;
    }
    auto const zero = static_cast<unsigned int>(length);
    text.reserve(zero + 1, false);
    text.setSize(zero + 1);
    text[zero] = '\0';
    return text;
}

void Particles_RL_GL_v2::reloadShadersIfNeeded(Color4<float>& /*minColor*/, Color4<float>& /*maxColor*/,
                                               float /*minMagnitude*/, float /*maxMagnitude*/) {}

// == Effects ==

Mesh_RL_Shader* Particles_RL_GL_v2::_effectOf(RenderMode::type mode) const {
    switch (mode) {
    case RenderMode::POINTS:
        return pointShader;
    case RenderMode::SPHERES:
        return sphereShader;
    case RenderMode::ARROWS:
        return arrowShader;
    default:
        return nullptr;
    }
}

// Closes the pass that configureShaders() opened.
//
// Deliberate (effect-closed-by-mode): the render mode alone selects the effect. For arrows that were drawn as
// points, that is the arrow effect, or the point effect if there is no arrow effect yet.
void Particles_RL_GL_v2::_closeEffect() {
    if (renderMode != RenderMode::POINTS && renderMode != RenderMode::SPHERES &&
        renderMode != RenderMode::ARROWS) {
        return;
    }
    VL_Raster->popFillingFront();
    VL_Raster->popFillingBack();
    Mesh_RL_Shader* const ofMode = _effectOf(renderMode);
    Mesh_RL_Shader* const effect = ofMode != nullptr ? ofMode : pointShader;
    if (effect != nullptr) {
        effect->postprocess();
        effect->cleanup();
    }
}

// == Buffers ==

void Particles_RL_GL_v2::_fill(BufferFilling const& filling, float* records) const {
    ParticleChannelKind const kind = kindOf(filling.channel, filling.system.findChannel(filling.channel));
    // Deliberate (message-per-particle): one message per particle.
    for (unsigned int i = 0; kind == ParticleChannelKind::UNKNOWN && i < filling.thinning.target(); ++i) {
        reportUnknownType();
    }
    writeParticleRecords(filling.system, filling.channel, filling.colors(kind, filling.look),
                         filling.thinning, records);
}

// Fills the buffer with the records. Returns false if it is too large: the buffer is deleted then.
bool Particles_RL_GL_v2::_prepareVbo(BufferFilling const& filling, bool rebuild, char const* where,
                                     int line) {
    unsigned int const target = filling.thinning.target();
    if (vboId == 0) {
        VL_Raster->genBuffers(1, &vboId);
    }
    if (target > vboCapacity) {
        std::uint64_t const room = std::uint64_t{VL_Raster->getFreeGpuMemory()} + vboSizeKB;
        if (bufferKilobytes(target) > room) {
            // Deliberate (kept-buffer-name): GL makes the buffer again when the name is bound.
            VL_Raster->deleteBuffers(1, &vboId);
            vboRecords = 0;
            return false;
        }
        VL_Raster->bindBuffer(BufferTarget::ARRAY_BUFFER, 0);
        VL_Raster->bindBuffer(BufferTarget::ARRAY_BUFFER, vboId);
        _replaceStore(target);
        vboCapacity = target;
    } else {
        // A deleted store, or one with fewer particles, is refilled: GL would read beyond its end.
        bool const isFilled = lastPath == PATH_VBO_WITH_EFFECT || lastPath == PATH_VBO_OF_SUBCLASS;
        if (!rebuild && isFilled && target <= vboRecords) {
            return true;
        }
    }
    if (!_uploadToVbo(filling, where, line)) {
        return false;
    }
    if (rebuild) {
        vboParticleCount = target;
    }
    return true;
}

bool Particles_RL_GL_v2::_uploadToVbo(BufferFilling const& filling, char const* where, int line) {
    unsigned int const target = filling.thinning.target();
    // If GL refuses the new store, it keeps and maps the former one.
    bool const grows = target > vboRecords;
    vboRecords = 0;
    VL_Raster->bindBuffer(BufferTarget::ARRAY_BUFFER, vboId);
    if (target == 0) {
        _replaceStore(0);
        vboSizeKB = 0;
        return true;  // GL refuses to map an empty store
    }
    _replaceStore(target);
    void* const store = VL_Raster->mapBuffer(BufferTarget::ARRAY_BUFFER, BufferAccess::READ_WRITE);
    bool const hasError = VL_Raster->getError(where, line);
    // An error of bufferData cannot be distinguished from a pending error of the application. A growing store
    // is deleted after either, because the next drawing can allocate it again; a store that is large enough
    // is kept.
    if (store == nullptr || (grows && hasError)) {
        VL_Raster->bindBuffer(BufferTarget::ARRAY_BUFFER, 0);
        VL_Raster->deleteBuffers(1, &vboId);  // ends the mapping, if there is one
        return false;
    }
    vboSizeKB = static_cast<unsigned int>((target * RECORD_STRIDE) >> 10);
    _fill(filling, static_cast<float*>(store));
    VL_Raster->unmapBuffer(BufferTarget::ARRAY_BUFFER);
    vboRecords = target;
    return true;
}

// Orphans the store of the bound buffer: drawings in flight keep the former store, so the CPU does not wait.
void Particles_RL_GL_v2::_replaceStore(unsigned int records) {
    VL_Raster->bufferData(BufferTarget::ARRAY_BUFFER, records * RECORD_STRIDE, nullptr,
                          BufferUsage::STREAM_DRAW);
}

void Particles_RL_GL_v2::_drawFromVbo(unsigned int count, float const* pointSize) {
    VL_Raster->enableClientState(ClientCapability::VERTEX_ARRAY);
    VL_Raster->enableClientState(ClientCapability::COLOR_ARRAY);
    if (pointSize != nullptr) {
        VL_Raster->setPointSize(*pointSize);
    }
    VL_Raster->bindBuffer(BufferTarget::ARRAY_BUFFER, vboId);
    VL_Raster->vertexPointer(3, DataType::FLOAT, RECORD_STRIDE, nullptr);
    VL_Raster->colorPointer(3, DataType::FLOAT, RECORD_STRIDE, reinterpret_cast<void*>(COLOR_OFFSET));
    VL_Raster->drawArrays(Primitive::POINTS, 0, count);
    VL_Raster->bindBuffer(BufferTarget::ARRAY_BUFFER, 0);
    VL_Raster->disableClientState(ClientCapability::VERTEX_ARRAY);
    VL_Raster->disableClientState(ClientCapability::COLOR_ARRAY);
}

}  // namespace vellum
