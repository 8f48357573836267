#include "toolkit/ParticleRenderer.h"

#include "Particles_RL_GL_v2.h"
#include "foundation/geometry/ParticleSystemChunk_v2.h"
#include "foundation/raster/Core_RL.h"
#include "glsl_shader/ArrowRendering_shader.h"
#include "glsl_shader/PointRendering_shader.h"
#include "glsl_shader/SphereRendering_shader.h"
#include "internal/misuse.h"
#include "toolkit/Layer.h"
#include "toolkit/internal/ColoredParticles.h"
#include "toolkit/internal/ImpostorView.h"
#include "toolkit/internal/ParticleRamps.h"
#include "toolkit/internal/SolidArrows.h"
#include "toolkit/internal/gl.h"
#include "toolkit/internal/llvmpipe.h"
#include "toolkit/internal/particle_values.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <new>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

namespace vellum::toolkit {

namespace {

using Magnitude = Particles_RL_GL_v2::RenderMagnitude;
using Mode = Particles_RL_GL_v2::RenderMode;

constexpr float ARROWS_AS_POINTS = 2;                  // pixels
constexpr unsigned int MOST_FOR_LLVMPIPE = 1U << 20U;  // particles in a buffer

Mode::type modeOf(ParticleMode mode) {
    switch (mode) {
    case ParticleMode::SPHERES:
        return Mode::SPHERES;
    case ParticleMode::ARROWS:
    case ParticleMode::SOLID_ARROWS:
        return Mode::ARROWS;
    case ParticleMode::POINTS:
        break;
    }
    return Mode::POINTS;
}

/// The effects of all renderers of a look: they are equal but for their parameters, and compiling takes time.
struct Effects {
    PointRendering_shader* points = nullptr;
    SphereRendering_shader* spheres = nullptr;
    ArrowRendering_shader* arrows = nullptr;

    void release() {
        delete std::exchange(points, nullptr);
        delete std::exchange(spheres, nullptr);
        delete std::exchange(arrows, nullptr);
    }
};

/// The library's renderer of the particles of one ramp.
class RampRenderer : public Particles_RL_GL_v2 {
public:
    /// \param drawsAll always all particles, so the table for a random part of them is not needed
    explicit RampRenderer(bool drawsAll) {
        init();
        if (drawsAll) {
            delete[] std::exchange(shuffledIndices, nullptr);
        }
    }

    ~RampRenderer() override {
        // The buffer would go through a layer.
        if (VL_Raster == nullptr && vboId != 0) {
            glDeleteBuffers(1, &vboId);
            vboId = 0;
        }
        clear();
    }

