#include "toolkit/RenderSession.h"

#include "internal/misuse.h"

#include <algorithm>

namespace vellum::toolkit {

RenderSession::RenderSession() : RenderSession(nullptr) {}

RenderSession::RenderSession(std::unique_ptr<Layer> layer)
    : renderLayer(layer != nullptr ? std::move(layer) : std::make_unique<Layer>()) {
    makeCurrent();
    misuse::requireContext("RenderSession::RenderSession");
    renderLayer->setCamera(&viewCamera);
    renderLayer->setDepthTest({DEPTH_LESS, true});
}

RenderSession::~RenderSession() {
    misuse::requireContext("RenderSession::~RenderSession");
    // The parts delete their objects through VL_Raster, which may be the layer of another context now.
    Core_RL* const former = VL_Raster;
    makeCurrent();
    while (!parts.empty()) {
        parts.pop_back();
    }
    renderLayer->destroy_RL();
    Layer* const own = renderLayer.get();
    renderLayer.reset();
    VL_Raster = former != own ? former : nullptr;
}

void RenderSession::makeCurrent() {
    VL_Raster = renderLayer.get();
}

Mesh_RL_GL& RenderSession::addMeshRenderer(Mesh& mesh) {
    auto& renderer = add<Mesh_RL_GL>(&mesh, false);
    renderer.useBufferObjects = renderLayer->isExtensionSupported("GL_ARB_vertex_buffer_object");
    return renderer;
}

void RenderSession::remove(void const* part) {
    auto const found =
        std::find_if(parts.begin(), parts.end(), [part](Owned const& owned) { return owned.get() == part; });
    if (found != parts.end()) {
        parts.erase(found);
    }
}

}  // namespace vellum::toolkit
