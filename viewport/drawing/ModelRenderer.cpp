#include "viewport/drawing/ModelRenderer.h"

#include "foundation/basic/ArrayServer.h"
#include "viewport/drawing/Lit.h"

#include <algorithm>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

constexpr Color4<float> HIDDEN_LINES{0.62F, 0.70F, 0.82F, 0.16F};
constexpr Color4<float> FRONT_LINES{0.80F, 0.87F, 0.97F, 0.90F};
constexpr Color4<float> BOX_EDGES{0.97F, 0.78F, 0.38F, 1};
constexpr Color4<float> EDGE_LINES{0.98F, 0.88F, 0.55F, 1};
constexpr Color4<float> VERTEX_NORMAL_LINES{0.45F, 0.85F, 1.0F, 1};
constexpr Color4<float> FACE_NORMAL_LINES{1.0F, 0.72F, 0.30F, 1};
constexpr float BORDER_MARKS[4] = {1.0F, 0.62F, 0.16F, 1};
constexpr float BLENDED_ALPHA = 0.42F;

constexpr DepthtTestMode DEPTH_TESTED_ONLY{DEPTH_LESS_OR_EQUAL, false};
constexpr DepthtTestMode DEPTH_IGNORED{DEPTH_TEST_OFF, false};

constexpr float NORMAL_LENGTH = 0.045F * static_cast<float>(Scene::RADIUS);

// The preview draws normals of length 1, so its frame is one in which 1 is as long as the normals are to be.
constexpr double PREVIEW_UNIT = static_cast<double>(NORMAL_LENGTH);

// Where a mesh keeps all normals of its vertices for being drawn: a vertex on a hard edge has several.
constexpr char NORMAL_POINTS[] = "points of all normals";
constexpr char NORMAL_VECTORS[] = "vectors of all normals";

template <class T>
T const* elementsOf(ArrayId const& id) {
    ArrayTypeable const* const array = VL_ArrayServer.resolve(id);
    return array != nullptr ? array->as<T>() : nullptr;
}

unsigned int sizeOf(ArrayId const& id) {
    ArrayTypeable const* const array = VL_ArrayServer.resolve(id);
    return array != nullptr ? array->size : 0;
}

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

/// The part as an import gives it, in the frame of the preview.
std::unique_ptr<MeshImporter> toImport(Mesh const& mesh) {
    auto import = std::make_unique<MeshImporter>();
    auto const* const positions = elementsOf<Vector3<double>>(mesh.positions());
    auto const* const triangles = elementsOf<Tuple3<unsigned int>>(mesh.triangles());
    auto const* const normals = elementsOf<Vector3<float>>(mesh.vertexNormals());
    auto const* const normalTriangles = elementsOf<Tuple3<unsigned int>>(mesh.normalTriangles());
    if (positions == nullptr || triangles == nullptr || normals == nullptr || normalTriangles == nullptr) {
        return import;
    }
    import->positions = arrayOfSize<Vector3<double>>(sizeOf(mesh.positions()));
    std::transform(positions, positions + import->positions.size(), import->positions.begin(),
                   [](Vector3<double> const& p) { return p * (1 / PREVIEW_UNIT); });
    import->triangles = arrayOfSize<Tuple3<unsigned int>>(mesh.triangleCount());
    import->cornerNormals = arrayOfSize<Tuple4<Vector3<double>>>(mesh.triangleCount());
    for (unsigned int t = 0; t < mesh.triangleCount(); ++t) {
        auto const normal = [&](unsigned int i) { return convert<double>(normals[i]); };
        import->triangles[t] = triangles[t];
        import->cornerNormals[t] = {normal(normalTriangles[t].e0), normal(normalTriangles[t].e1),
                                    normal(normalTriangles[t].e2), Vector3<double> {
                                        0,
                                        0,
                                        0
                                    }};
    }
    return import;
}

Matrix4<double> scaling(double s) {
    return {{s, 0, 0, 0, 0, s, 0, 0, 0, 0, s, 0, 0, 0, 0, 1}};
}

Color4<float> meanColor(Color4<float> const& a, Color4<float> const& b, Color4<float> const& c) {
    return {(a.r + b.r + c.r) / 3, (a.g + b.g + c.g) / 3, (a.b + b.b + c.b) / 3, 1};
}

Color4<float> brightened(Color4<float> const& color) {
    auto const component = [](float value) { return std::min(1.0F, 0.15F + 1.3F * value); };
    return {component(color.r), component(color.g), component(color.b), 1};
}

/// Surfaces a little behind where they are, while it lives: lines that lie in them are seen whole.
class SurfacesBehind {
public:
    SurfacesBehind() {
        glEnable(GL_POLYGON_OFFSET_FILL);
        glPolygonOffset(2, 2);
    }
    ~SurfacesBehind() { glDisable(GL_POLYGON_OFFSET_FILL); }
    SurfacesBehind(SurfacesBehind const&) = delete;
    SurfacesBehind& operator=(SurfacesBehind const&) = delete;
};

}  // namespace

