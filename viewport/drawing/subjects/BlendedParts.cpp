#include "viewport/drawing/subjects/BlendedParts.h"

#include "foundation/basic/ArrayServer.h"
#include "toolkit/Lit.h"
#include "viewport/drawing/layer/depth_modes.h"
#include "viewport/drawing/subjects/SurfacesBehind.h"
#include "viewport/drawing/subjects/part_material.h"

#include <algorithm>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

template <class T>
T const* elementsOf(ArrayId const& id) {
    ArrayTypeable const* const array = VL_ArrayServer.resolve(id);
    return array != nullptr ? array->as<T>() : nullptr;
}

/// The opacity of a texture that is not to be taken.
void ignoreTextureOpacity() {
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_COMBINE);
    glTexEnvi(GL_TEXTURE_ENV, GL_COMBINE_RGB, GL_MODULATE);
    glTexEnvi(GL_TEXTURE_ENV, GL_SOURCE0_RGB, GL_TEXTURE);
    glTexEnvi(GL_TEXTURE_ENV, GL_SOURCE1_RGB, GL_PRIMARY_COLOR);
    glTexEnvi(GL_TEXTURE_ENV, GL_COMBINE_ALPHA, GL_REPLACE);
    glTexEnvi(GL_TEXTURE_ENV, GL_SOURCE0_ALPHA, GL_PRIMARY_COLOR);
}

}  // namespace

void BlendedParts::add(Model const& model) {
    for (ModelPart const& part : model.parts) {
        if (!covers(part, style)) {
            continue;
        }
        Source source{&part, 0, nullptr, nullptr};
        if (part.texture != nullptr) {
            source.texture = textures.nameOf(*part.texture);
            source.coordinateTriangles = elementsOf<Tuple3<unsigned int>>(
                part.mesh->namedArray(MeshArrayInf_ns::TRINDEXED, ModelPart::CHANNEL));
            source.coordinates = elementsOf<Vector2<float>>(
                part.mesh->namedArray(MeshArrayInf_ns::PER_FACE, ModelPart::CHANNEL));
        }
        auto const number = static_cast<unsigned int>(sources.size());
        sources.push_back(source);
        triangles.reserve(triangles.size() + part.triangles.size());
        for (unsigned int t = 0; t < part.triangles.size(); ++t) {
            triangles.push_back({0, number, t});
        }
    }
}

void BlendedParts::draw() {
    if (triangles.empty()) {
        return;
    }
    _sort();
    SurfacesBehind const behind;
    toolkit::Lit const lit(style.shading == Shading::FACETED ? toolkit::Lit::Finish::DULL
                                                             : toolkit::Lit::Finish::GLOSSY);
    layer.pushDepthTest(DEPTH_TESTED_ONLY);
    layer.pushBlending(BLENDING_ALPHA);
    layer.pushColor(layer.currentColor());
    auto next = triangles.begin();
    while (next != triangles.end()) {
        Source const& source = sources[next->source];
        unsigned int const number = next->source;
        _begin(source);
        for (; next != triangles.end() && next->source == number; ++next) {
            _emit(source, next->index);
        }
        _end(source);
    }
    endPartMaterial();
    layer.popColor(1);
    layer.popBlending();
    layer.popDepthTest();
}

/// From the farthest to the nearest. Those of the last drawing are nearly in order where the view turns a little.
void BlendedParts::_sort() {
    Matrix4<double> view{};
    glGetDoublev(GL_MODELVIEW_MATRIX, view.e);
    Matrix4<double> projection{};
    glGetDoublev(GL_PROJECTION_MATRIX, projection.e);
    // Cameras along an axis leave their orientation to the projection, whose depth grows away from the viewer. In
    // perspective that depth is not linear, but the view's is.
    bool const isPerspective = projection.e[11] != 0;
    Matrix4<double> const m = isPerspective ? view : projection * view;
    Vector3<double> const toBack = Vector3<double>{m.e[2], m.e[6], m.e[10]} * (isPerspective ? -1.0 : 1.0);
    for (Triangle& triangle : triangles) {
        ModelPart const& part = *sources[triangle.source].part;
        Tuple3<unsigned int> const& corners = part.triangles[triangle.index];
        triangle.depth = dot(toBack, part.vertices[corners.e0]) + dot(toBack, part.vertices[corners.e1]) +
                         dot(toBack, part.vertices[corners.e2]);
    }
    std::sort(triangles.begin(), triangles.end(), [](Triangle const& a, Triangle const& b) {
        return a.depth != b.depth     ? a.depth > b.depth
               : a.source != b.source ? a.source < b.source
                                      : a.index < b.index;
    });
}

void BlendedParts::_begin(Source const& source) const {
    setPartMaterial(*source.part, style.shading == Shading::SMOOTH);
    if (source.texture != 0) {
        layer.activateTextureColor(source.texture);
        if (source.part->alphaMode == AlphaMode::SOLID) {
            ignoreTextureOpacity();
        } else if (source.part->alphaMode == AlphaMode::MASK) {
            glEnable(GL_ALPHA_TEST);
            glAlphaFunc(GL_GEQUAL, source.part->alphaCutoff);
        }
    }
    glBegin(GL_TRIANGLES);
}

void BlendedParts::_end(Source const& source) const {
    glEnd();
    if (source.texture != 0) {
        glDisable(GL_ALPHA_TEST);
        glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
        layer.disableTextureColor();
    }
}

void BlendedParts::_emit(Source const& source, unsigned int triangle) const {
    ModelPart const& part = *source.part;
    auto const cornersOf = [](Tuple3<unsigned int> const& t, unsigned int(&corners)[3]) {
        corners[0] = t.e0;
        corners[1] = t.e1;
        corners[2] = t.e2;
    };
    unsigned int corners[3];
    cornersOf(part.triangles[triangle], corners);
    unsigned int places[3] = {0, 0, 0};
    if (source.coordinates != nullptr && source.coordinateTriangles != nullptr) {
        cornersOf(source.coordinateTriangles[triangle], places);
    }
    bool const isFaceted = style.shading == Shading::FACETED;
    if (isFaceted) {
        Vector3<double> const normal = cross(part.vertices[corners[1]] - part.vertices[corners[0]],
                                             part.vertices[corners[2]] - part.vertices[corners[0]]);
        glNormal3dv(&normal.x);
    }
    for (unsigned int k = 0; k < 3; ++k) {
        if (!isFaceted) {
            glNormal3fv(&part.normals[corners[k]].x);
        }
        if (source.coordinates != nullptr) {
            glTexCoord2fv(&source.coordinates[places[k]].x);
        }
        glColor4fv(&part.colors[corners[k]].r);
        glVertex3dv(&part.vertices[corners[k]].x);
    }
}

}  // namespace vellum::viewport
