#pragma once

#include "foundation/geometry/Box3.h"
#include "foundation/geometry/Matrix4.h"
#include "foundation/geometry/Vector3.h"
#include "viewport/files/mesh/UpAxis.h"

#include <algorithm>

namespace vellum::viewport {

/// Turns directions of files so that what is up in them becomes y, and back. Only exchanges components and
/// changes signs, so it loses no digit. Seen from the front, x of the files stays to the right where that can
/// be.
class Turn {
public:
    explicit Turn(UpAxis up = UpAxis::Y) : up(up) {}

    template <class T>
    Vector3<T> operator()(Vector3<T> const& p) const {
        switch (up) {
        case UpAxis::X:
            return {-p.y, p.x, p.z};
        case UpAxis::Y:
            break;
        case UpAxis::Z:
            return {p.x, p.z, -p.y};
        case UpAxis::MINUS_X:
            return {p.y, -p.x, p.z};
        case UpAxis::MINUS_Y:
            return {p.x, -p.y, -p.z};
        case UpAxis::MINUS_Z:
            return {p.x, -p.z, p.y};
        }
        return p;
    }

    template <class T>
    Vector3<T> back(Vector3<T> const& p) const {
        switch (up) {
        case UpAxis::X:
            return {p.y, -p.x, p.z};
        case UpAxis::Y:
            break;
        case UpAxis::Z:
            return {p.x, -p.z, p.y};
        case UpAxis::MINUS_X:
            return {-p.y, p.x, p.z};
        case UpAxis::MINUS_Y:
            return {p.x, -p.y, -p.z};
        case UpAxis::MINUS_Z:
            return {p.x, p.z, -p.y};
        }
        return p;
    }

    Box3<double> operator()(Box3<double> const& box) const {
        Vector3<double> const a = (*this)(box.min);
        Vector3<double> const b = (*this)(box.max);
        return {{std::min(a.x, b.x), std::min(a.y, b.y), std::min(a.z, b.z)},
                {std::max(a.x, b.x), std::max(a.y, b.y), std::max(a.z, b.z)}};
    }

    /// The same as a matrix.
    Matrix4<double> matrix() const {
        Vector3<double> const x = (*this)(Vector3<double>{1, 0, 0});
        Vector3<double> const y = (*this)(Vector3<double>{0, 1, 0});
        Vector3<double> const z = (*this)(Vector3<double>{0, 0, 1});
        return {{x.x, x.y, x.z, 0, y.x, y.y, y.z, 0, z.x, z.y, z.z, 0, 0, 0, 0, 1}};
    }

private:
    UpAxis up;
};

/// Where the files come to lie in a frame: moved, scaled and turned.
struct Placement {
    Vector3<double> center{0, 0, 0};  ///< of the files; becomes the origin
    double scale = 1;                 ///< units of the frame for each unit of the files, above 0
    Turn turn = Turn();

    Vector3<double> operator()(Vector3<double> const& p) const { return turn((p - center) * scale); }
};

}  // namespace vellum::viewport
