#pragma once

#include "viewport/editing/ObjectTransform.h"

#include <cstddef>
#include <map>
#include <vector>

namespace vellum::viewport {

/// Transforms of objects, which are counted from 0; an object without one is where its file has it.
using GivenTransforms = std::map<std::size_t, ObjectTransform>;

/// Those of all objects of a scene.
std::vector<ObjectTransform> transformsOf(GivenTransforms const& transforms, Scene const& scene);

}  // namespace vellum::viewport
