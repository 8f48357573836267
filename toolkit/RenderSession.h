#pragma once

#include "Camera_RL_GL.h"
#include "Mesh_RL_GL.h"
#include "toolkit/Layer.h"
#include "toolkit/export.h"

#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace vellum::toolkit {

/// Everything that draws into one context, in an order that cannot be wrong: the render layer first, then
/// effects and renderers, and all of it gone in reverse before the layer and, if the session is declared
/// after it, the context.
///
///     Window window(...);                                       // a context, current
///     Mesh mesh;                                                // before the session: renderers refer to it
///     RenderSession session;
///     Mesh_RL_GL& renderer = session.addMeshRenderer(mesh);
///     auto& glass = session.add<Glass_shader>();
///     auto& particles = session.add<ParticleRenderer>();
///     ...
///                                                               // the session ends before mesh and window
///
/// Several windows: a session for each context. VL_Raster is the session made last; call makeCurrent() after
/// the window system has made another context current.
///
/// The context must be current when a session begins and when it ends. All calls must come from the thread of
/// the context, except Core_RL::queueUnloadTextureColor().
class VL_TOOLKIT_EXPORT RenderSession {
public:
    /// Makes the render layer, with the depth test on. The layer's camera is camera().
    /// GL: the calls of Core_RL::setDepthTest().
    RenderSession();

    /// With a layer of the application's own, a subclass of Layer; null: as above. GL: as above.
    explicit RenderSession(std::unique_ptr<Layer> layer);

    /// Deletes what was added, the last first, then the queued textures and the layer. VL_Raster is null
    /// afterwards if it was that layer. GL: the calls of the destructors, glDeleteTextures for each queued
    /// texture.
    ~RenderSession();

    RenderSession(RenderSession const&) = delete;
    RenderSession& operator=(RenderSession const&) = delete;

    Layer& layer() { return *renderLayer; }
    Camera_RL_GL& camera() { return viewCamera; }

    /// Makes layer() the render layer of the process, VL_Raster. GL: none.
    void makeCurrent();

    /// Makes a renderer, an effect or anything else that needs the layer, and owns it.
    ///     auto& wax = session.add<SSScattering_shader>();
    template <class Part, class... Arguments>
    Part& add(Arguments&&... arguments) {
        auto part = std::make_unique<Part>(std::forward<Arguments>(arguments)...);
        Part& result = *part;
        parts.emplace_back(part.release(), [](void* owned) { delete static_cast<Part*>(owned); });
        return result;
    }

    /// A renderer of a mesh, with buffer objects if the driver has them. The mesh must outlive it.
    Mesh_RL_GL& addMeshRenderer(Mesh& mesh);

    /// Deletes what add() made, earlier than the session's end; nothing else may use it any more. What was
    /// not made by add() is left alone.
    void remove(void const* part);

    /// Deletes the textures that other threads have dropped since the last call
    /// (Core_RL::queueUnloadTextureColor()). To be called once a frame. GL: glDeleteTextures for each.
    void deleteQueuedTextures() { renderLayer->destroy_RL(); }

private:
    using Owned = std::unique_ptr<void, void (*)(void*)>;

    std::unique_ptr<Layer> renderLayer;
    Camera_RL_GL viewCamera;
    std::vector<Owned> parts;
};

}  // namespace vellum::toolkit
