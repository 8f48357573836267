#include "viewport/drawing/subjects/BlendedParts.h"

#include "foundation/basic/ArrayServer.h"
#include "toolkit/Lit.h"
#include "viewport/drawing/layer/depth_modes.h"
#include "viewport/drawing/subjects/Moved.h"
#include "viewport/drawing/subjects/SurfacesBehind.h"
#include "viewport/drawing/subjects/array_elements.h"
#include "viewport/drawing/subjects/element_sizes.h"
#include "viewport/drawing/subjects/part_material.h"

#include <algorithm>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

/// The opacity of a texture that is not to be taken.
void ignoreTextureOpacity() {
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_COMBINE);
    glTexEnvi(GL_TEXTURE_ENV, GL_COMBINE_RGB, GL_MODULATE);
    glTexEnvi(GL_TEXTURE_ENV, GL_SOURCE0_RGB, GL_TEXTURE);
    glTexEnvi(GL_TEXTURE_ENV, GL_SOURCE1_RGB, GL_PRIMARY_COLOR);
    glTexEnvi(GL_TEXTURE_ENV, GL_COMBINE_ALPHA, GL_REPLACE);
    glTexEnvi(GL_TEXTURE_ENV, GL_SOURCE0_ALPHA, GL_PRIMARY_COLOR);
}

/// A second texture is added to the color of what follows, and leaves its opacity.
void beginLight(unsigned int texture) {
    glActiveTexture(GL_TEXTURE1);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_COMBINE);
    glTexEnvi(GL_TEXTURE_ENV, GL_COMBINE_RGB, GL_ADD);
    glTexEnvi(GL_TEXTURE_ENV, GL_SOURCE0_RGB, GL_PREVIOUS);
    glTexEnvi(GL_TEXTURE_ENV, GL_SOURCE1_RGB, GL_TEXTURE);
    glTexEnvi(GL_TEXTURE_ENV, GL_COMBINE_ALPHA, GL_REPLACE);
    glTexEnvi(GL_TEXTURE_ENV, GL_SOURCE0_ALPHA, GL_PREVIOUS);
    glActiveTexture(GL_TEXTURE0);
}

void endLight() {
    glActiveTexture(GL_TEXTURE1);
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    glDisable(GL_TEXTURE_2D);
    glActiveTexture(GL_TEXTURE0);
}

}  // namespace

bool BlendedParts::covers(std::vector<ModelVertex> const& vertices, MeshStyle const& style) {
    if (vertices.empty() || style.shading == Shading::BOX) {
        return false;
    }
    return style.opacity * (style.color ? style.color->a : 1) < 1 ||
           (!style.color && std::any_of(vertices.begin(), vertices.end(),
                                        [](ModelVertex const& vertex) { return vertex.color.a < 1; }));
}

void BlendedParts::add(Model const& model) {
    for (ModelPart const& part : model.parts) {
        if (!covers(part, style)) {
            continue;
        }
        Source source = _sourceOf(part);
        source.model = &model;
        if (!style.color) {
            _takeTextures(source);
        }
        _add(source, part.mesh->triangleCount());
    }
    if (covers(model.lines, style)) {
        _addElements(model, model.lines, true);
    }
    if (covers(model.points, style)) {
        _addElements(model, model.points, false);
    }
}

void BlendedParts::_add(Source const& source, std::size_t count) {
    auto const number = static_cast<unsigned int>(sources.size());
    sources.push_back(source);
    pieces.reserve(pieces.size() + count);
    for (std::size_t i = 0; i < count; ++i) {
        pieces.push_back({0, number, static_cast<unsigned int>(i)});
    }
}

void BlendedParts::_addElements(Model const& model, std::vector<ModelVertex> const& vertices, bool areLines) {
    Source source;
    source.model = &model;
    source.elements = vertices.data();
    source.hasLines = areLines;
    _add(source, areLines ? vertices.size() / 2 : vertices.size());
}

