#include "viewport/drawing/ModelRenderer.h"

#include "foundation/basic/ArrayServer.h"
#include "viewport/drawing/Lit.h"

#include <algorithm>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

constexpr Color4<float> hiddenLines{0.62F, 0.70F, 0.82F, 0.16F};
constexpr Color4<float> frontLines{0.80F, 0.87F, 0.97F, 0.90F};
constexpr Color4<float> boxEdges{0.97F, 0.78F, 0.38F, 1};
constexpr Color4<float> edgeLines{0.98F, 0.88F, 0.55F, 1};
constexpr Color4<float> vertexNormalLines{0.45F, 0.85F, 1.0F, 1};
constexpr Color4<float> faceNormalLines{1.0F, 0.72F, 0.30F, 1};
constexpr float borderMarks[4] = {1.0F, 0.62F, 0.16F, 1};
constexpr float blendedAlpha = 0.42F;

constexpr DepthtTestMode depthTestedOnly{DEPTH_LESS_OR_EQUAL, false};
constexpr DepthtTestMode depthIgnored{DEPTH_TEST_OFF, false};

constexpr float normalLength = 0.045F * static_cast<float>(Scene::radius);

// The preview draws normals of length 1, so its frame is one in which 1 is as long as the normals are to be.
constexpr double previewUnit = static_cast<double>(normalLength);

