#pragma once

#include "foundation/geometry/ParticleSystem_v2.h"
#include "toolkit/ParticleLook.h"
#include "toolkit/ParticleRenderer.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

namespace vellum::toolkit {

class ColoredArrows;
class ColoredSpheres;

/// Particles that have a color or a size each: one list of records, in a buffer object if the layer has
/// memory for it, else in main memory. The library's renderer colors by one number of each particle and draws
/// all in one size.
///
/// Points are drawn by fixed functions, one draw call for each size. Spheres and arrows are drawn by effects
/// in one.
class ColoredParticles {
public:
    ColoredParticles();

    /// GL: glDeleteBuffers, glDeleteProgram, glDeleteShader for what there is.
    ~ColoredParticles();
    ColoredParticles(ColoredParticles const&) = delete;
    ColoredParticles& operator=(ColoredParticles const&) = delete;

    /// Whether the library cannot draw the look.
    static bool isNeeded(ParticleSystem_v2 const& system, ParticleLook const& look, ParticleMode mode);

    /// Reads the particles that are drawn, evenly chosen by the look's percentage, without those that have no
    /// place, size or, as arrows, vector. \param mode what is drawn; not SOLID_ARROWS GL: glGenBuffers the
    /// first time; glBindBuffer, glBufferData, glMapBuffer, glGetError, glUnmapBuffer, glBindBuffer(0);
    /// glDeleteBuffers where there is no memory for a buffer.  State: no buffer is bound.
    void fill(ParticleSystem_v2 const& system, ParticleLook const& look, ParticleMode mode);

    unsigned int count() const { return recordCount; }  ///< Of the particles that are drawn.

    /// The vectors of arrows are those of the channel divided by this.
    double unit() const { return vectorUnit; }

    /// Draws points; a particle of size 1 is so wide.
    /// \param smallest pixels that each point has at least
    /// GL: those of FixedPass; per size glPointSize and glDrawArrays.
    ParticlePath drawPoints(float pixels, float smallest);

    /// Draws spheres or arrows, as they were filled.
    /// \param size for the effect
    /// GL: the pass of the effect, glDrawArrays.
    ParticlePath drawWithEffect(float size);

private:
    struct PointRecord;
    struct SphereRecord;
    struct ArrowRecord;
    class SizeNumbers;

    /// Points of one size.
    struct Group {
        float size;
        unsigned int first;
        unsigned int count;
    };

    void _writePoints(ParticleSystem_v2 const& system, ParticleLook const& look, PointRecord* records);
    void _writePointsBySize(ParticleSystem_v2 const& system, ParticleLook const& look, PointRecord* records);
    void _writeSpheres(ParticleSystem_v2 const& system, ParticleLook const& look, SphereRecord* records);
    void _writeArrows(ParticleSystem_v2 const& system, ParticleLook const& look, ArrowRecord* records);
    void* _open(std::size_t bytes);
    void* _openBuffer(std::size_t bytes);
    void _close();
    void _deleteBuffer();
    void _openArrays();
    void _closeArrays() const;
    template <class Effect>
    void _drawWith(std::unique_ptr<Effect>& effect, float size);

    std::optional<bool> hasBuffers;  // of the driver
    unsigned int bufferId = 0;       // 0: the records are in main memory
    std::vector<float> host;
    bool areArrows = false;   // as they were filled, else
    bool areSpheres = false;  // else points
    unsigned int recordCount = 0;
    double vectorUnit = 1;
    std::vector<Group> groups;  // of points
    std::vector<unsigned short>
        numbers;  // of the sizes of points; kept because moving particles need it every frame
    std::unique_ptr<ColoredSpheres> spheres;
    std::unique_ptr<ColoredArrows> arrows;
};

}  // namespace vellum::toolkit
