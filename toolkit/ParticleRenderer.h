#pragma once

#include "foundation/geometry/ParticleSystem_v2.h"
#include "toolkit/ParticleLook.h"
#include "toolkit/View.h"
#include "toolkit/export.h"

#include <memory>

namespace vellum::toolkit {

/// The way that particles took to the screen.
enum class ParticlePath {
    NONE,               ///< nothing was drawn
    BUFFER_AND_EFFECT,  ///< from a buffer object, colored by the GPU
    CHUNKS_AND_EFFECT,  ///< from main memory, colored by the GPU: no buffers, or no memory for one
    BUFFER,             ///< from a buffer object, colored by the CPU: no shaders, or points that need none
    MEMORY              ///< from main memory, colored by the CPU: neither, or solid arrows
};

/// What drawParticles() has done.
struct ParticleDrawing {
    ParticlePath path;
    ParticleMode mode;  ///< what was drawn: points where spheres or arrows are not to be had
    unsigned int count =
        0;  ///< of the particles that were handed to GL; of solid arrows MOST_SOLID_ARROWS at most
};

/// What is kept from one drawing of particles to the next: buffers, effects, and what was drawn last. One for
/// each system and each context.
///
///     auto& particles = session.add<ParticleRenderer>();
///     ...
///     simulation.step(system);
///     particles.markChanged();
///     drawParticles(particles, system, look, view);
///
/// The context and the render layer of its first drawing must be there until its end, or until release().
class VL_TOOLKIT_EXPORT ParticleRenderer {
public:
    ParticleRenderer();  ///< GL: none.

    /// GL: those of release().
    ~ParticleRenderer();
    ParticleRenderer(ParticleRenderer&&) noexcept;
    ParticleRenderer& operator=(ParticleRenderer&&) noexcept;

    /// Says that positions, values, colors, sizes or the number of the particles have changed since the last
    /// drawing. GL: none.
    void markChanged();

    /// Deletes buffers, effects and copies; the next drawing makes them again.
    /// GL: glDeleteBuffers, glDeleteProgram, glDeleteShader for what there is.
    void release();

private:
    friend VL_TOOLKIT_EXPORT ParticleDrawing drawParticles(ParticleRenderer& renderer,
                                                           ParticleSystem_v2 const& system,
                                                           ParticleLook const& look, View const& view);
    class Parts;
    std::unique_ptr<Parts> parts;
};

/// Draws the particles of a system. Their positions are those of channel 0, named "position".
///
/// Colors are the same whatever path draws: the value of a particle, looked up in the map. A vector's length
/// with a map of two colors and `low` not above 0 goes to the library as it is; everything else (scalars,
/// single components, maps of more colors) is first turned into what all paths color alike, which costs a
/// copy of the drawn particles, 28 bytes for each, whenever they or what the look shows of them change.
/// Changes of size, and of as many other colors, copy nothing. A map of more than 257 colors is drawn with
/// 257 of them, arrows that are colored by a component with 256.
///
/// Colors and sizes of the particles' own (`colorChannel`, `sizeChannel`) are read into one list of records,
/// of 24 bytes for each point, 28 for each sphere and 36 for each arrow, in a buffer object where there is
/// memory for it; no system is copied. Looks with sizes have the colors of the map in these records, so
/// changes of the map read the particles again.
///
/// Solid arrows are triangles and lines of the plain colors, in the current line width. They are kept in
/// arrays in main memory, and made again when the particles or anything in the look changes. They have a box,
/// like those of lines, see arrow_box.h.
///
/// Particles with a position that is not finite are left out. A value that is not a number has the color
/// `undefined`, with two exceptions: arrows along a vector that is not finite are left out, solid ones also
/// along one of no length; and where the library draws the system as it is, a vector with a component that is
/// not a number is black or, as an arrow, left out. Nothing reads the values of such a system but the
/// library, so that moving particles cost no more than a direct call: where lengths can be NaN, set a map of
/// three colors or a `colorChannel`.
///
/// Spheres are round, and as deep as they are wide, in any projection and viewport, also off the middle; the
/// heads of arrows have equal sides. Where the driver has no geometry stages, spheres become points as wide
/// as a sphere in the middle of the particles is on the screen, and arrows of lines points of two pixels; so
/// do both kinds of arrows without vectors. The result says so.
///
/// The particles are read again after markChanged(), and when their number or the system is another one.
/// Drawing unchanged particles in the same look allocates no memory.
///
/// Nothing is drawn without a render layer, without positions, with a percentage of less than one particle,
/// with a size that is not above 0, and if memory does not suffice for the copy.
///
/// \param view what GL's matrices and viewport are now, as CameraController::load() or View::current() gave
/// it. GL: glGetFloatv(GL_CURRENT_COLOR); the calls of Particles_RL_GL_v2::render(), for more colors and for
/// copied arrows once for each of the map's parts that has particles, before it glGetString(GL_RENDERER) for
/// all of more than a million particles, which llvmpipe draws without a buffer; glColor4fv. Around those of
/// spheres and arrows glGetIntegerv(GL_MATRIX_MODE) and, twice, View::load(); glMatrixMode. Around those of
/// arrows also glGetFloatv(GL_LINE_WIDTH) and glLineWidth.
///
/// With colors or sizes of their own, in place of render(): for points glPushAttrib, glDisable(GL_LIGHTING)
/// and that of textures, glEnable(GL_BLEND), glBlendFunc, with shaders glUseProgram(0), the arrays,
/// glPointSize and glDrawArrays once for each size, glPopAttrib. For spheres and arrows a pass of
/// SphereRendering_shader or ArrowRendering_shader with the arrays and one glDrawArrays in it; arrows also
/// have glNormalPointer. Where the records are read glGenBuffers the first time, glBindBuffer, glBufferData,
/// glMapBuffer, glGetError, glUnmapBuffer, and glDeleteBuffers where there is no memory. For solid arrows the
/// same state as for points around Core_RL::renderArrow3_usingBuffers(). State: the point size; no program
/// and no buffer is bound. Everything else that it changes is restored.
VL_TOOLKIT_EXPORT ParticleDrawing drawParticles(ParticleRenderer& renderer, ParticleSystem_v2 const& system,
                                                ParticleLook const& look, View const& view);

}  // namespace vellum::toolkit