    ParticlePath draw(ParticleSystem_v2 const& system, ParticleRamp const& ramp, unsigned int channel,
                      ParticleMode mode, float size, float percent, bool rebuild, Effects& effects) {
        // render() replaces the effect that it finds if that is of another kind.
        std::swap(pointShader, effects.points);
        std::swap(sphereShader, effects.spheres);
        std::swap(arrowShader, effects.arrows);
        setRenderMode(modeOf(mode));
        auto const magnitude = channel == ParticleChannel_v2::NONE ? Magnitude::MIN_COLOR : Magnitude::LENGTH;
        // Workaround: llvmpipe has its buffers in main memory, where the particles are already, and draws no
        // faster from them. A part of the particles is another one without a buffer.
        bool const isBuffered = percent < 100 || system.size() < MOST_FOR_LLVMPIPE || !isLlvmpipe();
        render(system, false, rebuild, 1, ramp.low, ramp.high, ramp.lowest, ramp.highest, ramp.above, size,
               channel, percent, isBuffered, true, magnitude);
        std::swap(pointShader, effects.points);
        std::swap(sphereShader, effects.spheres);
        std::swap(arrowShader, effects.arrows);
        return _path();
    }

private:
    ParticlePath _path() {
        constexpr unsigned int WITH_EFFECT = 1;
        constexpr unsigned int FILLED = 2;
        constexpr unsigned int BUFFER_OR_CHUNKS = 3;
        if (lastPath == WITH_EFFECT) {
            return ParticlePath::BUFFER_AND_EFFECT;
        }
        if (lastPath != BUFFER_OR_CHUNKS) {
            return ParticlePath::MEMORY;
        }
        if (VL_Raster->checkShaderSupport()) {
            return ParticlePath::CHUNKS_AND_EFFECT;
        }
        // Otherwise the library would fill a buffer with colors again in every frame.
        lastPath = FILLED;
        return ParticlePath::BUFFER;
    }
};

/// The middle of the box around all particles that have a place.
Vector3<double> middleOf(ParticleSystem_v2 const& system) {
    constexpr float FAR = std::numeric_limits<float>::max();
    Vector3<float> least{FAR, FAR, FAR};
    Vector3<float> most{-FAR, -FAR, -FAR};
    system.compact();
    for (ParticleSystemChunk_v2 const* chunk = system.firstChunk(); chunk != nullptr; chunk = chunk->next()) {
        Vector3<float> const* const positions = chunk->channelData(0)->asVectors();
        for (unsigned int slot = 0; slot < chunk->count(); ++slot) {
            Vector3<float> const& p = positions[slot];
            if (std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z)) {
                least = {std::min(least.x, p.x), std::min(least.y, p.y), std::min(least.z, p.z)};
                most = {std::max(most.x, p.x), std::max(most.y, p.y), std::max(most.z, p.z)};
            }
        }
    }
    return (convert<double>(least) + convert<double>(most)) * 0.5;
}

bool hasPositions(ParticleSystem_v2 const& system) {
    ParticleChannel_v2 const* const record = system.findChannel(0);
    return record != nullptr && record->type == ParticleChannel_v2::VECTOR &&
           system.channelId("position") == 0;
}

bool isDrawable(ParticleSystem_v2 const& system, ParticleLook const& look) {
    return look.size > 0 && std::isfinite(look.size) && hasPositions(system) &&
           drawnOf(system.size(), look.percent) != 0;
}

/// Keeps the state that effects leave changed.
class KeptState {
public:
    // Not by glPushAttrib. Workaround: Mesa 22.3 restores only what changed while the push was the innermost
    // one (see docs/drivers.md), and effects change the color and the width inside a push of their own.
    explicit KeptState(ParticleMode mode) : hasLines(mode == ParticleMode::ARROWS) {
        glGetFloatv(GL_CURRENT_COLOR, color);
        if (hasLines) {
            glGetFloatv(GL_LINE_WIDTH, &lineWidth);
        }
    }
    ~KeptState() {
        if (hasLines) {
            glLineWidth(lineWidth);
        }
        glColor4fv(color);
    }
    KeptState(KeptState const&) = delete;
    KeptState& operator=(KeptState const&) = delete;

private:
    bool hasLines;
    float color[4] = {1, 1, 1, 1};
    float lineWidth = 1;
};

/// The view of impostors while it lives, then that of the frame again.
class RoundView {
public:
    RoundView(View const& view, double diameter) : view(view) {
        glGetIntegerv(GL_MATRIX_MODE, &matrixMode);
        ImpostorView const impostors = ImpostorView::of(view, diameter);
        int const side = std::max(view.viewport.width, view.viewport.height);
        View{impostors.projection, impostors.modelView, {view.viewport.x, view.viewport.y, side, side}}
            .load();
        effectSize = static_cast<float>(impostors.size);
    }
    ~RoundView() {
        view.load();
        glMatrixMode(static_cast<GLenum>(matrixMode));
    }
    RoundView(RoundView const&) = delete;
    RoundView& operator=(RoundView const&) = delete;

    float sizeForEffect() const { return effectSize; }

private:
    View const& view;
    GLint matrixMode = GL_MODELVIEW;
    float effectSize;
};

/// Whether records of colored particles are the same for both looks.
bool isFilledAlike(ParticleLook const& a, ParticleLook const& b) {
    return a.mode == b.mode && a.channel == b.channel && a.quantity == b.quantity && a.low == b.low &&
           a.high == b.high && a.colors == b.colors && a.percent == b.percent &&
           a.colorChannel == b.colorChannel && a.sizeChannel == b.sizeChannel;
}

}  // namespace