// Where a mesh keeps all normals of its vertices for being drawn: a vertex on a hard edge has several.
constexpr char normalPoints[] = "points of all normals";
constexpr char normalVectors[] = "vectors of all normals";

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
Array<T> arrayOfSize(unsigned int const& size) {
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
    mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, normalPoints, points);
    mesh.addNamedArray(MeshArrayInf_ns::PER_VERTEX, normalVectors, vectors);
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
                   [](Vector3<double> const& p) { return p * (1 / previewUnit); });
    import->triangles = arrayOfSize<Tuple3<unsigned int>>(mesh.triangleCount());
    import->cornerNormals = arrayOfSize<Tuple4<Vector3<double>>>(mesh.triangleCount());
    for (unsigned int t = 0; t < mesh.triangleCount(); ++t) {
        auto const normal = [&](unsigned int const& i) { return convert<double>(normals[i]); };
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

Matrix4<double> scaling(double const& s) {
    return {{s, 0, 0, 0, 0, s, 0, 0, 0, 0, s, 0, 0, 0, 0, 1}};
}

Color4<float> meanColour(Color4<float> const& a, Color4<float> const& b, Color4<float> const& c) {
    return {(a.r + b.r + c.r) / 3, (a.g + b.g + c.g) / 3, (a.b + b.b + c.b) / 3, 1};
}

Color4<float> brightened(Color4<float> const& colour) {
    auto const component = [](float const& value) { return std::min(1.0F, 0.15F + 1.3F * value); };
    return {component(colour.r), component(colour.g), component(colour.b), 1};
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
    for (auto const& entry : _names) {
        _layer.unLoadTextureColor(entry.second);
    }
}

unsigned int TextureStore::nameOf(VL_Image const& image) {
    auto const [entry, isNew] = _names.emplace(&image, 0);
    if (isNew) {
        void const* const pixels = image.bitdepth() == 8    ? static_cast<void const*>(image.getBuffer())
                                   : image.bitdepth() == 16 ? static_cast<void const*>(image.getBuffer16())
                                                            : static_cast<void const*>(image.getBuffer32());
        // The rows of an image follow each other without gaps.
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        _layer.loadTextureColor(image.width(), image.height(), image.bitdepth(), image.pixdepth(), pixels,
                                entry->second, TEXTURE_REPEAT);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    }
    return entry->second;
}

// == ModelRenderer ==

ModelRenderer::ModelRenderer(Core_RL& layer, Model const& model, Options const& options,
                             TextureStore& textures)
    : _layer(layer), _options(options), _textures(textures) {
    bool const hasBuffers = _layer.isExtensionSupported("GL_ARB_vertex_buffer_object");
    for (ModelPart const& source : model.parts) {
        Part& part = _parts.emplace_back();
        part.source = &source;
        part.renderer = std::make_unique<Mesh_RL_GL>(source.mesh.get(), false);
        part.renderer->useBufferObjects = hasBuffers && !options.immediate;
        if (options.importPreview) {
            part.import = toImport(*source.mesh);
        }
        if (options.normals == Normals::vertex && source.hasHardNormals) {
            addAllNormals(*source.mesh);
        }
    }
    if (options.shading == Shading::box) {
        _whole = std::make_unique<Mesh>();
        _whole->setPositions(model.vertices);
        _wholeRenderer = std::make_unique<Mesh_RL_GL>(_whole.get(), false);
    }
}

void ModelRenderer::draw(double const& lineScale) {
    _lineScale = lineScale;
    if (_options.importPreview) {
        for (Part& part : _parts) {
            _drawPreview(part);
        }
        return;
    }
    if (_options.shading == Shading::wireframe) {
        _drawWireframe();
    } else if (_options.shading == Shading::box) {
        _drawBox();
    }
    for (Part& part : _parts) {
        if (_isFilled()) {
            _drawSurface(part);
        } else {
            _drawEdges(part);
        }
    }
    // After all surfaces, which may lie behind.
    for (Part& part : _parts) {
        _drawConnectivity(part);
        _drawNormals(part);
    }
}

void ModelRenderer::drawShape() {
    for (Part const& part : _parts) {
        part.renderer->render();
    }
}

bool ModelRenderer::_isFilled() const {
    return _options.shading == Shading::faceted || _options.shading == Shading::smooth;
}

void ModelRenderer::_drawSurface(Part& part) {
    ModelPart const& source = *part.source;
    bool const isPlain = source.texture == nullptr && source.colours.size() == 0;
    if (_options.edgesBlend || (_options.edges && isPlain && _options.shading == Shading::smooth)) {
        SurfacesBehind const behind;
        Lit const lit(_layer, _options.edges ? Lit::Finish::bright : Lit::Finish::dull);
        _pushLineWidth(1.6);
        _layer.pushColor(source.colour);
        if (_options.edgesBlend) {
            Color4<float> colour =
                source.texture != nullptr ? Color4<float>{0.74F, 0.76F, 0.80F, 1} : source.colour;
            colour.a = blendedAlpha;
            part.renderer->renderWithEdgesBlending(colour, true);
        } else {
            // The surface gets half of it.
            part.renderer->renderWithEdges(brightened(source.colour));
        }
        _layer.popColor(1);
        _layer.popLineWidth();
        return;
    }
    {
        SurfacesBehind const behind;
        Lit const lit(_layer, _options.shading == Shading::faceted ? Lit::Finish::dull : Lit::Finish::glossy);
        _pushLineWidth(1.0);
        if (source.texture == nullptr && source.colours.size() > 0) {
            _drawColouredSurface(source);
        } else {
            _drawPlainSurface(part);
        }
        _layer.popLineWidth();
    }
    _drawEdges(part);
}

void ModelRenderer::_drawPlainSurface(Part& part) {
    ModelPart const& source = *part.source;
    MeshShading shading;
    shading.mode =
        _options.shading == Shading::faceted ? MeshShadingMode_ns::FACETED : MeshShadingMode_ns::SMOOTH;
    if (_options.wireframeBack) {
        shading.flags |= MeshShadingFlags_ns::WIREFRAME_BACK_FACES;
    }
    if (source.texture != nullptr) {
        shading.flags |= MeshShadingFlags_ns::TEXTURE;
        shading.textureChannel = ModelPart::channel;
        _layer.activateTextureColor(_textures.nameOf(*source.texture));
    }
    _layer.pushColor(source.colour);
    part.renderer->render(shading);
    _layer.popColor(1);
    if (source.texture != nullptr) {
        _layer.disableTextureColor();
    }
}

// A mesh has no colours of its vertices; the layer draws what has them.
void ModelRenderer::_drawColouredSurface(ModelPart const& part) {
    _layer.pushFillingBack(_options.wireframeBack ? FILLING_LINES : FILLING_SOLID);
    _layer.pushFillingFront(FILLING_SOLID);
    if (_options.shading == Shading::smooth) {
        _layer.render(part.vertices, part.triangles, part.normals, part.colours);
    } else {
        _layer.pushColor(_layer.currentColor());
        _layer.begin(Primitive::TRIANGLES);
        for (Tuple3<unsigned int> const& t : part.triangles) {
            _layer.setColor(meanColour(part.colours[t.e0], part.colours[t.e1], part.colours[t.e2]));
            _layer.renderTriangleOptimized(convert<float>(part.vertices[t.e0]),
                                           convert<float>(part.vertices[t.e1]),
                                           convert<float>(part.vertices[t.e2]));
        }
        _layer.end();
        _layer.popColor(1);
    }
    _layer.popFillingFront();
    _layer.popFillingBack();
}

void ModelRenderer::_drawWireframe() {
    // First the depth of the surface alone, moved away a little; then all lines faintly, and those in front strongly.
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    {
        SurfacesBehind const behind;
        drawShape();
    }
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);

    _layer.pushBlending(BLENDING_ALPHA);
    _pushLineWidth(1.0);
    struct Step {
        DepthtTestMode depth;
        Color4<float> colour;
    };
    MeshShading wireframe;
    wireframe.mode = MeshShadingMode_ns::WIREFRAME;
    for (Step const& step : {Step{depthIgnored, hiddenLines}, Step{depthTestedOnly, frontLines}}) {
        _layer.pushDepthTest(step.depth);
        _layer.pushColor(step.colour);
        for (Part const& part : _parts) {
            part.renderer->render(wireframe);
        }
        _layer.popColor(1);
        _layer.popDepthTest();
    }
    _layer.popLineWidth();
    _layer.popBlending();
}

