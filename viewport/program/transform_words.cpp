#include "viewport/program/transform_words.h"

#include "viewport/program/word_values.h"
#include "viewport/text/numbers.h"
#include "viewport/text/shortest_number.h"

#include <string_view>

namespace vellum::viewport {

namespace {

constexpr char OPTION[] = "--transform";

Fault formFault(std::string const& word) {
    return wordFault(
        OPTION, word,
        "OBJECT:tx,ty,tz[:rx,ry,rz[:sx,sy,sz]], the number of an object from 1, then finite numbers "
        "of which no scale is 0");
}

std::string partsOf(Vector3<double> const& v) {
    return exactNumber(v.x) + "," + exactNumber(v.y) + "," + exactNumber(v.z);
}

}  // namespace

std::optional<Fault> readTransform(std::string const& word, GivenTransforms& transforms) {
    std::vector<std::string_view> const fields = split(word, ':');
    std::optional<int> const object = toInteger(fields.front());
    if (!object || *object < 1 || fields.size() < 2 || fields.size() > 4) {
        return formFault(word);
    }
    Vector3<double> values[3] = {{0, 0, 0}, {0, 0, 0}, {1, 1, 1}};
    for (std::size_t i = 1; i < fields.size(); ++i) {
        std::optional<Vector3<double>> const value = toVector(fields[i]);
        if (!value) {
            return formFault(word);
        }
        values[i - 1] = *value;
    }
    ObjectTransform const transform{values[0], Rotation::ofDegrees(values[1]), values[2]};
    if (!transform.isValid()) {
        return formFault(word);
    }
    if (!transforms.emplace(static_cast<std::size_t>(*object) - 1, transform).second) {
        return usageFault(std::string(OPTION) + ": object " + std::to_string(*object) + " is given twice");
    }
    return std::nullopt;
}

std::string transformWord(std::size_t object, ObjectTransform const& transform) {
    return std::to_string(object + 1) + ":" + partsOf(transform.translation) + ":" +
           partsOf(transform.rotation.toDegrees()) + ":" + partsOf(transform.scale);
}

std::optional<Fault> transformFault(GivenTransforms const& transforms, Scene const& scene) {
    std::optional<std::string> const misfit = misfitOf(transforms, scene);
    return misfit ? std::optional<Fault>(usageFault(std::string(OPTION) + ": " + *misfit)) : std::nullopt;
}

}  // namespace vellum::viewport