void BlendedParts::_takeTextures(Source& source) const {
    ModelPart const& part = *source.part;
    auto const trianglesOf = [&part](char const* channel) {
        return elementsOf<Tuple3<unsigned int>>(part.mesh->namedArray(MeshArrayInf_ns::TRINDEXED, channel));
    };
    auto const valuesOf = [&part](char const* channel) {
        return elementsOf<Vector2<float>>(part.mesh->namedArray(MeshArrayInf_ns::PER_FACE, channel));
    };
    if (part.texture != nullptr) {
        source.texture = textures.nameOf(*part.texture);
        source.coordinateTriangles = trianglesOf(ModelPart::CHANNEL);
        source.coordinates = valuesOf(ModelPart::CHANNEL);
    }
    if (part.emissionMap != nullptr) {
        source.light = textures.nameOf(*part.emissionMap);
        source.lightTriangles = trianglesOf(part.emissionChannel);
        source.lightCoordinates = valuesOf(part.emissionChannel);
    }
}

void BlendedParts::setPlace(Model const& model, std::optional<Matrix4<double>> const& matrix) {
    for (Source& source : sources) {
        if (source.model == &model) {
            source.place = matrix;
        }
    }
}

/// Parts without colors of their vertices have the arrays of their mesh alone.
BlendedParts::Source BlendedParts::_sourceOf(ModelPart const& part) const {
    Source source;
    source.part = &part;
    if (part.colors.size() > 0) {
        source.vertices = part.vertices.begin();
        source.triangles = part.triangles.begin();
        source.normals = part.normals.begin();
        source.normalTriangles = source.triangles;
        source.colors = style.color ? nullptr : part.colors.begin();
    } else {
        Mesh const& mesh = *part.mesh;
        source.vertices = elementsOf<Vector3<double>>(mesh.positions());
        source.triangles = elementsOf<Tuple3<unsigned int>>(mesh.triangles());
        source.normals = elementsOf<Vector3<float>>(mesh.vertexNormals());
        source.normalTriangles = elementsOf<Tuple3<unsigned int>>(mesh.normalTriangles());
    }
    source.color = style.color.value_or(part.color);
    source.color.a *= style.opacity;
    return source;
}

void BlendedParts::draw(Sampling const& sampling) {
    if (pieces.empty()) {
        return;
    }
    _sort();
    SurfacesBehind const behind;
    toolkit::Lit const lit(style.shading == Shading::FACETED ? toolkit::Lit::Finish::DULL
                                                             : toolkit::Lit::Finish::GLOSSY);
    layer.pushDepthTest(DEPTH_TESTED_ONLY);
    layer.pushBlending(BLENDING_ALPHA);
    layer.pushColor(layer.currentColor());
    layer.pushLineWidth(fileLineWidth(style, sampling));
    float const pointSize = layer.setPointSize(filePointSize(style, sampling));
    auto next = pieces.begin();
    while (next != pieces.end()) {
        Source const& source = sources[next->source];
        unsigned int const number = next->source;
        Moved const moved(layer, source.place);
        _begin(source);
        for (; next != pieces.end() && next->source == number; ++next) {
            _emit(source, next->index);
        }
        _end(source);
    }
    endPartMaterial();
    layer.setPointSize(pointSize);
    layer.popLineWidth();
    layer.popColor(1);
    layer.popBlending();
    layer.popDepthTest();
}

/// From the farthest to the nearest. Those of the last drawing are nearly in order where the view turns a
/// little.
void BlendedParts::_sort() {
    Matrix4<double> view{};
    glGetDoublev(GL_MODELVIEW_MATRIX, view.e);
    Matrix4<double> projection{};
    glGetDoublev(GL_PROJECTION_MATRIX, projection.e);
    // Cameras along an axis leave their orientation to the projection, whose depth grows away from the
    // viewer. In perspective that depth is not linear, but the view's is.
    bool const isPerspective = projection.e[11] != 0;
    Matrix4<double> const m = isPerspective ? view : projection * view;
    Vector3<double> const toBack = Vector3<double>{m.e[2], m.e[6], m.e[10]} * (isPerspective ? -1.0 : 1.0);
    for (Source& source : sources) {
        source.toBack = toBack;
        source.depth = 0;
        if (source.place) {
            double const* const e = source.place->e;
            source.toBack = {dot(toBack, {e[0], e[1], e[2]}), dot(toBack, {e[4], e[5], e[6]}),
                             dot(toBack, {e[8], e[9], e[10]})};
            source.depth = 3 * dot(toBack, {e[12], e[13], e[14]});
        }
    }
    for (Piece& piece : pieces) {
        piece.depth = _depthOf(sources[piece.source], piece.index);
    }
    std::sort(pieces.begin(), pieces.end(), [](Piece const& a, Piece const& b) {
        return a.depth != b.depth     ? a.depth > b.depth
               : a.source != b.source ? a.source < b.source
                                      : a.index < b.index;
    });
}

