#pragma once

#include "foundation/basic/Array.h"
#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Vector3.h"
#include "foundation/raster/Particles_RL_v2.h"
#include "raster_gl_export.h"

namespace vellum {

class ArrowRendering_shader;
class Mesh_RL_Shader;
class PointRendering_shader;
class SphereRendering_shader;

namespace Particles_RL_GL_v2_ns {

/// Selects the effect that draws the particles. Any other number selects none.
struct RenderMode {
    enum type : unsigned int { POINTS = 1, SPHERES = 2, ARROWS = 3 };
};

/// Selects the quantity of the color channel that determines the color. With an effect, the number selects
/// the variant of the effect (Base_shader::ProcessType). Without one:
///
///     0        the length of the vector
///     1, 2, 3  the absolute value of its x, y or z, truncated to an integer
///     4, 5     in main memory the minimum or the maximum color for all; in a buffer object as 0
///     6        as 0; arrows become points
struct RenderMagnitude {
    enum type : unsigned int {
        LENGTH = 0,
        X = 1,
        Y = 2,
        Z = 3,
        MIN_COLOR = 4,
        MAX_COLOR = 5,
        LENGTH_OF_POINTS = 6
    };
};

}  // namespace Particles_RL_GL_v2_ns

/// Draws a particle system as points, or as spheres and arrows through the impostor effects, colored by the
/// magnitude of a channel.
///
/// Use:
///
///     Particles_RL_GL_v2 particles;
///     particles.init();                                  // once; a context and a render layer are there
///     particles.setRenderMode(RenderMode::SPHERES);
///     particles.render(system, false, changed, 1, 0, maxSpeed, blue, red, white, 0.1F, velocity, 100,
///                      true, true, RenderMagnitude::LENGTH);
///
/// render() selects one of four paths: with an effect, a buffer object or the arrays of the chunks; without
/// one, a buffer object or main memory with colors computed on the CPU. Buffers have 24 bytes per particle:
/// position and color, three floats each. Every path can draw a percentage of the particles: buffers are
/// thinned evenly (in the order of iterators), chunks by a random selection that is the same in every
/// drawing.
///
/// All GL calls go through VL_Raster, which must not change while the renderer has buffers. All operations
/// must be called on the thread that owns the context. Drawing unchanged particles allocates no memory.
///
/// Buffers of more than a million particles are filled on several cores, with the same bytes; all calls of
/// VL_Raster stay on the calling thread. setThreadLimit(1) and VL_THREADS=1 keep the fill there as well; see
/// foundation/basic/threads.h.
///
/// Groups: lifecycle; drawing; paths; parts of the paths; fields.
class VL_RASTER_GL_EXPORT Particles_RL_GL_v2 : public Particles_RL_v2 {
public:
    using RenderMode = Particles_RL_GL_v2_ns::RenderMode;
    using RenderMagnitude = Particles_RL_GL_v2_ns::RenderMagnitude;

    // == Lifecycle ==

    Particles_RL_GL_v2();  ///< Empty; init() comes next. GL: none.
    Particles_RL_GL_v2(Particles_RL_GL_v2 const&) = delete;
    Particles_RL_GL_v2& operator=(Particles_RL_GL_v2 const&) = delete;

    /// Releases the buffers and the index table.
    /// Deliberate (effects-outlive-renderer): not the effects; see releaseEffects().
    /// GL: the calls of resetBuffers().
    ~Particles_RL_GL_v2() override;

    /// Sets all fields to their defaults, queries the support of buffer objects and allocates the index
    /// table. Must be called once, before the first drawing.
    /// GL: the query of "GL_ARB_vertex_buffer_object" and, if that is missing, of "ARB_vertex_buffer_object".
    void init();

    /// Deletes the buffers in main and video memory; the next drawing fills them again. Effects and index
    /// table are kept.
    /// Deliberate (kept-buffer-sizes): so are the recorded sizes of the video buffer.
    /// GL: deleteBuffers, if there is a buffer.
    void clear() override;

    /// Deletes the buffers and the GL program. The recorded sizes of the buffers are kept.
    /// Deliberate (one-byte-buffer): the video buffer first becomes one byte large and is mapped.
    /// GL: bindBuffer, bufferData, mapBuffer, deleteBuffers, if there is a buffer; detachShader,
    /// deleteShader, deleteProgram as far as they exist.
    void resetBuffers();

    /// Deletes the three effects; the next drawing that needs one creates it again. Needs the context that
    /// created them.
    /// GL: glDeleteProgram and glDeleteShader per stage, for each effect.
    void releaseEffects();

    void setRenderMode(RenderMode::type mode);  ///< Selects the effect for the next drawing. GL: none.

    // == Drawing ==

    using Particles_RL_v2::render;

    /// Draws positions chunk by chunk, in the current color and point size, without an effect. Compacts the
    /// system. The bool and the first float are ignored. Without a channel named "position", nothing is
    /// drawn.
    /// GL: the calls of renderChunkRaw() per chunk.  State: none.
    void render(ParticleSystem_v2 const& system, bool flag, float const& unused, float const& percent);

