#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Tuple3.h"
#include "viewport/files/mesh/MeshData.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/scene/ParticleChoice.h"
#include "viewport/scene/ParticleKinds.h"
#include "viewport/scene/ParticleOptions.h"
#include "viewport/scene/Quantity.h"
#include "viewport/scene/ValueScale.h"
#include "viewport/text/Fault.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vellum::viewport {

using ParticleScale = ValueScale;

/// The colors of kinds: elements, types, words.
struct ParticleLegend {
    struct Entry {
        std::string text;
        Color4<float> color;
        std::size_t count;  ///< of the particles that are shown, without copies
    };

    std::string title;           ///< "element", "type", or the name of a column
    std::vector<Entry> entries;  ///< in the order to be shown; their texts differ
};

/// What the colors of particles say.
enum class ParticleColoring {
    NOTHING,  ///< all have one color
    VALUES,
    KINDS,
    OWN  ///< the colors that the file gives
};

/// How all particles of a picture look.
struct ParticleLook {
    ParticleMode mode = ParticleMode::POINTS;
    ParticleColoring coloring = ParticleColoring::NOTHING;
    std::optional<ParticleScale> scale;  ///< colors show values
    std::optional<ValueScale>
        meshScale;  ///< of the meshes that have the channel; `scale` where that is one, too
    std::optional<ParticleLegend> legend;  ///< colors show kinds; never together with `scale`
    ValueColors colors;                    ///< of the scale
    std::optional<double> size;            ///< as in ParticleOptions; nothing: chosen to suit
    double drawnPart = 1;                  ///< of the particles, 0 to 1
    std::vector<Fault> notes;              ///< what had to be left out or is shown otherwise
    bool areMeshValuesHidden = false;      ///< some mesh has the channel, and something covers its colors

    // == What CloudMaker needs ==

    /// Kinds are those of ParticleKinds::elements(), else those of the legend's title.
    bool areElements = false;
    std::string arrows;              ///< the name of the vector that arrows are along; empty: there are none
    bool areArrowsMeasured = false;  ///< the scale is that of the arrows' lengths
    double arrowUnit = 1;            ///< the length of a vector that is handed to renderers as 1
    bool isWrapped = false;          ///< as in ParticleOptions
    Tuple3<unsigned int> copies{1, 1, 1};  ///< as in ParticleOptions
    std::vector<ParticleChoice> choices;   ///< one for each frame

    /// What colors show of a frame; only with a scale. Nothing where the frame has no such channel: its
    /// particles have the color of what is undefined. Frame and places must outlive it.
    std::optional<Quantity> quantity(ParticleFrame const& frame, ParticlePlaces const& places) const;

    /// Frees the values of all channels of a frame that CloudMaker does not need. What is left of the frame
    /// is of no other use.
    void dropUnused(ParticleFrame& frame) const;

    /// The kinds that colors show of a frame; only with a legend. Nothing as with quantity().
    std::optional<ParticleKinds> kinds(ParticleFrame const& frame) const;
};

/// Decides how the frames of all files are shown; they share one scale or legend. A fault where no file holds
/// what is asked for; frames that alone do not have the channel are gray, with a note.
///
/// Where no channel is asked for, colors show the first of these that all files have:
///
///     1. the files' own colors
///     2. elements
///     3. the speed, or else what Quantity::suitableNames() offers first
///     4. types
///     5. words
///
/// Where a range, a color map or logarithms are asked for, values come before colors and kinds. Arrows show
/// their lengths.
///
/// Meshes show a channel only where one is asked for. Those that have a scalar of its name share the scale of
/// the particles (see colorMeshes()). Where only meshes have it, particles show no values.
///
/// \param covers what hides the colors of each mesh, such as "the texture", or an empty text; may be shorter
///     than `meshes`. A covered mesh that has the channel gets a note.
Result<ParticleLook> lookOf(std::vector<ParticleFrame> const& frames, ParticleOptions const& options,
                            std::vector<MeshData> const& meshes = {},
                            std::vector<std::string> const& covers = {});

/// Above this number of particles points are drawn where nothing else is asked for.
constexpr std::size_t MOST_SPHERES = 500'000;

/// More cannot be drawn, of particles and of boxes.
constexpr std::size_t MOST_PARTICLES = 2'147'483'647;
constexpr std::size_t MOST_COPIES = 1'000'000;

/// The diameter of spheres where nothing gives them another, in spacings: they almost touch.
constexpr double SPHERE_DIAMETER = 0.98;

/// How many units of the file an angstrom has, so that elements have their sizes.
///
/// Files with elements are in angstrom, unless the particles' spacing says otherwise: no matter is so dense
/// that a covalent radius is above two spacings, and below a hundredth of a spacing nothing could be seen. In
/// such files the largest element has the usual size, and the others are smaller by the same factors as in
/// angstrom.
///
/// \param largestRadius angstrom, above 0
/// \return the units, and whether the file is in angstrom
std::pair<double, bool> unitsPerAngstrom(double largestRadius, ParticleChoice const& choice);

}  // namespace vellum::viewport