/// What is drawn is one system as it is, or copies of its particles, one for each ramp; or particles with
/// colors or sizes of their own; or solid arrows.
class ParticleRenderer::Parts {
public:
    Parts() = default;
    ~Parts() { effects.release(); }
    Parts(Parts const&) = delete;
    Parts& operator=(Parts const&) = delete;

    void markChanged() { isChanged = true; }
    ParticleDrawing draw(ParticleSystem_v2 const& system, ParticleLook const& look, View const& view);

private:
    ParticleMode _modeOf(ParticleSystem_v2 const& system, ParticleLook const& look);
    bool _prepare(ParticleRamps const& wanted, ParticleLook const& look, ParticleMode mode);
    bool _prepareColored(ParticleSystem_v2 const& system, ParticleLook const& look, ParticleMode mode);
    bool _prepareArrows(ParticleSystem_v2 const& system, ParticleLook const& look);
    void _forgetRamps();
    void _remember(ParticleSystem_v2 const& system, ParticleLook const& look, ParticleMode mode);
    unsigned int _count(ParticleSystem_v2 const& system, ParticleLook const& look) const;
    float _pointSize(ParticleSystem_v2 const& system, ParticleLook const& look, View const& view);
    ParticlePath _drawAll(ParticleSystem_v2 const& system, float percent, ParticleMode mode, float size);

    bool isChanged = true;
    std::optional<bool> geometryStages;  // of the driver
    bool hasShaders = false;

    // What was drawn last.
    std::optional<ParticleRamps::Source> source;
    ParticleLook look;
    ParticleMode mode = ParticleMode::POINTS;
    unsigned int channel = ParticleChannel_v2::NONE;
    double unit = 1;
    std::vector<ParticleRamp> ramps;
    bool isRefilled = true;                                  // by the drawing that is being made
    std::vector<std::unique_ptr<ParticleSystem_v2>> copies;  // one for each ramp, or none
    std::vector<std::unique_ptr<RampRenderer>> renderers;    // one for each ramp
    std::optional<Vector3<double>> middle;                   // of the particles, if it was needed
    Effects effects;
    ParticleSystem_v2 const* drawn = nullptr;   // of the two below
    unsigned int particles = 0;                 // of this system
    std::unique_ptr<ColoredParticles> colored;  // null if the look does not need it
    std::unique_ptr<SolidArrows> arrows;        // null if the look does not need them
};

ParticleDrawing ParticleRenderer::Parts::draw(ParticleSystem_v2 const& system, ParticleLook const& look,
                                              View const& view) {
    if (VL_Raster == nullptr || !isDrawable(system, look)) {
        return {ParticlePath::NONE, look.mode};
    }
    ParticleMode const mode = _modeOf(system, look);
    bool const isPrepared = mode == ParticleMode::SOLID_ARROWS ? _prepareArrows(system, look)
                            : ColoredParticles::isNeeded(system, look, mode)
                                ? _prepareColored(system, look, mode)
                                : _prepare(ParticleRamps(system, look, mode), look, mode);
    if (!isPrepared) {
        return {ParticlePath::NONE, look.mode};
    }
    ParticlePath path = ParticlePath::NONE;
    KeptState const state(mode);
    switch (mode) {
    case ParticleMode::SPHERES: {
        RoundView const round(view, static_cast<double>(look.size));
        path = _drawAll(system, look.percent, mode, round.sizeForEffect());
        break;
    }
    case ParticleMode::ARROWS: {
        // The effect turns the sides of the head in clip space: they are equal in a square viewport only.
        RoundView const round(view, static_cast<double>(look.size));
        double const unit = colored != nullptr ? colored->unit() : this->unit;
        // It puts an arrow's tip at twice the vector.
        path = _drawAll(system, look.percent, mode,
                        static_cast<float>(static_cast<double>(look.size) * unit / 2));
        break;
    }
    case ParticleMode::SOLID_ARROWS:
        path = arrows->draw();
        break;
    case ParticleMode::POINTS:
        path = _drawAll(system, look.percent, mode, _pointSize(system, look, view));
        break;
    }
    return {path, mode, path != ParticlePath::NONE ? _count(system, look) : 0};
}