double BlendedParts::_depthOf(Source const& source, unsigned int piece) {
    if (source.elements == nullptr) {
        Tuple3<unsigned int> const& corners = source.triangles[piece];
        return source.depth + dot(source.toBack, source.vertices[corners.e0]) +
               dot(source.toBack, source.vertices[corners.e1]) +
               dot(source.toBack, source.vertices[corners.e2]);
    }
    auto const depthOfEnd = [&](std::size_t i) {
        return dot(source.toBack, convert<double>(source.elements[i].place));
    };
    std::size_t const first = piece;
    return source.depth + (source.hasLines ? 1.5 * (depthOfEnd(2 * first) + depthOfEnd(2 * first + 1))
                                           : 3 * depthOfEnd(first));
}

void BlendedParts::_begin(Source const& source) const {
    if (source.elements != nullptr) {
        layer.disableLighting();
        glBegin(source.hasLines ? GL_LINES : GL_POINTS);
        return;
    }
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
    if (source.light != 0) {
        beginLight(source.light);
    }
    glBegin(GL_TRIANGLES);
}

void BlendedParts::_end(Source const& source) const {
    glEnd();
    if (source.elements != nullptr) {
        layer.enableLighting();
    }
    if (source.light != 0) {
        endLight();
    }
    if (source.texture != 0) {
        glDisable(GL_ALPHA_TEST);
        glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
        layer.disableTextureColor();
    }
}

void BlendedParts::_emit(Source const& source, unsigned int piece) const {
    if (source.elements == nullptr) {
        _emitTriangle(source, piece);
    } else if (source.hasLines) {
        _emitElement(source, 2 * piece);
        _emitElement(source, 2 * piece + 1);
    } else {
        _emitElement(source, piece);
    }
}

void BlendedParts::_emitElement(Source const& source, unsigned int element) const {
    ModelVertex const& vertex = source.elements[element];
    Color4<float> color = style.color.value_or(vertex.color);
    color.a *= style.opacity;
    glColor4fv(&color.r);
    glVertex3fv(&vertex.place.x);
}

void BlendedParts::_emitTriangle(Source const& source, unsigned int triangle) const {
    auto const cornersOf = [](Tuple3<unsigned int> const& t, unsigned int(&corners)[3]) {
        corners[0] = t.e0;
        corners[1] = t.e1;
        corners[2] = t.e2;
    };
    unsigned int corners[3];
    cornersOf(source.triangles[triangle], corners);
    unsigned int normals[3];
    cornersOf(source.normalTriangles[triangle], normals);
    unsigned int places[3] = {0, 0, 0};
    if (source.coordinates != nullptr && source.coordinateTriangles != nullptr) {
        cornersOf(source.coordinateTriangles[triangle], places);
    }
    unsigned int lights[3] = {0, 0, 0};
    bool const isLight = source.lightCoordinates != nullptr && source.lightTriangles != nullptr;
    if (isLight) {
        cornersOf(source.lightTriangles[triangle], lights);
    }
    bool const isFaceted = style.shading == Shading::FACETED;
    if (isFaceted) {
        Vector3<double> const normal = cross(source.vertices[corners[1]] - source.vertices[corners[0]],
                                             source.vertices[corners[2]] - source.vertices[corners[0]]);
        glNormal3dv(&normal.x);
    }
    for (unsigned int k = 0; k < 3; ++k) {
        if (!isFaceted) {
            glNormal3fv(&source.normals[normals[k]].x);
        }
        if (source.coordinates != nullptr) {
            glTexCoord2fv(&source.coordinates[places[k]].x);
        }
        if (isLight) {
            glMultiTexCoord2fv(GL_TEXTURE1, &source.lightCoordinates[lights[k]].x);
        }
        Color4<float> color = source.color;
        if (source.colors != nullptr) {
            color = source.colors[corners[k]];
            color.a *= style.opacity;
        }
        glColor4fv(&color.r);
        glVertex3dv(&source.vertices[corners[k]].x);
    }
}

}  // namespace vellum::viewport
