#include "toolkit/internal/ImpostorView.h"

#include <algorithm>

namespace vellum::toolkit {

namespace {

/// What a row of a matrix makes of a direction.
double alongRow(Matrix4<double> const& matrix, int row, Vector3<double> const& direction) {
    return matrix.e[row] * direction.x + matrix.e[4 + row] * direction.y + matrix.e[8 + row] * direction.z;
}

/// The part of a square viewport that starts at its lower left corner.
Matrix4<double> intoSquare(int width, int height) {
    double const side = std::max(width, height);
    Matrix4<double> part = Matrix4<double>::identity();
    part.e[0] = width / side;
    part.e[5] = height / side;
    part.e[12] = part.e[0] - 1;
    part.e[13] = part.e[5] - 1;
    return part;
}

}  // namespace

ImpostorView ImpostorView::of(View const& view, double diameter) {
    Matrix4<double> const square = intoSquare(view.viewport.width, view.viewport.height) * view.toClip();
    ScreenAxes const screen = view.axes();
    ImpostorView result{};
    // A ball's width in clip space does not depend on its place: the division by w is still to come.
    result.size = diameter * alongRow(square, 0, screen.right);

    // The projection's third column is what a step of 1 along its third axis does to depth. A fragment is
    // moved by `size` at most, which has to be the step of half a diameter toward the viewer.
    double const stepPerSize = 0.5 * diameter / result.size;
    double const depth = stepPerSize * alongRow(square, 2, screen.towardViewer);
    double const w = stepPerSize * alongRow(square, 3, screen.towardViewer);
    result.projection = Matrix4<double>::identity();
    result.projection.e[10] = depth;
    result.projection.e[11] = w;

    Matrix4<double> inverse = Matrix4<double>::identity();
    inverse.e[10] = 1 / depth;
    inverse.e[11] = -w / depth;
    result.modelView = inverse * square;
    return result;
}

}  // namespace vellum::toolkit
