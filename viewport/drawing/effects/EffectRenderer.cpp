#include "viewport/drawing/effects/EffectRenderer.h"

#include "toolkit/draw_with.h"
#include "viewport/drawing/effects/ModelUnits.h"
#include "viewport/scene/ModelParts.h"

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

/// The scene as a model has it in its own frame.
toolkit::EffectSubject sceneSeenFrom(Matrix4<double> const& toScene) {
    double const unit = toScene.e[0];
    return {Vector3<double>{toScene.e[12], toScene.e[13], toScene.e[14]} * (-1 / unit), Scene::RADIUS / unit};
}

/// Restores lights and materials as they were, when it ends.
class KeptLighting {
public:
    KeptLighting() { glPushAttrib(GL_LIGHTING_BIT); }
    ~KeptLighting() { glPopAttrib(); }
    KeptLighting(KeptLighting const&) = delete;
    KeptLighting& operator=(KeptLighting const&) = delete;
};

/// Moves the turn of a view along an axis from the projection to the model-view matrix, where shaders look for the viewer,
/// while it lives.
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
    subject.models.clear();
    EffectSubject::Model water{{}, sea->toScene(unit)};
    water.meshes.push_back(sea->water(view, unit));
    subject.models.push_back(std::move(water));
    _addRenderers(subject.models.back());
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
        ModelUnits const units(subject.models[i].toScene);
        drawer->placeLights(toolkit::View::current(), sceneSeenFrom(subject.models[i].toScene));
        for (std::unique_ptr<Mesh_RL_GL> const& renderer : renderers[i]) {
            toolkit::drawWith(drawer->shader(), [&] { renderer->render(shading); });
        }
    }
}

}  // namespace vellum::viewport
