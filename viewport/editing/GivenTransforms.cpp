#include "viewport/editing/GivenTransforms.h"

namespace vellum::viewport {

std::vector<ObjectTransform> transformsOf(GivenTransforms const& transforms, Scene const& scene) {
    std::vector<ObjectTransform> all(objectCount(scene));
    for (auto const& [object, transform] : transforms) {
        if (object < all.size()) {
            all[object] = transform;
        }
    }
    return all;
}

}  // namespace vellum::viewport
