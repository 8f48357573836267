#pragma once

#include "foundation/geometry/Box3.h"
#include "foundation/geometry/Matrix4.h"
#include "foundation/geometry/Vector3.h"
#include "viewport/editing/Rotation.h"
#include "viewport/scene/Scene.h"

#include <cstddef>
#include <string>

namespace vellum::viewport {

/// How an object of a scene is moved, turned and scaled from where its file has it: scaled along its own
/// axes, then turned, both about its pivot, then moved. In axes and units of the files.
///
///     ObjectTransform transform;
///     transform.translation = {0, 0, 2.5};
///     transform.rotation = Rotation::ofDegrees({0, 0, 45});
///     layer.pushTransform(transform.toMatrix(scene, 0));
///
/// Objects of a scene are counted from 0, the models first, then the particles.
struct ObjectTransform {
    /// Smallest and largest size of a factor that a drag gives.
    static constexpr double SMALLEST_SCALE = 1e-4;
    static constexpr double LARGEST_SCALE = 1e6;

    Vector3<double> translation{0, 0, 0};
    Rotation rotation;
    Vector3<double> scale{1, 1, 1};  ///< none is 0; a negative one mirrors

    bool isIdentity() const { return *this == ObjectTransform(); }

    /// Whether all numbers are finite, the rotation has unit length and no scale is 0. Others must not be
    /// drawn with.
    bool isValid() const;

    /// Whether the object is mirrored: what was in front of a triangle is then behind it.
    bool isMirrored() const { return (scale.x < 0) != ((scale.y < 0) != (scale.z < 0)); }

    /// Whether lengths grow alike in all directions.
    bool isUniform() const;

    /// The mean factor of lengths: the cube root of that of volumes. Above 0.
    double meanScale() const;

    /// The transform in the frame of the scene: it is applied to the object as the scene has it.
    /// \param object of the scene
    Matrix4<double> toMatrix(Scene const& scene, std::size_t object) const;

    /// The same with the pivot, in the frame of the scene.
    Matrix4<double> toMatrix(Scene const& scene, Vector3<double> const& pivot) const;

    bool operator==(ObjectTransform const& other) const;
    bool operator!=(ObjectTransform const& other) const { return !(*this == other); }
};

/// Whether an object can be drawn with a transform: it is valid, and its numbers are not so extreme that
/// OpenGL would lose them.
bool isDrawable(ObjectTransform const& transform, Scene const& scene, std::size_t object);

// == Objects of a scene ==

std::size_t objectCount(Scene const& scene);

/// The name of an object's file.
std::string const& objectName(Scene const& scene, std::size_t object);

/// The box of an object as its file has it, in the frame of the scene.
Box3<double> const& objectBox(Scene const& scene, std::size_t object);

/// The middle of that box, about which the object is turned and scaled.
Vector3<double> pivotOf(Scene const& scene, std::size_t object);

/// Where a point comes to lie.
Vector3<double> transformed(Matrix4<double> const& matrix, Vector3<double> const& point);

}  // namespace vellum::viewport