// == TextureStore ==

TextureStore::~TextureStore() {
    for (auto const& entry : names) {
        layer.unLoadTextureColor(entry.second);
    }
}

unsigned int TextureStore::nameOf(VL_Image const& image) {
    auto const [entry, isNew] = names.emplace(&image, 0);
    if (isNew) {
        void const* const pixels = image.bitdepth() == 8    ? static_cast<void const*>(image.getBuffer())
                                   : image.bitdepth() == 16 ? static_cast<void const*>(image.getBuffer16())
                                                            : static_cast<void const*>(image.getBuffer32());
        // The rows of an image follow each other without gaps.
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        layer.loadTextureColor(image.width(), image.height(), image.bitdepth(), image.pixdepth(), pixels,
                               entry->second, TEXTURE_REPEAT);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    }
    return entry->second;
}

// == ModelRenderer ==

ModelRenderer::ModelRenderer(Core_RL& layer, Model const& model, Options const& options,
                             TextureStore& textures)
    : layer(layer), options(options), textures(textures) {
    bool const hasBuffers = layer.isExtensionSupported("GL_ARB_vertex_buffer_object");
    for (ModelPart const& source : model.parts) {
        Part& part = parts.emplace_back();
        part.source = &source;
        part.renderer = std::make_unique<Mesh_RL_GL>(source.mesh.get(), false);
        part.renderer->useBufferObjects = hasBuffers && !options.immediate;
        if (options.importPreview) {
            part.import = toImport(*source.mesh);
        }
        if (options.normals == Normals::VERTEX && source.hasHardNormals) {
            addAllNormals(*source.mesh);
        }
    }
    if (options.shading == Shading::BOX) {
        whole = std::make_unique<Mesh>();
        whole->setPositions(model.vertices);
        wholeRenderer = std::make_unique<Mesh_RL_GL>(whole.get(), false);
    }
}

void ModelRenderer::draw(double lineScale) {
    this->lineScale = lineScale;
    if (options.importPreview) {
        for (Part& part : parts) {
            _drawPreview(part);
        }
        return;
    }
    if (options.shading == Shading::WIREFRAME) {
        _drawWireframe();
    } else if (options.shading == Shading::BOX) {
        _drawBox();
    }
    for (Part& part : parts) {
        if (_isFilled()) {
            _drawSurface(part);
        } else {
            _drawEdges(part);
        }
    }
    // After all surfaces, which may lie behind.
    for (Part& part : parts) {
        _drawConnectivity(part);
        _drawNormals(part);
    }
}

void ModelRenderer::drawShape() {
    for (Part const& part : parts) {
        part.renderer->render();
    }
}

bool ModelRenderer::_isFilled() const {
    return options.shading == Shading::FACETED || options.shading == Shading::SMOOTH;
}

void ModelRenderer::_drawSurface(Part& part) {
    ModelPart const& source = *part.source;
    bool const isPlain = source.texture == nullptr && source.colors.size() == 0;
    if (options.edgesBlend || (options.edges && isPlain && options.shading == Shading::SMOOTH)) {
        SurfacesBehind const behind;
        Lit const lit(layer, options.edges ? Lit::Finish::bright : Lit::Finish::DULL);
        _pushLineWidth(1.6);
        layer.pushColor(source.color);
        if (options.edgesBlend) {
            Color4<float> color =
                source.texture != nullptr ? Color4<float>{0.74F, 0.76F, 0.80F, 1} : source.color;
            color.a = BLENDED_ALPHA;
            part.renderer->renderWithEdgesBlending(color, true);
        } else {
            // The surface gets half of it.
            part.renderer->renderWithEdges(brightened(source.color));
        }
        layer.popColor(1);
        layer.popLineWidth();
        return;
    }
    {
        SurfacesBehind const behind;
        Lit const lit(layer, options.shading == Shading::FACETED ? Lit::Finish::DULL : Lit::Finish::GLOSSY);
        _pushLineWidth(1.0);
        if (source.texture == nullptr && source.colors.size() > 0) {
            _drawColoredSurface(source);
        } else {
            _drawPlainSurface(part);
        }
        layer.popLineWidth();
    }
    _drawEdges(part);
}

void ModelRenderer::_drawPlainSurface(Part& part) {
    ModelPart const& source = *part.source;
    MeshShading shading;
    shading.mode =
        options.shading == Shading::FACETED ? MeshShadingMode_ns::FACETED : MeshShadingMode_ns::SMOOTH;
    if (options.wireframeBack) {
        shading.flags |= MeshShadingFlags_ns::WIREFRAME_BACK_FACES;
    }
    if (source.texture != nullptr) {
        shading.flags |= MeshShadingFlags_ns::TEXTURE;
        shading.textureChannel = ModelPart::CHANNEL;
        layer.activateTextureColor(textures.nameOf(*source.texture));
    }
    layer.pushColor(source.color);
    part.renderer->render(shading);
    layer.popColor(1);
    if (source.texture != nullptr) {
        layer.disableTextureColor();
    }
}

