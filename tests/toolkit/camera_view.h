#pragma once

#include "foundation/raster/Camera_RL.h"
#include "toolkit/View.h"

#include <cmath>

/// The matrices of cameras, by the formulas of GLU's manual, so that tests without OpenGL see what a camera
/// shows.
namespace vellum::toolkit {

/// A camera that loads nothing.
class ParameterCamera : public Camera_RL {
public:
    void updateModelMatrix() override {}
    void updateProjectionMatrix() override {}
    void updateProjectionMatrixZBias() override {}
};

inline Matrix4<double> perspectiveMatrix(double fieldOfView, double aspect, double zNear, double zFar) {
    double const f = 1 / std::tan(fieldOfView * 3.14159265358979323846 / 360);
    return {{f / aspect, 0, 0, 0, 0, f, 0, 0, 0, 0, (zFar + zNear) / (zNear - zFar), -1, 0, 0,
             2 * zFar * zNear / (zNear - zFar), 0}};
}

inline Matrix4<double> orthographicMatrix(double left, double right, double bottom, double top, double zNear,
                                          double zFar) {
    return {{2 / (right - left), 0, 0, 0, 0, 2 / (top - bottom), 0, 0, 0, 0, -2 / (zFar - zNear), 0,
             -(right + left) / (right - left), -(top + bottom) / (top - bottom),
             -(zFar + zNear) / (zFar - zNear), 1}};
}

inline Matrix4<double> lookAtMatrix(Vector3<double> const& eye, Vector3<double> const& center,
                                    Vector3<double> const& up) {
    Vector3<double> const f = normalized(center - eye);
    Vector3<double> const s = normalized(cross(f, up));
    Vector3<double> const u = cross(s, f);
    return {{s.x, u.x, -f.x, 0, s.y, u.y, -f.y, 0, s.z, u.z, -f.z, 0, -dot(s, eye), -dot(u, eye), dot(f, eye),
             1}};
}

/// The rotation of an orthographic kind, by its quarter turns: x to the right, y up, z toward the viewer.
inline Matrix4<double> turnOf(unsigned int kind) {
    switch (kind) {
    case 2:  // 180 degrees about y
        return {{-1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1}};
    case 3:  // 90 degrees about x
        return {{1, 0, 0, 0, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1}};
    case 4:  // -90 degrees about x
        return {{1, 0, 0, 0, 0, 0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1}};
    case 5:  // 90 degrees about y
        return {{0, 0, -1, 0, 0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 0, 1}};
    case 6:  // -90 degrees about y
        return {{0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 0, 1}};
    default:
        return Matrix4<double>::identity();
    }
}

/// What Camera_RL_GL loads for these parameters.
inline View viewOf(Camera_RL& camera, Viewport const& viewport) {
    View view{};
    view.viewport = viewport;
    float const* const m = camera.transform.matrix()->e;
    if (camera.viewKind == 0) {
        Vector3<float> const eye{m[12], m[13], m[14]};
        Vector3<float> const center = eye + Vector3<float>{m[0], m[1], m[2]};
        view.projection = perspectiveMatrix(
            static_cast<double>(camera.fieldOfView), static_cast<double>(camera.aspect),
            static_cast<double>(camera.nearDistance), static_cast<double>(camera.farDistance));
        view.modelView = lookAtMatrix(convert<double>(eye), convert<double>(center),
                                      convert<double>(Vector3<float>{m[4], m[5], m[6]}));
        return view;
    }
    double const h = std::exp(static_cast<double>(camera.zoom));
    double const x = static_cast<double>(camera.panX);
    double const y = static_cast<double>(camera.panY);
    double const ratio = static_cast<double>(camera.aspect);
    view.projection = orthographicMatrix(-(h + x), h - x, -(h + y) / ratio, (h - y) / ratio, -1000, 1000) *
                      turnOf(camera.viewKind);
    view.modelView = Matrix4<double>::identity();
    return view;
}

}  // namespace vellum::toolkit
