#include "toolkit/View.h"

#include "toolkit/internal/gl.h"

#include <cmath>

namespace vellum::toolkit {

namespace {

using Point = Vector3<double>;

struct Homogeneous {
    double x;
    double y;
    double z;
    double w;
};

Homogeneous transformed(Matrix4<double> const& m, Homogeneous const& p) {
    return {m.e[0] * p.x + m.e[4] * p.y + m.e[8] * p.z + m.e[12] * p.w,
            m.e[1] * p.x + m.e[5] * p.y + m.e[9] * p.z + m.e[13] * p.w,
            m.e[2] * p.x + m.e[6] * p.y + m.e[10] * p.z + m.e[14] * p.w,
            m.e[3] * p.x + m.e[7] * p.y + m.e[11] * p.z + m.e[15] * p.w};
}

/// The direction in which a coordinate of clip space grows.
Point gradient(Matrix4<double> const& matrix, int row) {
    return {matrix.e[row], matrix.e[4 + row], matrix.e[8 + row]};
}

}  // namespace

View View::current() {
    View view{};
    GLint area[4];
    glGetIntegerv(GL_VIEWPORT, area);
    glGetDoublev(GL_PROJECTION_MATRIX, view.projection.e);
    glGetDoublev(GL_MODELVIEW_MATRIX, view.modelView.e);
    view.viewport = {area[0], area[1], area[2], area[3]};
    return view;
}

void View::load() const {
    glViewport(viewport.x, viewport.y, viewport.width, viewport.height);
    glMatrixMode(GL_PROJECTION);
    glLoadMatrixd(projection.e);
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixd(modelView.e);
}

Matrix4<double> View::toClip() const {
    return projection * modelView;
}

ScreenAxes View::axes() const {
    Matrix4<double> const clip = toClip();
    // Depth grows straight away from the viewer. A projection that shows only a part of a larger picture adds
    // a share of it to x, which does not turn the screen.
    Point const away = normalized(gradient(clip, 2));
    Point const aside = gradient(clip, 0);
    Point const right = normalized(aside - away * dot(aside, away));
    return {right, cross(right, away), -away};
}

bool View::isPerspective() const {
    return length(gradient(toClip(), 3)) > 0;
}

ScreenPoint View::project(Vector3<double> const& point) const {
    Homogeneous const p = transformed(toClip(), {point.x, point.y, point.z, 1});
    return {(p.x / p.w + 1) / 2 * viewport.width, (1 - p.y / p.w) / 2 * viewport.height, (p.z / p.w + 1) / 2,
            p.w > 0};
}

Ray View::rayThrough(double x, double y) const {
    // With r0, r1 and r3 the rows of the matrix to clip space, the points p at (u, v) have r0 p = u (r3 p)
    // and r1 p = v (r3 p): the line in which two planes meet, on which the near plane r2 p = -r3 p marks the
    // origin.
    Matrix4<double> const clip = toClip();
    double const u = 2 * x / viewport.width - 1;
    double const v = 1 - 2 * y / viewport.height;
    Point const away = gradient(clip, 2);
    Point const w = gradient(clip, 3);
    Point const planes[3] = {gradient(clip, 0) - w * u, gradient(clip, 1) - w * v, away + w};
    double const ends[3] = {clip.e[15] * u - clip.e[12], clip.e[15] * v - clip.e[13],
                            -clip.e[15] - clip.e[14]};
    Point const along = cross(planes[0], planes[1]);
    double const determinant = dot(along, planes[2]);
    Point const origin =
        (cross(planes[1], planes[2]) * ends[0] + cross(planes[2], planes[0]) * ends[1] + along * ends[2]) *
        (1 / determinant);
    double const sign = dot(along, away) < 0 ? -1.0 : 1.0;
    return {origin, normalized(along * sign)};
}

double View::pixelsPerUnit(Vector3<double> const& at) const {
    Matrix4<double> const clip = toClip();
    double const w = dot(gradient(clip, 3), at) + clip.e[15];
    return w > 0 ? std::abs(dot(gradient(clip, 1), axes().up)) / w * viewport.height / 2 : 0;
}

}  // namespace vellum::toolkit
