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

/// Which effect draws the particles. Any other number selects none.
struct RenderMode {
    enum type : unsigned int { POINTS = 1, SPHERES = 2, ARROWS = 3 };
};

/// Which quantity of the color channel a particle's color shows. With an effect the number chooses the
/// effect's own variant (Base_shader::ProcessType). Without one:
///
///     0        the length of the vector
///     1, 2, 3  the absolute value of its x, y or z, cut to an integer
///     4, 5     in main memory the lowest or the highest color for all; in a buffer object as 0
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
/// render() chooses among four ways to draw: a buffer object or the chunks' own arrays for an effect, a buffer
/// object or main memory with colors made on the processor. Buffers hold 24 bytes for each particle: position
/// and color, three floats each. Any way can draw a percentage of the particles: buffers thin them evenly
/// (in the order of iterators), chunks draw a random choice that stays the same from frame to frame.
///
/// All OpenGL work goes through VL_Raster, which must not change while the renderer has buffers. Everything
/// must be called on the thread that owns the context. Steady frames allocate nothing.
///
/// Groups: lifecycle; drawing; the ways to draw; parts of them; fields.
class VL_RASTER_GL_EXPORT Particles_RL_GL_v2 : public Particles_RL_v2 {
public:
    using RenderMode = Particles_RL_GL_v2_ns::RenderMode;
    using RenderMagnitude = Particles_RL_GL_v2_ns::RenderMagnitude;

    // == Lifecycle ==

    Particles_RL_GL_v2();  ///< Holds nothing. GL: none.
    Particles_RL_GL_v2(Particles_RL_GL_v2 const&) = delete;
    Particles_RL_GL_v2& operator=(Particles_RL_GL_v2 const&) = delete;

    /// Releases the buffers and the index table. Deliberate (effects-outlive-renderer): not the effects,
    /// which need a context for it that may be gone; releaseEffects() does that.
    /// GL: that of resetBuffers().
    ~Particles_RL_GL_v2() override;

    /// Sets all fields to their first values, asks for buffer objects and allocates the index table. Must run
    /// once, before anything is drawn.
    /// GL: the query of "GL_ARB_vertex_buffer_object" and, if that is missing, of "ARB_vertex_buffer_object".
    void init();

    /// Drops the buffers in main and video memory; the next drawing fills them again. Effects, index table and
    /// the sizes that the video buffer had are kept.
    /// GL: deleteBuffers, if there is a buffer.
    void clear() override;

    /// Drops the buffers and the GL program. Deliberate (one-byte-buffer): the video buffer is made one byte
    /// large and mapped first, so that drivers let go of its memory at once; and the sizes that the buffers
    /// had are kept.
    /// GL: bindBuffer, bufferData, mapBuffer, deleteBuffers, if there is a buffer; detachShader, deleteShader,
    /// deleteProgram for what there is.
    void resetBuffers();

    /// Deletes the three effects; they are made again when they are needed. Needs the context that made them.
    /// GL: that of the effects' destructors.
    void releaseEffects();

    void setRenderMode(RenderMode::type mode);  ///< Which effect draws from the next frame on. GL: none.

    // == Drawing ==

    using Particles_RL_v2::render;

    /// Draws positions chunk by chunk, in the current color and point size, without an effect. Compacts the
    /// system. The bool and the first float are not used. Draws nothing without a channel named "position".
    /// GL: renderChunkRaw() for each chunk.  State: none.
    void render(ParticleSystem_v2 const& system, bool flag, float const& unused, float const& percent);

