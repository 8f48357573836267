#pragma once

#include "viewport/editing/ObjectTransform.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// Transforms of objects, which are counted from 0; an object without one is where its file has it.
using GivenTransforms = std::map<std::size_t, ObjectTransform>;

/// Those of all objects of a scene.
std::vector<ObjectTransform> transformsOf(GivenTransforms const& transforms, Scene const& scene);

/// Why transforms do not suit a scene: they are of objects that do not exist, or that numbers do not reach.
/// Objects are counted from 1 in these words.
std::optional<std::string> misfitOf(GivenTransforms const& transforms, Scene const& scene);

/// Leaves out those that do not suit a scene.
void removeMisfits(GivenTransforms& transforms, Scene const& scene);

}  // namespace vellum::viewport
