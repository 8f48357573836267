#include "viewport/drawing/effects/EffectRenderer.h"

#include "foundation/basic/ArrayServer.h"
#include "toolkit/Lit.h"
#include "toolkit/draw_with.h"
#include "toolkit/mesh_arrays.h"
#include "toolkit/transforms.h"
#include "viewport/drawing/effects/ModelUnits.h"
#include "viewport/drawing/subjects/Moved.h"
#include "viewport/scene/ModelParts.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

/// What of an effect requires geometry stages; null where nothing does.
char const* geometryUserOf(EffectValues const& values) {
    auto const* const displacement = std::get_if<DisplacementEffect>(&values);
    auto const* const custom = std::get_if<CustomEffect>(&values);
    return displacement != nullptr && displacement->tessellate    ? "tessellation requires"
           : custom != nullptr && !custom->geometryShader.empty() ? "the geometry shader requires"
                                                                  : nullptr;
}

/// A column of a matrix, 0 to 3.
Vector3<double> columnOf(Matrix4<double> const& matrix, int column) {
    double const* const e = matrix.e + 4 * column;
    return {e[0], e[1], e[2]};
}

/// The scene as a model has it in its own frame.
/// \param toScene turns, scales alike along all axes, and moves
toolkit::EffectSubject sceneSeenFrom(Matrix4<double> const& toScene) {
    double const unit = length(columnOf(toScene, 0));
    Vector3<double> const moved = columnOf(toScene, 3);
    Vector3<double> const own{dot(columnOf(toScene, 0) / unit, moved),
                              dot(columnOf(toScene, 1) / unit, moved),
                              dot(columnOf(toScene, 2) / unit, moved)};
    return {own * (-1 / unit), Scene::RADIUS / unit};
}

/// A rotation and scales along the axes that are applied before it.
struct TurnedScale {
    Matrix4<double> rotation;
    Vector3<double> scale;  // the first one below 0 where the matrix mirrors
    double mean;            // of the scales, above 0

    bool isUniform() const {
        constexpr double ROUNDING = 1e-9;
        return scale.x > 0 && std::abs(scale.y / scale.x - 1) < ROUNDING &&
               std::abs(scale.z / scale.x - 1) < ROUNDING;
    }

    static TurnedScale of(Matrix4<double> const& matrix) {
        Vector3<double> x = columnOf(matrix, 0);
        Vector3<double> y = columnOf(matrix, 1);
        Vector3<double> z = columnOf(matrix, 2);
        double const sign = Moved::isMirror(matrix) ? -1 : 1;
        Vector3<double> const scale{sign * length(x), length(y), length(z)};
        x = x / scale.x;
        y = y / scale.y;
        z = z / scale.z;
        double const mean = std::cbrt(std::abs(scale.x)) * std::cbrt(scale.y) * std::cbrt(scale.z);
        return {{{x.x, x.y, x.z, 0, y.x, y.y, y.z, 0, z.x, z.y, z.z, 0, 0, 0, 0, 1}}, scale, mean};
    }
};

template <class T>
T* elementsOf(ArrayId const& id) {
    ArrayTypeable* const array = VL_ArrayServer.resolve(id);
    return array != nullptr ? array->as<T>() : nullptr;
}

template <class T>
std::vector<T> copyOf(ArrayId const& id) {
    ArrayTypeable* const array = VL_ArrayServer.resolve(id);
    return array != nullptr ? std::vector<T>(array->as<T>(), array->as<T>() + array->size) : std::vector<T>();
}

/// A normal of what is scaled, as long as it was.
Vector3<float> scaledNormal(Vector3<float> const& normal, Vector3<double> const& scale) {
    auto const n = convert<double>(normal);
    Vector3<double> const turned{n.x / scale.x, n.y / scale.y, n.z / scale.z};
    double const size = length(turned);
    return size > 0 ? convert<float>(turned * (length(n) / size)) : normal;
}

/// Draws meshes without an effect.
void drawPlain(std::vector<std::unique_ptr<Mesh_RL_GL>> const& renderers, MeshShading shading) {
    shading.flags &= ~static_cast<unsigned int>(MeshShadingFlags_ns::TEXTURE);
    glPushAttrib(GL_CURRENT_BIT);
    {
        toolkit::Lit const lit(toolkit::View::current(), toolkit::Lit::Finish::DULL);
        constexpr float GRAY = 0.8F;
        glColor3f(GRAY, GRAY, GRAY);
        for (std::unique_ptr<Mesh_RL_GL> const& renderer : renderers) {
            renderer->render(shading);
        }
    }
    glPopAttrib();
}