    /// Draws the particles in the best way that there is.
    ///
    /// With `useShaders` on a driver that has shaders an effect draws: from a buffer object when `useVbo` is
    /// set, the driver has buffer objects and the particles fit into video memory, else chunk by chunk. Without
    /// an effect the colors are made here: in a buffer object on the same conditions, else in main memory.
    /// Where a buffer is refused the other way is taken in the same call.
    /// \param keepFlag passed on, without a meaning here.
    /// \param rebuild the particles changed: buffers are filled anew.
    /// \param scale what magnitudes are divided by.
    /// \param minMagnitude, maxMagnitude the range over which colors go from minColor to maxColor.
    /// \param maxClampColor the color of magnitudes above the range.
    /// \param pointSize pixels; for an effect its size.
    /// \param channel the channel that gives the magnitude; ParticleChannel_v2::NONE for none. For a channel
    ///        of an unknown type a message goes to the standard error stream, without a line end: once for
    ///        each particle that is written into a buffer, once for each chunk where chunks are drawn.
    /// \param percent of the particles, 0 to 100. Below 0 and not a number draw none, above 100 draws all.
    /// GL: getFreeGpuMemory, checkShaderSupport, then that of the way.
    /// State: the point size; that of the effect.
    void render(ParticleSystem_v2 const& system, bool keepFlag, bool rebuild, float const& scale,
                float const& minMagnitude, float const& maxMagnitude, Color4<float> const& minColor,
                Color4<float> const& maxColor, Color4<float> const& maxClampColor, float const& pointSize,
                unsigned int const& channel, float const& percent, bool useVbo, bool useShaders,
                RenderMagnitude::type magnitude);

    // == The ways to draw ==
    // Arguments as those of render().

    /// Fills a buffer object with positions and colors, and draws it. A frame after one of an effect draws
    /// what that has left in the buffer, unless `rebuild` is set. Deliberate (colors-of-the-last-path): its
    /// colors are then raw values of the channel.
    /// \return false when the buffer was refused, by the memory that is free, by a null mapping or by an error
    ///     while its store grows; nothing is drawn then.
    /// GL: genBuffers the first time; getFreeGpuMemory, bindBuffer x 2, bufferData where the buffer grows, or
    /// deleteBuffers where it is refused; bindBuffer, bufferData, mapBuffer, getError, unmapBuffer where it is
    /// filled (bindBuffer(0) and deleteBuffers after getError where it is refused); enableClientState x 2, setPointSize,
    /// bindBuffer, vertexPointer, colorPointer, drawArrays, bindBuffer(0), disableClientState x 2. An empty buffer is not mapped, which GL would refuse.
    /// State: the point size; no buffer is bound.
    bool renderFromVboNoShaders(ParticleSystem_v2 const& system, bool keepFlag, bool rebuild,
                                float const& scale, float const& minMagnitude, float const& maxMagnitude,
                                Color4<float> const& minColor, Color4<float> const& maxColor,
                                Color4<float> const& maxClampColor, float const& pointSize,
                                unsigned int const& channel, float const& percent,
                                RenderMagnitude::type magnitude);

    /// Fills a buffer object with positions and raw values, and draws it through the effect. Frames without
    /// `rebuild` draw what is there.
    /// \return as renderFromVboNoShaders(); the effect's pass is closed in any case.
    /// GL: configureShaders(), that of renderFromVboNoShaders() without setPointSize, the end of the pass.
    bool renderFromVboWithShaders(ParticleSystem_v2 const& system, bool keepFlag, bool rebuild,
                                  float const& scale, float const& minMagnitude, float const& maxMagnitude,
                                  Color4<float> const& minColor, Color4<float> const& maxColor,
                                  Color4<float> const& maxClampColor, float const& pointSize,
                                  unsigned int const& channel, float const& percent,
                                  RenderMagnitude::type magnitude);

    /// Fills an array in main memory and draws it in batches of 524288 particles, the last one with the rest,
    /// also when that is 0.
    /// GL: setPointSize; per batch enableClientState x 2, vertexPointer, colorPointer, drawArrays,
    /// disableClientState x 2.  State: the point size.
    void renderFromMemoryNoShaders(ParticleSystem_v2 const& system, bool keepFlag, bool rebuild,
                                   float const& scale, float const& minMagnitude, float const& maxMagnitude,
                                   Color4<float> const& minColor, Color4<float> const& maxColor,
                                   Color4<float> const& maxClampColor, float const& pointSize,
                                   unsigned int const& channel, float const& percent,
                                   RenderMagnitude::type magnitude);

