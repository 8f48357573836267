#include "viewport/drawing/subjects/Moved.h"

#include "foundation/geometry/Vector3.h"

#include <GL/glew.h>

namespace vellum::viewport {

FrontFaces::FrontFaces(bool isMirrored) : isMirrored(isMirrored) {
    if (isMirrored) {
        glFrontFace(GL_CW);
    }
}

FrontFaces::~FrontFaces() {
    if (isMirrored) {
        glFrontFace(GL_CCW);
    }
}

Moved::Moved(Core_RL& layer, std::optional<Matrix4<double>> const& matrix)
    : layer(layer), isMoved(matrix.has_value()), faces(matrix && isMirror(*matrix)) {
    if (isMoved) {
        layer.pushTransform(*matrix);
    }
}

Moved::~Moved() {
    if (isMoved) {
        layer.popTransform();
    }
}

bool Moved::isMirror(Matrix4<double> const& matrix) {
    double const* const e = matrix.e;
    return dot(cross(Vector3<double>{e[0], e[1], e[2]}, Vector3<double>{e[4], e[5], e[6]}),
               Vector3<double>{e[8], e[9], e[10]}) < 0;
}

}  // namespace vellum::viewport
