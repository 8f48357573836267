#include "viewport/editing/ObjectTransform.h"

#include "viewport/scene/ParticlePlaces.h"

#include <cmath>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

// Far above the rounding of products of rotations.
constexpr double UNIT_SLACK = 1e-6;

// Of scales, and of distances in the frame of the scene: single precision still squares and adds them.
constexpr double EXTREME = 1e9;

bool isEqual(Point const& a, Point const& b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

}  // namespace

bool ObjectTransform::isValid() const {
    Rotation const& q = rotation;
    double const size = q.w * q.w + q.x * q.x + q.y * q.y + q.z * q.z;
    return isFinite(translation) && isFinite(scale) && std::abs(size - 1) <= UNIT_SLACK && scale.x != 0 &&
           scale.y != 0 && scale.z != 0;
}

bool ObjectTransform::isUniform() const {
    return std::abs(scale.x) == std::abs(scale.y) && std::abs(scale.y) == std::abs(scale.z);
}

double ObjectTransform::meanScale() const {
    // The root of the product would lose digits: one factor alone is exact.
    return isUniform()
               ? std::abs(scale.x)
               : std::cbrt(std::abs(scale.x)) * std::cbrt(std::abs(scale.y)) * std::cbrt(std::abs(scale.z));
}

Matrix4<double> ObjectTransform::toMatrix(Scene const& scene, std::size_t object) const {
    return toMatrix(scene, pivotOf(scene, object));
}

Matrix4<double> ObjectTransform::toMatrix(Scene const& scene, Point const& pivot) const {
    auto const turnedAndScaled = [&](Point const& v) {
        Point const own = scene.directionToFile(v);
        return scene.directionToScene(rotation({own.x * scale.x, own.y * scale.y, own.z * scale.z}));
    };
    Point const x = turnedAndScaled({1, 0, 0});
    Point const y = turnedAndScaled({0, 1, 0});
    Point const z = turnedAndScaled({0, 0, 1});
    Point const moved = scene.directionToScene(translation * scene.unitsPerFileUnit());
    Point const rest = pivot + moved - (x * pivot.x + y * pivot.y + z * pivot.z);
    return {{x.x, x.y, x.z, 0, y.x, y.y, y.z, 0, z.x, z.y, z.z, 0, rest.x, rest.y, rest.z, 1}};
}

bool ObjectTransform::operator==(ObjectTransform const& other) const {
    return isEqual(translation, other.translation) && rotation == other.rotation &&
           isEqual(scale, other.scale);
}

bool isDrawable(ObjectTransform const& transform, Scene const& scene, std::size_t object) {
    if (!transform.isValid()) {
        return false;
    }
    Matrix4<double> const matrix = transform.toMatrix(scene, object);
    double const* const e = matrix.e;
    auto const sizeOf = [e](int column) {
        return std::hypot(e[4 * column], e[4 * column + 1], e[4 * column + 2]);
    };
    auto const isScale = [](double size) { return size >= 1 / EXTREME && size <= EXTREME; };
    return isScale(sizeOf(0)) && isScale(sizeOf(1)) && isScale(sizeOf(2)) && sizeOf(3) <= EXTREME;
}

// == Objects of a scene ==

std::size_t objectCount(Scene const& scene) {
    return scene.models().size() + scene.clouds().size();
}

std::string const& objectName(Scene const& scene, std::size_t object) {
    std::size_t const models = scene.models().size();
    return object < models ? scene.models()[object].name : scene.clouds()[object - models].name;
}

Box3<double> const& objectBox(Scene const& scene, std::size_t object) {
    std::size_t const models = scene.models().size();
    return object < models ? scene.models()[object].box : scene.clouds()[object - models].box;
}

Point pivotOf(Scene const& scene, std::size_t object) {
    Box3<double> const& box = objectBox(scene, object);
    return box.min * 0.5 + box.max * 0.5;
}

Point transformed(Matrix4<double> const& matrix, Point const& p) {
    double const* const e = matrix.e;
    return {e[0] * p.x + e[4] * p.y + e[8] * p.z + e[12], e[1] * p.x + e[5] * p.y + e[9] * p.z + e[13],
            e[2] * p.x + e[6] * p.y + e[10] * p.z + e[14]};
}

}  // namespace vellum::viewport