    /// Draws each chunk's own arrays through the effect. Compacts the system. Draws nothing without a channel
    /// named "position".
    ///
    /// Deliberate (scalar-stride): a scalar channel is read with a stride of one value, so that a
    /// particle's three components are its own value and the next two.
    /// GL: configureShaders(), renderChunkRaw() for each chunk, the end of the effect's pass.
    void renderFromChunksWithShaders(ParticleSystem_v2 const& system, bool keepFlag, bool rebuild,
                                     float const& scale, float const& minMagnitude, float const& maxMagnitude,
                                     Color4<float> const& minColor, Color4<float> const& maxColor,
                                     Color4<float> const& maxClampColor, float const& pointSize,
                                     unsigned int const& channel, float const& percent,
                                     RenderMagnitude::type magnitude);

    // == Parts of them ==

    /// Draws an array of positions, with an array of colors unless `noColor` is set. At 100 percent all of
    /// them; else the first ones of the index table, as many as the percentage says.
    /// \param chunk, flag not used.
    /// \param count at most 16384, where the percentage is not 100.
    /// \param colorStride bytes from one color to the next.
    /// GL: enableClientState, vertexPointer, colorPointer, drawArrays or drawElements, disableClientState.
    void renderChunkRaw(unsigned int chunk, Vector3<float>* positions, void* colors, unsigned int count,
                        float percent, bool noColor, int colorStride, bool flag);

    /// Whether a percentage of the particles fits into video memory. Deliberate (unknown-memory-fits): where
    /// the free memory is unknown, 0, it does.
    /// GL: getFreeGpuMemory.
    bool checkEnoughMemoryinGPU(ParticleSystem_v2 const& system, float const& percent) const;

    /// Builds the index table for a number of particles, 0 to 16384; others are ignored. The same number always
    /// gives the same table. Uses, and seeds, the random numbers of the C library. GL: none.
    void initIndices(int count);

    /// Opens the pass of the effect: makes it if needed, passes it the parameters and makes it current.
    ///
    /// Deliberate (unpopped-filling): for a render mode without an effect only the filling is pushed, and
    /// nothing takes it back.
    /// \param flag not used.
    /// GL: pushFillingFront, pushFillingBack; for points setPointSize; that of the effect's preprocess().
    void configureShaders(bool flag, float const& size, float const& scale, float const& minMagnitude,
                          float const& maxMagnitude, Color4<float> minColor, Color4<float> maxColor,
                          Color4<float> maxClampColor, RenderMagnitude::type magnitude);

    /// Room for a file's text with its terminating zero. Deliberate (unread-shader-file): the text itself is
    /// not read, only its length; the characters before the zero have no defined value. Empty for a file that
    /// cannot be opened.
    Array<char> getShader(char const* path);

    /// Does nothing.
    void reloadShadersIfNeeded(Color4<float>& minColor, Color4<float>& maxColor, float minMagnitude,
                               float maxMagnitude);

protected:
    // == Fields ==

    unsigned int vboId;             ///< Buffer of the interleaved particles; 0 for none. Owned.
    bool vboSupported;              ///< Whether the driver has buffer objects.
    float* hostBuffer = nullptr;    ///< Interleaved particles in main memory, or null. Owned, of new[].
    unsigned int vboSizeKB;         ///< Kilobytes of the last store that was filled.
    unsigned int vboParticleCount;  ///< Particles that the last rebuild wrote.
    unsigned int hostCapacity;      ///< Particles that hostBuffer has room for.
    unsigned int vboCapacity;       ///< Particles for which the buffer was sized last.
    unsigned int reservedMode;      ///< 2; not used.
    unsigned int programId;         ///< Program that resetBuffers() deletes; 0 for none. Owned.
    unsigned int shaderIds[3];      ///< Its shaders; 0 for none. Owned.
    RenderMode::type renderMode;    ///< Which effect draws.
    unsigned int lastPath;          ///< 0 none, 1 buffer with effect, 3 buffer without or chunks, 4 memory.
    PointRendering_shader* pointShader;    ///< Owned; null until it is needed.
    SphereRendering_shader* sphereShader;  ///< Owned; null until it is needed.
    ArrowRendering_shader* arrowShader;    ///< Owned; null until it is needed.
    void* ownedBlock = nullptr;  ///< For derived classes: memory of operator new that goes with the renderer.
    unsigned short* shuffledIndices = nullptr;  ///< Owned, of new[]; 16384 entries, null before init().
    unsigned int shuffledCount;                 ///< Particles for which they are built; 0 for none.

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
