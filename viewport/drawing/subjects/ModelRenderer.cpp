#include "viewport/drawing/subjects/ModelRenderer.h"

#include "foundation/basic/ArrayServer.h"
#include "toolkit/Lit.h"
#include "toolkit/draw_mesh.h"
#include "toolkit/mesh_arrays.h"
#include "toolkit/transforms.h"
#include "viewport/drawing/layer/depth_modes.h"
#include "viewport/drawing/subjects/BlendedParts.h"
#include "viewport/drawing/subjects/Moved.h"
#include "viewport/drawing/subjects/SurfacesBehind.h"
#include "viewport/drawing/subjects/array_elements.h"
#include "viewport/drawing/subjects/derived_arrays.h"
#include "viewport/drawing/subjects/element_sizes.h"
#include "viewport/drawing/subjects/part_material.h"

#include <algorithm>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

using toolkit::Lit;

constexpr Color4<float> HIDDEN_LINES{0.62F, 0.70F, 0.82F, 0.16F};
constexpr Color4<float> FRONT_LINES{0.80F, 0.87F, 0.97F, 0.90F};
constexpr Color4<float> BOX_EDGES{0.97F, 0.78F, 0.38F, 1};
constexpr Color4<float> EDGE_LINES{0.98F, 0.88F, 0.55F, 1};
constexpr Color4<float> VERTEX_NORMAL_LINES{0.45F, 0.85F, 1.0F, 1};
constexpr Color4<float> FACE_NORMAL_LINES{1.0F, 0.72F, 0.30F, 1};
constexpr float BORDER_MARKS[4] = {1.0F, 0.62F, 0.16F, 1};
constexpr float BLENDED_ALPHA = 0.42F;

// Blended edges are drawn without the texture, so a textured surface gets a neutral color.
constexpr Color4<float> TEXTURED_BLENDED{0.74F, 0.76F, 0.80F, 1};

constexpr float NORMAL_LENGTH = 0.045F * static_cast<float>(Scene::RADIUS);

// The preview draws normals of length 1, so its frame is one in which 1 is as long as the normals are to be.
constexpr double PREVIEW_UNIT = static_cast<double>(NORMAL_LENGTH);

// Where a mesh keeps all normals of its vertices for being drawn: a vertex on a hard edge has several.
constexpr char NORMAL_POINTS[] = "points of all normals";
constexpr char NORMAL_VECTORS[] = "vectors of all normals";

constexpr char COLORS[] = "colors";

template <class T>
Array<T> arrayOfSize(unsigned int size) {
    Array<T> array;
    array.reserve(size, false);
    array.setSize(size);
    return array;
}

void addAllNormals(Mesh& mesh) {
    auto const* const positions = elementsOf<Vector3<double>>(mesh.positions());
    auto const* const triangles = elementsOf<Tuple3<unsigned int>>(mesh.triangles());
    auto const* const normals = elementsOf<Vector3<float>>(mesh.vertexNormals());
    auto const* const normalTriangles = elementsOf<Tuple3<unsigned int>>(mesh.normalTriangles());
    if (positions == nullptr || triangles == nullptr || normals == nullptr || normalTriangles == nullptr) {
        return;
    }
    unsigned int const count = sizeOf(mesh.vertexNormals());
    auto points = arrayOfSize<Vector3<double>>(count);
    auto vectors = arrayOfSize<Color4<float>>(count);
    for (unsigned int i = 0; i < count; ++i) {
        vectors[i] = {normals[i].x, normals[i].y, normals[i].z, 0};
        points[i] = i < sizeOf(mesh.positions()) ? positions[i] : Vector3<double>{0, 0, 0};
    }
    for (unsigned int t = 0; t < mesh.triangleCount(); ++t) {
        points[normalTriangles[t].e0] = positions[triangles[t].e0];
        points[normalTriangles[t].e1] = positions[triangles[t].e1];
        points[normalTriangles[t].e2] = positions[triangles[t].e2];
    }
    mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, NORMAL_POINTS, points);
    mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, NORMAL_VECTORS, vectors);
}

