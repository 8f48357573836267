#pragma once

#include "foundation/geometry/Box3.h"
#include "foundation/geometry/ParticleSystem_v2.h"
#include "foundation/geometry/Tuple3.h"
#include "foundation/geometry/Vector3.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/scene/ParticleLook.h"
#include "viewport/scene/ParticlePlaces.h"
#include "viewport/scene/Placement.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// Which particles of a frame the records of a cloud are, and where they are shown. The records are those of
/// the system without holes, first chunk first.
struct CloudRecords {
    std::size_t count = 0;  ///< of the particles that are shown, without copies
    std::shared_ptr<std::vector<unsigned int> const>
        particles;                         ///< their indices in the frame; null: record i is particle i
    Tuple3<unsigned int> copies{1, 1, 1};  ///< as in ParticleLook
    bool isWrapped = false;                ///< as in ParticleLook

    /// The index in the frame. Records that there are not are those of no particle: only with count above 0.
    std::size_t particle(std::size_t record) const {
        return particles != nullptr ? (*particles)[record % count] : record % count;
    }

    /// Where the particle of a record is shown, in units of the file: its place, in the box where places are
    /// wrapped, moved to its copy.
    Vector3<double> place(ParticleFrame const& frame, std::size_t record) const;
};

/// The particles of a file as they are drawn, in the frame of the scene.
struct ParticleCloud {
    // The channels of `system` that are always there, both vectors.
    static constexpr unsigned int POSITIONS = 0;
    static constexpr unsigned int SHOWN = 1;  ///< their lengths are what colors show; arrows lie along them

    std::string name;                                 ///< the file's, without its folder
    std::shared_ptr<ParticleSystem_v2 const> system;  ///< finite positions only
    /// The id of a VECTOR channel with the red, green and blue of each particle, 0 to 1, in place of the
    /// colors of SHOWN. Used for the files' own colors, for kinds, and for values of which some are
    /// undefined.
    std::optional<unsigned int> colors;
    /// The id of a SCALAR channel with the diameter of each sphere, in units of the scene. Nothing: all have
    /// `diameter`.
    std::optional<unsigned int> sizes;
    std::vector<Vector3<float>> boxLines;  ///< two ends for each line of the boxes that the particles are in
    Box3<double> box;                      ///< around all of it
    double spacing;                        ///< the mean distance of neighbors; above 0
    double diameter;                       ///< of a sphere; above 0
    double arrowLength = 1;     ///< of an arrow along a vector of SHOWN of length 1, in units of the scene
    CloudRecords records = {};  ///< of no particle, unless the scene keeps its frames
};

/// Makes the cloud of a frame in two steps: Scene needs the boxes of all clouds before it can place any of
/// them.
///
///     CloudMaker const maker(frame, look, index);
///     ... maker.box() ...
///     ParticleCloud const cloud = maker.make(placement);
///
/// Frame and look must outlive it.
class CloudMaker {
public:
    /// \param look as lookOf() decided it for several frames
    /// \param index of the frame among those; where the look was decided for fewer, all particles are taken
    CloudMaker(ParticleFrame const& frame, ParticleLook const& look, std::size_t index = 0);

    /// Around the particles with their sizes and the boxes that they are in, with all copies, in units of the
    /// file.
    Box3<double> const& box() const { return bounds; }

    /// Places the particles in double precision, so that those far away from the file's origin keep their
    /// distances.
    /// \param used the frame itself, where nobody needs it behind: its memory is given back meanwhile, and its positions and
    ///     values are undefined then. Null: it is kept.
    ParticleCloud make(Placement const& placement, ParticleFrame* used = nullptr) const;

    /// Which particles the records of make() are. Takes four bytes for each particle where some are left out
    /// or the order is another one, and nothing else.
    CloudRecords records() const;

private:
    using DiameterOf = std::function<double(std::size_t)>;
    using ColorOf = std::function<Vector3<float>(std::size_t)>;

    void _measure();
    void _measureSpheres();
    void _measureArrows();
    void _shuffle();
    bool _hasBox() const;
    Vector3<double> _shift(std::size_t copy) const;
    std::size_t _copyCount() const;
    std::size_t _index(std::size_t place) const { return order.empty() ? (*choice)[place] : order[place]; }
    DiameterOf _diameters() const;
    ColorOf _colors() const;
    std::function<Vector3<float>(std::size_t)> _shown(Turn const& turn) const;

    /// A chunk of the system to be filled.
    struct Part {
        ParticleSystemChunk_v2* chunk;
        std::size_t first;  // record of it
    };

    static std::vector<Part> _add(ParticleSystem_v2& system, std::size_t first, std::size_t end);
    template <class Element, class Value>
    void _fill(std::vector<Part> const& parts, Element* (*elementsOf)(ParticleSystemChunk_v2&, unsigned int),
               unsigned int channel, Value const& value) const;

    ParticleFrame const& frame;
    ParticleLook const& look;
    ParticlePlaces places;
    std::shared_ptr<ParticleChoice const> choice;  // owned by the look, or else here
    std::vector<unsigned int>
        order;  // of the particles, by the place in the cloud; empty: that of the choice
    Box3<double> bounds{{0, 0, 0}, {0, 0, 0}};
    double diameter = 1;
    double arrowLength = 1;  // as in ParticleCloud, in units of the file
};

}  // namespace vellum::viewport
