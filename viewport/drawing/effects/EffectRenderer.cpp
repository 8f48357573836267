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

}  // namespace

EffectRenderer::EffectRenderer(toolkit::Layer& layer, EffectSpec const& effectSpec, MeshStyle const& style,
                               EffectSubject effectSubject)
    : spec(effectSpec)
    , style(style)
    , subject(std::move(effectSubject))
    , drawer(EffectDrawer::make(layer, spec.values, subject)) {
    bool const hasBuffers = layer.isExtensionSupported("GL_ARB_vertex_buffer_object");
    for (EffectSubject::Model const& model : subject.models) {
        renderers.emplace_back();
        for (std::unique_ptr<Mesh> const& mesh : model.meshes) {
            auto renderer = std::make_unique<Mesh_RL_GL>(mesh.get(), false);
            renderer->useBufferObjects = hasBuffers && !style.immediate;
            renderers.back().push_back(std::move(renderer));
        }
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

void EffectRenderer::draw() {
    KeptLighting const kept;
    EffectMaterial const material = drawer->material();
    toolkit::setEffectMaterial(material.gloss, material.shininess);
    MeshShading shading;
    shading.mode =
        style.shading == Shading::FACETED ? MeshShadingMode_ns::FACETED : MeshShadingMode_ns::SMOOTH;
    shading.flags = MeshShadingFlags_ns::TEXTURE;
    if (style.wireframeBack) {
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