/// Restores lights and materials as they were, when it ends.
class KeptLighting {
public:
    KeptLighting() { glPushAttrib(GL_LIGHTING_BIT); }
    ~KeptLighting() { glPopAttrib(); }
    KeptLighting(KeptLighting const&) = delete;
    KeptLighting& operator=(KeptLighting const&) = delete;
};

/// Moves the turn of a view along an axis from the projection to the model-view matrix, where shaders look
/// for the viewer, while it lives.
class EyeSpace {
public:
    explicit EyeSpace(SeaView const& view) {
        Vector3<double> const& r = view.right;
        Vector3<double> const& u = view.up;
        Vector3<double> const f = view.forward;
        Vector3<double> const& e = view.eye;
        glMatrixMode(GL_PROJECTION);
        glPushMatrix();
        // The inverse of the view is the place of the eye.
        GLdouble const place[16] = {r.x,  r.y,  r.z,  0, u.x, u.y, u.z, 0,
                                    -f.x, -f.y, -f.z, 0, e.x, e.y, e.z, 1};
        glMultMatrixd(place);
        glMatrixMode(GL_MODELVIEW);
        glPushMatrix();
        GLdouble const look[16] = {r.x, u.x, -f.x, 0, r.y,        u.y,        -f.y,      0,
                                   r.z, u.z, -f.z, 0, -dot(r, e), -dot(u, e), dot(f, e), 1};
        glLoadMatrixd(look);
    }
    ~EyeSpace() {
        glPopMatrix();
        glMatrixMode(GL_PROJECTION);
        glPopMatrix();
        glMatrixMode(GL_MODELVIEW);
    }
    EyeSpace(EyeSpace const&) = delete;
    EyeSpace& operator=(EyeSpace const&) = delete;
};

}  // namespace

EffectRenderer::EffectRenderer(toolkit::Layer& layer, EffectSpec const& effectSpec, MeshStyle const& style,
                               EffectSubject effectSubject)
    : spec(effectSpec)
    , style(style)
    , subject(std::move(effectSubject))
    , drawer(EffectDrawer::make(layer, spec.values, subject))
    , hasBuffers(layer.isExtensionSupported("GL_ARB_vertex_buffer_object")) {
    for (EffectSubject::Model const& model : subject.models) {
        _addRenderers(model);
    }
}

EffectRenderer::~EffectRenderer() = default;

std::optional<Fault> EffectRenderer::firstLack(Core_RL& layer, EffectValues const& values) {
    if (!layer.checkShaderSupport()) {
        return Fault{"", "OpenGL here has no shaders, which effects require"};
    }
    char const* const user = geometryUserOf(values);
    if (user != nullptr && !toolkit::hasGeometryStages(layer)) {
        return Fault{"", std::string("OpenGL here has no geometry stages, which ") + user};
    }
    return std::nullopt;
}

void EffectRenderer::_addRenderers(EffectSubject::Model const& model) {
    places.push_back({model.toScene, {1, 1, 1}, {}});
    renderers.emplace_back();
    for (std::unique_ptr<Mesh> const& mesh : model.meshes) {
        auto renderer = std::make_unique<Mesh_RL_GL>(mesh.get(), false);
        renderer->useBufferObjects = hasBuffers && !style.immediate;
        renderers.back().push_back(std::move(renderer));
    }
}

void EffectRenderer::frameSea(SeaView const& view) {
    SurroundingSea const* const sea = surroundingSea();
    if (sea == nullptr || (seaView && *seaView == view)) {
        return;
    }
    seaView = view;
    auto const unit = static_cast<double>(subject.sea->map.unit);
    // The renderers refer to the meshes.
    renderers.clear();
    places.clear();
    subject.models.clear();
    EffectSubject::Model water{{}, sea->toScene(unit)};
    water.meshes.push_back(sea->water(view, unit));
    subject.models.push_back(std::move(water));
    _addRenderers(subject.models.back());
}