// A mesh has no colors of its vertices; the layer draws what has them.
void ModelRenderer::_drawColoredSurface(ModelPart const& part) {
    layer.pushFillingBack(options.wireframeBack ? FILLING_LINES : FILLING_SOLID);
    layer.pushFillingFront(FILLING_SOLID);
    if (options.shading == Shading::SMOOTH) {
        layer.render(part.vertices, part.triangles, part.normals, part.colors);
    } else {
        layer.pushColor(layer.currentColor());
        layer.begin(Primitive::TRIANGLES);
        for (Tuple3<unsigned int> const& t : part.triangles) {
            layer.setColor(meanColor(part.colors[t.e0], part.colors[t.e1], part.colors[t.e2]));
            layer.renderTriangleOptimized(convert<float>(part.vertices[t.e0]),
                                          convert<float>(part.vertices[t.e1]),
                                          convert<float>(part.vertices[t.e2]));
        }
        layer.end();
        layer.popColor(1);
    }
    layer.popFillingFront();
    layer.popFillingBack();
}

void ModelRenderer::_drawWireframe() {
    // First the depth of the surface alone, moved away a little; then all lines faintly, and those in front strongly.
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    {
        SurfacesBehind const behind;
        drawShape();
    }
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);

    layer.pushBlending(BLENDING_ALPHA);
    _pushLineWidth(1.0);
    struct Step {
        DepthtTestMode depth;
        Color4<float> color;
    };
    MeshShading wireframe;
    wireframe.mode = MeshShadingMode_ns::WIREFRAME;
    for (Step step : {Step{DEPTH_IGNORED, HIDDEN_LINES}, Step{DEPTH_TESTED_ONLY, FRONT_LINES}}) {
        layer.pushDepthTest(step.depth);
        layer.pushColor(step.color);
        for (Part const& part : parts) {
            part.renderer->render(wireframe);
        }
        layer.popColor(1);
        layer.popDepthTest();
    }
    layer.popLineWidth();
    layer.popBlending();
}

void ModelRenderer::_drawBox() {
    MeshShading shading;
    shading.mode = MeshShadingMode_ns::BOX;
    _pushLineWidth(1.8);
    layer.pushColor(BOX_EDGES);
    wholeRenderer->render(shading);
    layer.popColor(1);
    layer.popLineWidth();
}

void ModelRenderer::_drawEdges(Part& part) {
    if (!options.edges && !options.edgesBlend) {
        return;
    }
    _pushLineWidth(1.6);
    layer.pushColor(EDGE_LINES);
    if (options.edges) {
        part.renderer->renderEdges();
    } else {
        Lit const lit(layer, Lit::Finish::bright);
        part.renderer->renderWithEdgesBlending(EDGE_LINES, false);
    }
    layer.popColor(1);
    layer.popLineWidth();
}

void ModelRenderer::_drawNormals(Part& part) {
    if (options.normals == Normals::NONE) {
        return;
    }
    _pushLineWidth(1.0);
    if (options.normals == Normals::FACE) {
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

void ModelRenderer::_drawConnectivity(Part& part) {
    if (!options.connectivity) {
        return;
    }
    layer.pushDepthTest(DEPTH_TESTED_ONLY);
    layer.pushColor(layer.currentColor());
    _pushLineWidth(1.0);
    part.renderer->renderEdgesConnection();
    layer.popLineWidth();

    // Both drawings set their color to white. A material that gives off light and takes no color shows through it.
    float const dark[4] = {0, 0, 0, 1};
    glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE, dark);
    glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, BORDER_MARKS);
    layer.enableLighting();
    _pushLineWidth(1.6);
    part.renderer->renderEdgesUnconnected();
    layer.popLineWidth();
    layer.disableLighting();
    glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, dark);
    layer.popColor(1);
    layer.popDepthTest();
}

void ModelRenderer::_drawPreview(Part& part) {
    MeshImporter_RL_GL preview(part.import.get());
    layer.pushTransform(scaling(PREVIEW_UNIT));
    layer.pushColor(layer.currentColor());
    {
        Lit const lit(layer, Lit::Finish::GLOSSY);
        preview.render();
    }
    _pushLineWidth(1.0);
    preview.renderNormals(MeshImporter_RL::EVERY_TRIANGLE);
    layer.popLineWidth();
    layer.popColor(1);
    layer.popTransform();
}

void ModelRenderer::_pushLineWidth(double pixels) const {
    layer.pushLineWidth(static_cast<float>(pixels * lineScale));
}

}  // namespace vellum::viewport