    /// Draws the particles on the best available path.
    ///
    /// With `useShaders`, on a driver with shaders, an effect draws: from a buffer object if `useVbo` is set,
    /// the driver supports buffer objects and the particles fit into video memory, else chunk by chunk.
    /// Without an effect, colors are computed on the CPU: in a buffer object under the same conditions, else
    /// in main memory. If a buffer is refused, the call falls back to the other path.
    /// \param keepFlag ignored.
    /// \param rebuild the particles have changed: buffers are refilled.
    /// \param scale divides all magnitudes.
    /// \param minMagnitude, maxMagnitude the range over which colors are interpolated from minColor to
    ///     maxColor.
    /// \param maxClampColor the color of magnitudes above the range.
    /// \param pointSize pixels; for an effect its size.
    /// \param channel the channel of the magnitude; ParticleChannel_v2::NONE for none. For a channel of
    ///     unknown type, a message without line end goes to the standard error stream: once per particle in a
    ///     buffer, once per chunk on the chunk path.
    /// \param percent of the particles, 0 to 100. Below 0 and NaN draw none, above 100 draws all.
    /// GL: getFreeGpuMemory, checkShaderSupport, then the calls of the path.
    /// State: the point size, and the state that the effect does not restore.
    void render(ParticleSystem_v2 const& system, bool keepFlag, bool rebuild, float const& scale,
                float const& minMagnitude, float const& maxMagnitude, Color4<float> const& minColor,
                Color4<float> const& maxColor, Color4<float> const& maxClampColor, float const& pointSize,
                unsigned int const& channel, float const& percent, bool useVbo, bool useShaders,
                RenderMagnitude::type magnitude);

    // == Paths ==
    // The arguments are those of render().

    /// Fills a buffer object with positions and colors, and draws it.
    /// Deliberate (colors-of-the-last-path): after a drawing with an effect, without `rebuild`, the colors
    /// are the raw values that the effect needs.
    /// \return false if the buffer was refused, because of insufficient memory, a null mapping, or an error
    ///     while its store grows; nothing is drawn then.
    /// GL: genBuffers the first time; getFreeGpuMemory, bindBuffer x 2, bufferData where the buffer grows, or
    /// deleteBuffers where it is refused; bindBuffer, bufferData, mapBuffer, getError, unmapBuffer where it
    /// is filled (bindBuffer(0) and deleteBuffers after getError where it is refused); enableClientState x 2,
    /// setPointSize, bindBuffer, vertexPointer, colorPointer, drawArrays, bindBuffer(0), disableClientState x
    /// 2. An empty buffer is not mapped, which GL would refuse.
    /// State: the point size; no buffer is bound.
    bool renderFromVboNoShaders(ParticleSystem_v2 const& system, bool keepFlag, bool rebuild,
                                float const& scale, float const& minMagnitude, float const& maxMagnitude,
                                Color4<float> const& minColor, Color4<float> const& maxColor,
                                Color4<float> const& maxClampColor, float const& pointSize,
                                unsigned int const& channel, float const& percent,
                                RenderMagnitude::type magnitude);

    /// Fills a buffer object with positions and raw values, and draws it with the effect. Without `rebuild`
    /// it draws the present contents.
    /// \return as renderFromVboNoShaders(); the pass of the effect is closed in any case.
    /// GL: the calls of configureShaders(), those of renderFromVboNoShaders() without setPointSize,
    /// popFillingFront, popFillingBack, and the cleanup() of the effect.
    bool renderFromVboWithShaders(ParticleSystem_v2 const& system, bool keepFlag, bool rebuild,
                                  float const& scale, float const& minMagnitude, float const& maxMagnitude,
                                  Color4<float> const& minColor, Color4<float> const& maxColor,
                                  Color4<float> const& maxClampColor, float const& pointSize,
                                  unsigned int const& channel, float const& percent,
                                  RenderMagnitude::type magnitude);

    /// Fills an array in main memory and draws it in batches of 524288 particles and a last batch with the
    /// rest, which may be empty.
    /// GL: setPointSize; per batch enableClientState x 2, vertexPointer, colorPointer, drawArrays,
    /// disableClientState x 2.  State: the point size.
    void renderFromMemoryNoShaders(ParticleSystem_v2 const& system, bool keepFlag, bool rebuild,
                                   float const& scale, float const& minMagnitude, float const& maxMagnitude,
                                   Color4<float> const& minColor, Color4<float> const& maxColor,
                                   Color4<float> const& maxClampColor, float const& pointSize,
                                   unsigned int const& channel, float const& percent,
                                   RenderMagnitude::type magnitude);

