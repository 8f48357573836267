#pragma once

#include "foundation/geometry/Vector3.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/scene/ParticleCloud.h"

#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vellum::viewport {

/// What a file says about a thing in one of its columns.
struct PickedValue {
    std::string name;  ///< the column's, or the vector's
    std::string unit;  ///< as the file has it; empty: it has none
    std::variant<double, Vector3<double>, std::string> value;
    std::string meaning = {};  ///< the name that the file gives to this number; empty: none
};

/// A particle of a file.
struct PickedParticle {
    std::size_t index = 0;     ///< in the frame, from 0, whatever of the frame is shown
    std::optional<double> id;  ///< that of the file; nothing: it has none
    Vector3<double> position;  ///< as the file has it, in its units and axes
    Vector3<double> shownAt;   ///< where it is drawn: another place where it is wrapped, a copy, or moved
    std::vector<PickedValue> values;  ///< all others of the file: words, channels, vectors

    /// The particle of a record.
    static PickedParticle of(ParticleFrame const& frame, CloudRecords const& records, std::size_t record);
};

/// What is drawn of a mesh.
enum class MeshElement { TRIANGLE, LINE, POINT };

/// A place on a mesh of a file.
struct PickedElement {
    MeshElement kind = MeshElement::TRIANGLE;
    std::size_t index = 0;            ///< among the elements of this kind, from 0, in the order of the file
    std::size_t vertex = 0;           ///< the nearest one of the element, by its index in the file, from 0
    Vector3<double> vertexPosition;   ///< in units and axes of the file, as the next one
    Vector3<double> position;         ///< the place on the element
    std::string material;             ///< its name; empty: there is none, or it has none
    std::vector<PickedValue> values;  ///< of the vertex
};

/// The picking name of the first object of a scene; those of handles are below.
constexpr unsigned int FIRST_OBJECT_NAME = 16;

/// A thing at a pixel. Whoever finds a thing of which only the name is known leaves the rest empty.
struct Picked {
    unsigned int
        name;  ///< the picking name: 1 to 7 the gizmo's handles, from 16 on the models, then the clouds
    std::string owner;  ///< what the name belongs to: a handle like "gizmo move X", or a file's name
    std::optional<PickedParticle> particle = {};
    std::optional<PickedElement> element = {};

    /// The object, counted from 0, the models first, then the clouds; nothing: it is a handle of the gizmo.
    std::optional<std::size_t> object() const {
        return name >= FIRST_OBJECT_NAME ? std::optional<std::size_t>(name - FIRST_OBJECT_NAME)
                                         : std::nullopt;
    }

    /// Whether both are the same thing of the scene.
    bool operator==(Picked const& other) const { return name == other.name && owner == other.owner; }
};

}  // namespace vellum::viewport