/// Gives a mesh the texture coordinates of another one, whose triangles are in the same order.
void copyCoordinates(Mesh const& from, Mesh& to) {
    ArrayTypeable const* const triangles =
        VL_ArrayServer.resolve(from.namedArray(MeshArrayInf_ns::TRINDEXED, ModelPart::CHANNEL));
    ArrayTypeable const* const values =
        VL_ArrayServer.resolve(from.namedArray(MeshArrayInf_ns::PER_FACE, ModelPart::CHANNEL));
    if (triangles == nullptr || values == nullptr) {
        return;
    }
    auto const* const corners = triangles->as<Tuple3<unsigned int>>();
    auto const* const coordinates = values->as<Vector2<float>>();
    auto newTriangles = arrayOfSize<Tuple3<unsigned int>>(triangles->size);
    auto newCoordinates = arrayOfSize<Vector2<float>>(values->size);
    std::copy(corners, corners + triangles->size, newTriangles.begin());
    std::copy(coordinates, coordinates + values->size, newCoordinates.begin());
    to.addNamedArray(MeshArrayInf_ns::TRINDEXED, ModelPart::CHANNEL, newTriangles);
    to.addNamedArray(MeshArrayInf_ns::PER_FACE, ModelPart::CHANNEL, newCoordinates);
}

/// The surface of a part whose vertices have colors.
std::unique_ptr<Mesh> toColoredMesh(ModelPart const& part, float opacity) {
    Array<Color4<float>> colors = part.colors;
    if (opacity < 1) {
        for (Color4<float>& color : colors) {
            color.a *= opacity;
        }
    }
    auto mesh = std::make_unique<Mesh>();
    mesh->setPositions(part.vertices);
    mesh->setTriangles(part.triangles);
    mesh->workFaceNormals();
    toolkit::setVertexNormals(*mesh, part.normals);
    toolkit::setColors(*mesh, COLORS, colors);
    if (part.texture != nullptr) {
        copyCoordinates(*part.mesh, *mesh);
    }
    return mesh;
}

/// The import in the frame of the preview.
std::unique_ptr<MeshImporter> toPreview(MeshImporter const& import) {
    auto preview = std::make_unique<MeshImporter>(import);
    for (Vector3<double>& p : preview->positions) {
        p = p * (1 / PREVIEW_UNIT);
    }
    return preview;
}

Color4<float> brightened(Color4<float> const& color) {
    auto const component = [](float value) { return std::min(1.0F, 0.15F + 1.3F * value); };
    return {component(color.r), component(color.g), component(color.b), 1};
}

}  // namespace