void EffectRenderer::setPlace(std::size_t model, std::optional<Matrix4<double>> const& matrix) {
    std::size_t const index = spec.onlyModel ? 0 : model;
    if (!covers(model) || index >= places.size()) {
        return;
    }
    Matrix4<double> const& own = subject.models[index].toScene;
    if (!matrix) {
        _scale(index, {1, 1, 1});
        places[index].toScene = own;
        return;
    }
    TurnedScale const turned = TurnedScale::of(*matrix);
    if (turned.isUniform()) {
        _scale(index, {1, 1, 1});
        places[index].toScene = *matrix * own;
        return;
    }
    // With the scale s = mean * k along the axes: turn(s * (unit * p + move)) = mean * unit * turn(k * p) +
    // turn(s * move).
    Vector3<double> const k = turned.scale / turned.mean;
    _scale(index, k);
    Matrix4<double> toScene = turned.rotation * toolkit::scaling(turned.mean * own.e[0]);
    Vector3<double> const move = columnOf(*matrix * own, 3);
    toScene.e[12] = move.x;
    toScene.e[13] = move.y;
    toScene.e[14] = move.z;
    places[index].toScene = toScene;
}

void EffectRenderer::_scale(std::size_t index, Vector3<double> const& scale) {
    Place& place = places[index];
    if (place.scale.x == scale.x && place.scale.y == scale.y && place.scale.z == scale.z) {
        return;
    }
    place.scale = scale;
    std::vector<std::unique_ptr<Mesh>> const& meshes = subject.models[index].meshes;
    if (place.meshes.empty()) {
        for (std::unique_ptr<Mesh> const& mesh : meshes) {
            place.meshes.push_back({copyOf<Vector3<double>>(mesh->positions()),
                                    copyOf<Vector3<float>>(mesh->vertexNormals()),
                                    copyOf<Color4<float>>(mesh->faceNormals())});
        }
    }
    for (std::size_t i = 0; i < meshes.size(); ++i) {
        Mesh& mesh = *meshes[i];
        Unscaled const& source = place.meshes[i];
        std::transform(source.positions.begin(), source.positions.end(),
                       elementsOf<Vector3<double>>(mesh.positions()), [&](Vector3<double> const& p) {
                           return Vector3<double>{p.x * scale.x, p.y * scale.y, p.z * scale.z};
                       });
        std::transform(source.vertexNormals.begin(), source.vertexNormals.end(),
                       elementsOf<Vector3<float>>(mesh.vertexNormals()),
                       [&](Vector3<float> const& n) { return scaledNormal(n, scale); });
        std::transform(source.faceNormals.begin(), source.faceNormals.end(),
                       elementsOf<Color4<float>>(mesh.faceNormals()), [&](Color4<float> const& n) {
                           Vector3<float> const scaled = scaledNormal({n.r, n.g, n.b}, scale);
                           return Color4<float>{scaled.x, scaled.y, scaled.z, n.a};
                       });
        toolkit::markChanged(mesh);
    }
}

void EffectRenderer::draw() {
    KeptLighting const kept;
    std::optional<EyeSpace> eyeSpace;
    if (seaView && seaView->isAlongAxis) {
        eyeSpace.emplace(*seaView);
    }
    EffectMaterial const material = drawer->material();
    toolkit::setEffectMaterial(material.gloss, material.shininess);
    MeshShading shading;
    // The style is that of the things in a sea.
    bool const isSea = surroundingSea() != nullptr;
    shading.mode = style.shading == Shading::FACETED && !isSea ? MeshShadingMode_ns::FACETED
                                                               : MeshShadingMode_ns::SMOOTH;
    shading.flags = MeshShadingFlags_ns::TEXTURE;
    if (style.wireframeBack && !isSea) {
        shading.flags |= MeshShadingFlags_ns::WIREFRAME_BACK_FACES;
    }
    shading.textureChannel = ModelPart::CHANNEL;
    for (std::size_t i = 0; i < renderers.size(); ++i) {
        ModelUnits const units(places[i].toScene);
        FrontFaces const faces(places[i].scale.x < 0);
        drawer->placeLights(toolkit::View::current(), sceneSeenFrom(places[i].toScene));
        if (drawer->isPlain()) {
            drawPlain(renderers[i], shading);
            continue;
        }
        for (std::unique_ptr<Mesh_RL_GL> const& renderer : renderers[i]) {
            toolkit::drawWith(drawer->shader(), [&] { renderer->render(shading); });
        }
    }
}

}  // namespace vellum::viewport
