#include "foundation/geometry/MeshFault.h"

namespace vellum::MeshFault_ns {

char const* text(type const& fault) {
    switch (fault) {
    case NONE:
        return "the mesh has no fault";
    case NO_TRIANGLES:
        return "there are no triangles";
    case TOO_LARGE:
        return "the mesh is too large";
    case INDEX_OUT_OF_RANGE:
        return "a triangle names a vertex that does not exist";
    case POSITION_NOT_FINITE:
        return "a coordinate is infinite or not a number";
    case CORNER_NORMAL_COUNT:
        return "the corner normals are not as many as the triangles";
    case NORMAL_TRIANGLE_COUNT:
        return "the normal triangles are not as many as the triangles";
    case NORMAL_INDEX_OUT_OF_RANGE:
        return "a normal triangle names a normal that does not exist";
    case FACE_NORMAL_COUNT:
        return "the face normals are not as many as the triangles";
    case ADJACENCY_COUNT:
        return "the adjacency does not have three entries for each triangle";
    case ADJACENCY_OUT_OF_RANGE:
        return "an adjacency entry names a corner that does not exist";
    }
    return "the fault is not known";
}

}  // namespace vellum::MeshFault_ns