ModelRenderer::ModelRenderer(Core_RL& layer, Model const& model, MeshStyle const& style,
                             TextureStore& textures)
    : layer(layer)
    , model(model)
    , style(style)
    , textures(textures)
    , areLinesBlended(BlendedParts::covers(model.lines, style))
    , arePointsBlended(BlendedParts::covers(model.points, style)) {
    bool const hasBuffers = layer.isExtensionSupported("GL_ARB_vertex_buffer_object");
    for (ModelPart const& source : model.parts) {
        Part& part = parts.emplace_back();
        part.source = &source;
        dropArrays(*source.mesh, style);
        part.renderer = std::make_unique<Mesh_RL_GL>(source.mesh.get(), false);
        part.renderer->useBufferObjects = hasBuffers && !style.immediate;
        part.surface.shading = style.shading;
        part.surface.color = style.color.value_or(source.color);
        part.surface.color.a *= style.opacity;
        part.surface.outlinesBack = style.wireframeBack;
        if (style.allEdges) {
            part.surface.edges = toolkit::Edges::TRIANGLES;
            part.surface.edgeColor = EDGE_LINES;
        }
        if (style.color) {
            // In place of texture and colors.
        } else if (source.texture != nullptr) {
            part.surface.textureChannel = ModelPart::CHANNEL;
        }
        if (!style.color && source.colors.size() > 0 && !BlendedParts::covers(source, style)) {
            part.colored = toColoredMesh(source, style.opacity);
            part.coloredRenderer = std::make_unique<Mesh_RL_GL>(part.colored.get(), false);
            part.surface.colors = COLORS;
        }
        if (!style.color && source.emissionMap != nullptr && !BlendedParts::covers(source, style)) {
            part.light = part.surface;
            part.light.color = {1, 1, 1, 1};
            part.light.colors = {};
            part.light.edges = toolkit::Edges::NONE;
            part.light.textureChannel = source.emissionChannel;
            if (source.emissionChannel != ModelPart::CHANNEL) {
                part.lightRenderer = std::make_unique<Mesh_RL_GL>(source.mesh.get(), false);
                part.lightRenderer->useBufferObjects = part.renderer->useBufferObjects;
            }
        }
        if (style.importPreview && source.import != nullptr) {
            part.import = toPreview(*source.import);
        }
        if (style.normals == Normals::VERTEX && source.hasHardNormals) {
            addAllNormals(*source.mesh);
        }
    }
    if (style.shading == Shading::BOX) {
        whole = std::make_unique<Mesh>();
        whole->setPositions(model.vertices);
        wholeRenderer = std::make_unique<Mesh_RL_GL>(whole.get(), false);
    }
}

void ModelRenderer::draw(Sampling const& sampling) {
    // Another renderer of the same model, in another style, may have dropped them.
    for (Part const& part : parts) {
        static_cast<void>(deriveArrays(*part.source->mesh, style));
    }
    Moved const moved(layer, place);
    _draw(sampling);
}

void ModelRenderer::_draw(Sampling const& sampling) {
    if (style.importPreview) {
        for (Part& part : parts) {
            _drawPreview(part, sampling);
        }
        return;
    }
    if (style.shading == Shading::WIREFRAME) {
        _drawWireframe(sampling);
    } else if (style.shading == Shading::BOX) {
        _drawBox(sampling);
    }
    _drawLinesAndPoints(sampling);
    for (Part& part : parts) {
        if (style.isFilled() && !BlendedParts::covers(*part.source, style)) {
            _drawSurface(part, sampling);
        } else {
            _drawEdges(part, sampling);
        }
    }
    // After all surfaces, which may lie behind.
    for (Part& part : parts) {
        _drawConnectivity(part, sampling);
        _drawNormals(part, sampling);
    }
}

void ModelRenderer::drawForPicking() {
    Moved const moved(layer, place);
    if (style.shading == Shading::BOX) {
        layer.render(model.box, false);
    } else {
        _drawShape();
        _send(GL_LINES, model.lines, false);
        _send(GL_POINTS, model.points, false);
    }
}

float ModelRenderer::_lineWidth(Sampling const& sampling, double standard) const {
    return lineWidthOf(style, sampling, standard);
}

void ModelRenderer::_drawShape() {
    for (Part const& part : parts) {
        part.renderer->render();
    }
}

void ModelRenderer::_drawLinesAndPoints(Sampling const& sampling) {
    if (style.shading == Shading::BOX) {
        return;
    }
    layer.pushColor(style.color.value_or(layer.currentColor()));
    layer.pushLineWidth(fileLineWidth(style, sampling));
    float const pointSize = layer.setPointSize(filePointSize(style, sampling));
    if (!areLinesBlended) {
        _send(GL_LINES, model.lines, !style.color);
    }
    if (!arePointsBlended) {
        _send(GL_POINTS, model.points, !style.color);
    }
    layer.setPointSize(pointSize);
    layer.popLineWidth();
    layer.popColor(1);
}

