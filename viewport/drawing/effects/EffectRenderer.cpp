#include "viewport/drawing/effects/EffectRenderer.h"

#include "viewport/drawing/effects/KeptState.h"
#include "viewport/drawing/effects/ModelUnits.h"
#include "viewport/drawing/layer/geometry_stages.h"
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

}  // namespace

EffectRenderer::EffectRenderer(ReportingLayer& layer, EffectSpec const& effectSpec, MeshStyle const& style,
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
            renderer->shader = &drawer->shader();
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
    if (user != nullptr && !hasGeometryStages(layer)) {
        return Fault{"", std::string("OpenGL here has no geometry stages, which ") + user};
    }
    return std::nullopt;
}

void EffectRenderer::draw(toolkit::ScreenAxes const& screen) {
    KeptState const kept;
    _setMaterial();
    MeshShading shading;
    shading.mode =
        style.shading == Shading::FACETED ? MeshShadingMode_ns::FACETED : MeshShadingMode_ns::SMOOTH;
    shading.flags = MeshShadingFlags_ns::GPU_SHADER | MeshShadingFlags_ns::TEXTURE;
    if (style.wireframeBack) {
        shading.flags |= MeshShadingFlags_ns::WIREFRAME_BACK_FACES;
    }
    shading.textureChannel = ModelPart::CHANNEL;
    for (std::size_t i = 0; i < renderers.size(); ++i) {
        Matrix4<double> const& toScene = subject.models[i].toScene;
        drawer->placeLights(screen, toScene.e[0]);
        ModelUnits const units(toScene);
        for (std::unique_ptr<Mesh_RL_GL> const& renderer : renderers[i]) {
            drawer->prepareMesh();
            renderer->render(shading);
        }
    }
}

void EffectRenderer::_setMaterial() const {
    EffectMaterial const material = drawer->material();
    float const ambient[4] = {0.22F, 0.23F, 0.26F, 1};
    float const diffuse[4] = {1, 1, 1, 1};
    float const specular[4] = {material.gloss, material.gloss, material.gloss, 1};
    glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, ambient);
    glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, diffuse);
    glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, specular);
    glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, material.shininess);
}

}  // namespace vellum::viewport