    /// Draws the arrays of each chunk with the effect. Compacts the system. Without a channel named
    /// "position", nothing is drawn.
    ///
    /// Deliberate (scalar-stride): a scalar channel is read as three components with a stride of one value.
    /// GL: the calls of configureShaders(), of renderChunkRaw() per chunk, popFillingFront, popFillingBack,
    /// and the cleanup() of the effect.
    void renderFromChunksWithShaders(ParticleSystem_v2 const& system, bool keepFlag, bool rebuild,
                                     float const& scale, float const& minMagnitude, float const& maxMagnitude,
                                     Color4<float> const& minColor, Color4<float> const& maxColor,
                                     Color4<float> const& maxClampColor, float const& pointSize,
                                     unsigned int const& channel, float const& percent,
                                     RenderMagnitude::type magnitude);

    // == Parts of the paths ==

    /// Draws an array of positions, with an array of colors unless `noColor` is set. At 100 percent it draws
    /// all of them, else the first part of the index table.
    /// \param chunk, flag ignored.
    /// \param count at most 16384 if the percentage is not 100.
    /// \param colorStride bytes from one color to the next.
    /// GL: enableClientState, vertexPointer, colorPointer, drawArrays or drawElements, disableClientState.
    void renderChunkRaw(unsigned int chunk, Vector3<float>* positions, void* colors, unsigned int count,
                        float percent, bool noColor, int colorStride, bool flag);

    /// Whether a percentage of the particles fits into video memory.
    /// Deliberate (unknown-memory-fits): true if the free memory is unknown.
    /// GL: getFreeGpuMemory.
    bool checkEnoughMemoryinGPU(ParticleSystem_v2 const& system, float const& percent) const;

    /// Builds the index table for a number of particles, 0 to 16384; other numbers are ignored. The same
    /// number always gives the same table. GL: none.
    /// Deliberate (srand-shuffle): seeds and uses std::rand().
    void initIndices(int count);

    /// Opens the pass of the effect: creates it if needed, sets its parameters and calls preprocess().
    ///
    /// Deliberate (unpopped-filling): a render mode without an effect pushes the fillings, and nothing pops
    /// them.
    /// \param flag ignored.
    /// GL: pushFillingFront, pushFillingBack; for points setPointSize; create() and init() of a new effect;
    /// the calls of its preprocess().
    void configureShaders(bool flag, float const& size, float const& scale, float const& minMagnitude,
                          float const& maxMagnitude, Color4<float> minColor, Color4<float> maxColor,
                          Color4<float> maxClampColor, RenderMagnitude::type magnitude);

    /// An array of the length of a file plus a terminating zero; empty if the file cannot be opened.
    /// Deliberate (unread-shader-file): the file is not read; the characters before the zero are undefined.
    Array<char> getShader(char const* path);

    /// Empty; part of the interface.
    void reloadShadersIfNeeded(Color4<float>& minColor, Color4<float>& maxColor, float minMagnitude,
                               float maxMagnitude);

protected:
    // == Fields ==

    unsigned int vboId;             ///< Buffer of the interleaved particles; 0 for none. Owned.
    bool vboSupported;              ///< Whether the driver has buffer objects.
    float* hostBuffer = nullptr;    ///< Interleaved particles in main memory, or null. Owned, of new[].
    unsigned int vboSizeKB;         ///< Kilobytes of the last store that was filled.
    unsigned int vboParticleCount;  ///< Particles that the last rebuild wrote.
    unsigned int hostCapacity;      ///< Capacity of hostBuffer in particles.
    unsigned int vboCapacity;       ///< Particles for which the buffer was last sized.
    unsigned int reservedMode;      ///< 2; not used.
    unsigned int programId;         ///< Program that resetBuffers() deletes; 0 for none. Owned.
    unsigned int shaderIds[3];      ///< Its shaders; 0 for none. Owned.
    RenderMode::type renderMode;    ///< Selects the effect.
    unsigned int lastPath;          ///< 0 none, 1 buffer with effect, 3 buffer without or chunks, 4 memory.
    PointRendering_shader* pointShader;    ///< Owned; null until it is needed.
    SphereRendering_shader* sphereShader;  ///< Owned; null until it is needed.
    ArrowRendering_shader* arrowShader;    ///< Owned; null until it is needed.
    void* ownedBlock = nullptr;  ///< For subclasses: memory of operator new, deleted with the renderer.
    unsigned short* shuffledIndices = nullptr;  ///< Owned, of new[]; 16384 entries, null before init().
    unsigned int shuffledCount;                 ///< Particles for which the table is built; 0 for none.

private:
    struct BufferFilling;

    void _setDefaults();
    Mesh_RL_Shader* _effectOf(RenderMode::type mode) const;
    void _closeEffect();
    void _fill(BufferFilling const& filling, float* records) const;
    bool _prepareVbo(BufferFilling const& filling, bool rebuild, char const* where, int line);
    bool _uploadToVbo(BufferFilling const& filling, char const* where, int line);
    static void _replaceStore(unsigned int records);
    void _drawFromVbo(unsigned int count, float const* pointSize);

    unsigned int vboRecords;  // that the buffer's store holds now
};

}  // namespace vellum