ParticleMode ParticleRenderer::Parts::_modeOf(ParticleSystem_v2 const& system, ParticleLook const& look) {
    if (look.mode == ParticleMode::POINTS) {
        return ParticleMode::POINTS;
    }
    bool const hasVectors = isOfType(system, look.channel, ParticleChannel_v2::VECTOR);
    if (look.mode != ParticleMode::SPHERES && !hasVectors) {
        return ParticleMode::POINTS;
    }
    if (look.mode == ParticleMode::SOLID_ARROWS) {
        return ParticleMode::SOLID_ARROWS;
    }
    if (!geometryStages) {
        geometryStages = hasGeometryStages(*VL_Raster);
    }
    return *geometryStages ? look.mode : ParticleMode::POINTS;
}

/// Renews copies, colors and renderers as far as they differ from the last drawing.
/// \return false if memory does not suffice; the next drawing tries again.
bool ParticleRenderer::Parts::_prepare(ParticleRamps const& wanted, ParticleLook const& look,
                                       ParticleMode mode) {
    bool const hadShaders = std::exchange(hasShaders, VL_Raster->checkShaderSupport());
    colored.reset();
    arrows.reset();
    ParticleRamps::Source const wantedSource = wanted.source();
    isRefilled = isChanged || !source || !(*source == wantedSource) || hadShaders != hasShaders;
    bool const isRecolored = isRefilled || this->look != look || this->mode != mode;
    if (!isRecolored) {
        return true;
    }
    source.reset();
    try {
        std::vector<ParticleRamp> former = std::exchange(ramps, wanted.ramps());
        this->look = look;
        this->mode = mode;
        channel = wanted.channel();
        unit = wanted.unit();
        if (isRefilled) {
            middle.reset();
            if (wanted.isDirect() != copies.empty()) {
                renderers.clear();
            }
            if (wanted.isDirect()) {
                copies.clear();
            } else {
                wanted.copy(copies);
            }
        } else {
            // Without effects the colors are in the buffers.
            isRefilled = !hasShaders && !(former == ramps);
        }
        renderers.resize(ramps.size());
        for (std::unique_ptr<RampRenderer>& renderer : renderers) {
            if (renderer == nullptr) {
                renderer = std::make_unique<RampRenderer>(!copies.empty());
            }
        }
    } catch (std::bad_alloc const&) {
        isChanged = true;
        return false;
    }
    source = wantedSource;
    isChanged = false;
    return true;
}

/// The same for particles with colors or sizes of their own.
bool ParticleRenderer::Parts::_prepareColored(ParticleSystem_v2 const& system, ParticleLook const& look,
                                              ParticleMode mode) {
    bool const hadShaders = std::exchange(hasShaders, VL_Raster->checkShaderSupport());
    bool const isKept = !isChanged && colored != nullptr && hadShaders == hasShaders && this->mode == mode &&
                        drawn == &system && particles == system.size() && isFilledAlike(this->look, look);
    if (isKept) {
        return true;
    }
    _forgetRamps();
    arrows.reset();
    isChanged = true;
    try {
        if (colored == nullptr) {
            colored = std::make_unique<ColoredParticles>();
        }
        colored->fill(system, look, mode);
        _remember(system, look, mode);
    } catch (std::bad_alloc const&) {
        return false;
    }
    return true;
}