void ModelRenderer::_drawBox() {
    MeshShading shading;
    shading.mode = MeshShadingMode_ns::BOX;
    _pushLineWidth(1.8);
    _layer.pushColor(boxEdges);
    _wholeRenderer->render(shading);
    _layer.popColor(1);
    _layer.popLineWidth();
}

void ModelRenderer::_drawEdges(Part& part) {
    if (!_options.edges && !_options.edgesBlend) {
        return;
    }
    _pushLineWidth(1.6);
    _layer.pushColor(edgeLines);
    if (_options.edges) {
        part.renderer->renderEdges();
    } else {
        Lit const lit(_layer, Lit::Finish::bright);
        part.renderer->renderWithEdgesBlending(edgeLines, false);
    }
    _layer.popColor(1);
    _layer.popLineWidth();
}

void ModelRenderer::_drawNormals(Part& part) {
    if (_options.normals == Normals::none) {
        return;
    }
    _pushLineWidth(1.0);
    if (_options.normals == Normals::face) {
        _layer.pushColor(faceNormalLines);
        part.renderer->renderFaceNormals(normalLength);
    } else {
        _layer.pushColor(vertexNormalLines);
        if (part.source->hasHardNormals) {
            part.renderer->renderVertexNormals(normalPoints, normalVectors, normalLength);
        } else {
            part.renderer->renderVertexNormals(normalLength);
        }
    }
    _layer.popColor(1);
    _layer.popLineWidth();
}

void ModelRenderer::_drawConnectivity(Part& part) {
    if (!_options.connectivity) {
        return;
    }
    _layer.pushDepthTest(depthTestedOnly);
    _layer.pushColor(_layer.currentColor());
    _pushLineWidth(1.0);
    part.renderer->renderEdgesConnection();
    _layer.popLineWidth();

    // Both drawings set their colour to white. A material that gives off light and takes no colour shows through it.
    float const dark[4] = {0, 0, 0, 1};
    glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE, dark);
    glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, borderMarks);
    _layer.enableLighting();
    _pushLineWidth(1.6);
    part.renderer->renderEdgesUnconnected();
    _layer.popLineWidth();
    _layer.disableLighting();
    glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, dark);
    _layer.popColor(1);
    _layer.popDepthTest();
}

void ModelRenderer::_drawPreview(Part& part) {
    MeshImporter_RL_GL preview(part.import.get());
    _layer.pushTransform(scaling(previewUnit));
    _layer.pushColor(_layer.currentColor());
    {
        Lit const lit(_layer, Lit::Finish::glossy);
        preview.render();
    }
    _pushLineWidth(1.0);
    preview.renderNormals(MeshImporter_RL::EVERY_TRIANGLE);
    _layer.popLineWidth();
    _layer.popColor(1);
    _layer.popTransform();
}

void ModelRenderer::_pushLineWidth(double const& pixels) const {
    _layer.pushLineWidth(static_cast<float>(pixels * _lineScale));
}

}  // namespace vellum::viewport
