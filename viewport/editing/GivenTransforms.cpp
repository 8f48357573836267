#include "viewport/editing/GivenTransforms.h"

#include <iterator>

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

std::optional<std::string> misfitOf(GivenTransforms const& transforms, Scene const& scene) {
    std::size_t const count = objectCount(scene);
    for (auto const& [object, transform] : transforms) {
        std::string const number = std::to_string(object + 1);
        if (object >= count) {
            return "there is no object " + number + "; the files hold " + std::to_string(count);
        }
        if (!isDrawable(transform, scene, object)) {
            return "object " + number + " would be too far away, too large or too small";
        }
    }
    return std::nullopt;
}

void removeMisfits(GivenTransforms& transforms, Scene const& scene) {
    for (auto next = transforms.begin(); next != transforms.end();) {
        bool const fits = next->first < objectCount(scene) && isDrawable(next->second, scene, next->first);
        next = fits ? std::next(next) : transforms.erase(next);
    }
}

}  // namespace vellum::viewport
