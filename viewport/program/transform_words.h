#pragma once

#include "viewport/editing/GivenTransforms.h"
#include "viewport/scene/Scene.h"
#include "viewport/text/Fault.h"

#include <cstddef>
#include <optional>
#include <string>

/// \file
/// The words of the option --transform: OBJECT:tx,ty,tz[:rx,ry,rz[:sx,sy,sz]]. OBJECT is counted from 1, the
/// meshes first, then the particles; angles are those of Rotation::ofDegrees().

namespace vellum::viewport {

/// Reads a word into the transforms. A fault where it is of another form, or its object was given before.
std::optional<Fault> readTransform(std::string const& word, GivenTransforms& transforms);

/// The word that gives this transform again, for a view that is saved.
std::string transformWord(std::size_t object, ObjectTransform const& transform);

/// The fault of transforms that do not suit a scene: of objects that do not exist, or that numbers do not
/// reach.
std::optional<Fault> transformFault(GivenTransforms const& transforms, Scene const& scene);

}  // namespace vellum::viewport