/// The same for solid arrows.
bool ParticleRenderer::Parts::_prepareArrows(ParticleSystem_v2 const& system, ParticleLook const& look) {
    bool const isKept = !isChanged && arrows != nullptr && drawn == &system && particles == system.size() &&
                        this->look == look;
    if (isKept) {
        return true;
    }
    _forgetRamps();
    colored.reset();
    isChanged = true;
    try {
        if (arrows == nullptr) {
            arrows = std::make_unique<SolidArrows>();
        }
        arrows->fill(system, look);
        _remember(system, look, ParticleMode::SOLID_ARROWS);
    } catch (std::bad_alloc const&) {
        return false;
    }
    return true;
}

void ParticleRenderer::Parts::_forgetRamps() {
    source.reset();
    ramps.clear();
    copies.clear();
    renderers.clear();
}

void ParticleRenderer::Parts::_remember(ParticleSystem_v2 const& system, ParticleLook const& look,
                                        ParticleMode mode) {
    this->look = look;
    this->mode = mode;
    drawn = &system;
    particles = system.size();
    middle.reset();
    isChanged = false;
}

unsigned int ParticleRenderer::Parts::_count(ParticleSystem_v2 const& system,
                                             ParticleLook const& look) const {
    if (arrows != nullptr) {
        return arrows->count();
    }
    if (colored != nullptr) {
        return colored->count();
    }
    if (copies.empty()) {
        return drawnOf(system.size(), look.percent);
    }
    return std::accumulate(copies.begin(), copies.end(), 0U,
                           [](unsigned int sum, auto const& copy) { return sum + copy->size(); });
}

float ParticleRenderer::Parts::_pointSize(ParticleSystem_v2 const& system, ParticleLook const& look,
                                          View const& view) {
    switch (look.mode) {
    case ParticleMode::SOLID_ARROWS:
    case ParticleMode::ARROWS:
        return ARROWS_AS_POINTS;
    case ParticleMode::SPHERES:
        if (!middle) {
            middle = middleOf(system);
        }
        return static_cast<float>(static_cast<double>(look.size) * view.pixelsPerUnit(*middle));
    case ParticleMode::POINTS:
        break;
    }
    return look.size;
}

ParticlePath ParticleRenderer::Parts::_drawAll(ParticleSystem_v2 const& system, float percent,
                                               ParticleMode mode, float size) {
    constexpr unsigned int SHOWN = 1;
    constexpr float ALL = 100;
    // Spheres that are points: each is to be seen.
    float const smallest = look.mode == ParticleMode::SPHERES ? 1 : 0;
    if (mode == ParticleMode::POINTS && colored != nullptr) {
        return colored->drawPoints(size, smallest);
    }
    if (colored != nullptr) {
        return colored->drawWithEffect(size);
    }
    size = mode == ParticleMode::POINTS ? std::max(size, smallest) : size;
    if (copies.empty()) {
        return renderers[0]->draw(system, ramps[0], channel, mode, size, percent, isRefilled, effects);
    }
    ParticlePath path = ParticlePath::NONE;
    for (std::size_t k = 0; k < copies.size(); ++k) {
        if (copies[k]->size() != 0) {
            path = std::max(
                path, renderers[k]->draw(*copies[k], ramps[k], SHOWN, mode, size, ALL, isRefilled, effects));
        }
    }
    return path;
}

// == ParticleRenderer ==

ParticleRenderer::ParticleRenderer() : parts(std::make_unique<Parts>()) {}

ParticleRenderer::~ParticleRenderer() = default;

ParticleRenderer::ParticleRenderer(ParticleRenderer&&) noexcept = default;

ParticleRenderer& ParticleRenderer::operator=(ParticleRenderer&&) noexcept = default;

void ParticleRenderer::markChanged() {
    if (parts != nullptr) {
        parts->markChanged();
    }
}

void ParticleRenderer::release() {
    parts.reset();
}

ParticleDrawing drawParticles(ParticleRenderer& renderer, ParticleSystem_v2 const& system,
                              ParticleLook const& look, View const& view) {
    misuse::requireLayer("drawParticles");
    if (renderer.parts == nullptr) {
        renderer.parts = std::make_unique<ParticleRenderer::Parts>();
    }
    return renderer.parts->draw(system, look, view);
}

}  // namespace vellum::toolkit