void ModelRenderer::_send(unsigned int primitive, std::vector<ModelVertex> const& vertices, bool hasColors) {
    if (vertices.empty()) {
        return;
    }
    glPushClientAttrib(GL_CLIENT_VERTEX_ARRAY_BIT);
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_FLOAT, sizeof(ModelVertex), &vertices.front().place.x);
    if (hasColors) {
        glEnableClientState(GL_COLOR_ARRAY);
        glColorPointer(4, GL_FLOAT, sizeof(ModelVertex), &vertices.front().color.r);
    }
    glDrawArrays(primitive, 0, static_cast<GLsizei>(vertices.size()));
    glPopClientAttrib();
}

void ModelRenderer::_drawSurface(Part& part, Sampling const& sampling) {
    bool const hasPicture = part.source->texture != nullptr || part.source->emissionMap != nullptr;
    bool const isPlain = (!hasPicture || style.color) && part.colored == nullptr && style.opacity == 1;
    if (style.edgesBlend || (style.edges && isPlain && style.shading == Shading::SMOOTH)) {
        _drawSurfaceWithEdges(part, sampling);
    } else {
        _drawPlainSurface(part, sampling);
        _drawEdges(part, sampling);
    }
}

void ModelRenderer::_drawSurfaceWithEdges(Part& part, Sampling const& sampling) {
    ModelPart const& source = *part.source;
    SurfacesBehind const behind;
    Lit const lit(style.edges ? Lit::Finish::BRIGHT : Lit::Finish::DULL);
    layer.pushLineWidth(_lineWidth(sampling, 1.6));
    Color4<float> const plain = style.color.value_or(source.color);
    layer.pushColor(plain);
    if (style.edgesBlend) {
        Color4<float> color = source.texture != nullptr && !style.color ? TEXTURED_BLENDED : plain;
        color.a = BLENDED_ALPHA * style.opacity;
        part.renderer->renderWithEdgesBlending(color, true);
    } else {
        // The renderer draws the surface in half of this color.
        part.renderer->renderWithEdges(brightened(plain));
    }
    layer.popColor(1);
    layer.popLineWidth();
}

void ModelRenderer::_drawPlainSurface(Part& part, Sampling const& sampling) {
    part.surface.lineWidth = _lineWidth(sampling, 1.0);
    if (part.source->texture != nullptr && !style.color) {
        part.surface.texture = textures.nameOf(*part.source->texture);
    }
    // Behind, even where edges are not drawn: other lines over the surface follow.
    SurfacesBehind const behind;
    bool const isGlossy = style.shading != Shading::FACETED;
    Lit const lit(isGlossy ? Lit::Finish::GLOSSY : Lit::Finish::DULL);
    PartMask const mask(*part.source);
    setPartMaterial(*part.source, isGlossy);
    drawMesh(part.colored != nullptr ? *part.coloredRenderer : *part.renderer, part.surface);
    endPartMaterial();
    if (part.source->emissionMap != nullptr && !style.color) {
        _addLight(part);
    }
}

/// Adds the emission map to the surface that is drawn already: where its depth is, so not where the texture
/// masks it.
void ModelRenderer::_addLight(Part& part) {
    part.light.texture = textures.nameOf(*part.source->emissionMap);
    layer.disableLighting();
    layer.pushDepthTest({DEPTH_EQUAL, false});
    layer.pushBlending(BLENDING_ALPHA);
    glBlendFuncSeparate(GL_ONE, GL_ONE, GL_ZERO, GL_ONE);
    drawMesh(part.lightRenderer != nullptr ? *part.lightRenderer : *part.renderer, part.light);
    layer.popBlending();
    layer.popDepthTest();
    layer.enableLighting();
}

void ModelRenderer::_drawWireframe(Sampling const& sampling) {
    // First the depth of the surface alone, moved away a little; then all lines faintly, and those in front
    // strongly.
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    {
        SurfacesBehind const behind;
        _drawShape();
    }
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);

    toolkit::MeshStyle lines;
    lines.shading = Shading::WIREFRAME;
    lines.lineWidth = _lineWidth(sampling, 1.0);
    struct Step {
        DepthtTestMode depth;
        Color4<float> color;
    };
    for (Step step : {Step{DEPTH_IGNORED, HIDDEN_LINES}, Step{DEPTH_TESTED_ONLY, FRONT_LINES}}) {
        lines.color = style.color.value_or(step.color);
        lines.color.a = step.color.a;
        layer.pushDepthTest(step.depth);
        for (Part const& part : parts) {
            drawMesh(*part.renderer, lines);
        }
        layer.popDepthTest();
    }
}

void ModelRenderer::_drawBox(Sampling const& sampling) {
    toolkit::MeshStyle box;
    box.shading = Shading::BOX;
    box.color = BOX_EDGES;
    box.lineWidth = _lineWidth(sampling, 1.8);
    drawMesh(*wholeRenderer, box);
}

void ModelRenderer::_drawEdges(Part& part, Sampling const& sampling) {
    if (!style.edges && !style.edgesBlend) {
        return;
    }
    layer.pushLineWidth(_lineWidth(sampling, 1.6));
    layer.pushColor(EDGE_LINES);
    if (style.edges) {
        part.renderer->renderEdges();
    } else {
        Lit const lit(Lit::Finish::BRIGHT);
        part.renderer->renderWithEdgesBlending(EDGE_LINES, false);
    }
    layer.popColor(1);
    layer.popLineWidth();
}

void ModelRenderer::_drawNormals(Part& part, Sampling const& sampling) {
    if (style.normals == Normals::NONE) {
        return;
    }
    layer.pushLineWidth(_lineWidth(sampling, 1.0));
    if (style.normals == Normals::FACE) {
        layer.pushColor(FACE_NORMAL_LINES);
        part.renderer->renderFaceNormals(NORMAL_LENGTH);
    } else {
        layer.pushColor(VERTEX_NORMAL_LINES);
        if (part.source->hasHardNormals) {
            part.renderer->renderVertexNormals(NORMAL_POINTS, NORMAL_VECTORS, NORMAL_LENGTH);
        } else {
            part.renderer->renderVertexNormals(NORMAL_LENGTH);
        }
    }
    layer.popColor(1);
    layer.popLineWidth();
}

void ModelRenderer::_drawConnectivity(Part& part, Sampling const& sampling) {
    if (!style.connectivity) {
        return;
    }
    layer.pushDepthTest(DEPTH_TESTED_ONLY);
    layer.pushColor(layer.currentColor());
    layer.pushLineWidth(_lineWidth(sampling, 1.0));
    part.renderer->renderEdgesConnection();
    layer.popLineWidth();

    // Both renderers set their color to white; an emissive material that takes no color from it shows the
    // borders.
    float const dark[4] = {0, 0, 0, 1};
    glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE, dark);
    glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, BORDER_MARKS);
    layer.enableLighting();
    layer.pushLineWidth(_lineWidth(sampling, 1.6));
    part.renderer->renderEdgesUnconnected();
    layer.popLineWidth();
    layer.disableLighting();
    glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, dark);
    layer.popColor(1);
    layer.popDepthTest();
}

void ModelRenderer::_drawPreview(Part& part, Sampling const& sampling) {
    if (part.import == nullptr) {
        return;
    }
    MeshImporter_RL_GL preview(part.import.get());
    layer.pushTransform(toolkit::scaling(PREVIEW_UNIT));
    layer.pushColor(layer.currentColor());
    {
        Lit const lit(Lit::Finish::GLOSSY);
        preview.render();
    }
    layer.pushLineWidth(_lineWidth(sampling, 1.0));
    preview.renderNormals(MeshImporter_RL::EVERY_TRIANGLE);
    layer.popLineWidth();
    layer.popColor(1);
    layer.popTransform();
}

}  // namespace vellum::viewport
