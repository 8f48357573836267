#pragma once

#include "MeshImporter_RL_GL.h"
#include "Mesh_RL_GL.h"
#include "foundation/geometry/Matrix4.h"
#include "foundation/raster/Core_RL.h"
#include "toolkit/MeshStyle.h"
#include "viewport/drawing/subjects/MeshStyle.h"
#include "viewport/drawing/subjects/TextureStore.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/scene/Scene.h"

#include <memory>
#include <optional>
#include <vector>

namespace vellum::viewport {

/// Draws one model in a style: each of its parts through a mesh renderer, with buffer objects if the driver
/// has them and the style does not forbid it.
///
/// It expects the camera, the lights and the depth test to be set, and needs a current context as long as it
/// lives. Layer, model and textures must outlive it.
class ModelRenderer {
public:
    ModelRenderer(Core_RL& layer, Model const& model, MeshStyle const& style, TextureStore& textures);

    /// Where the model is drawn; nothing: where the scene has it. See Moved.
    void setPlace(std::optional<Matrix4<double>> const& matrix) { place = matrix; }
    std::optional<Matrix4<double>> const& movedBy() const { return place; }

    /// Draws all but what BlendedParts covers.
    void draw(Sampling const& sampling);

    /// Draws triangles, lines and points alone, in the current color; in the style of boxes the model's box.
    /// For picking.
    void drawForPicking();

private:
    struct Part {
        ModelPart const* source = nullptr;
        std::unique_ptr<Mesh_RL_GL> renderer;
        std::unique_ptr<MeshImporter> import;  // only for the preview

        // Only where vertices have colors. Those of the file have them, so their surface is a mesh of its
        // own.
        std::unique_ptr<Mesh> colored;
        std::unique_ptr<Mesh_RL_GL> coloredRenderer;

        toolkit::MeshStyle surface;

        // Only with an emission map that is shown. A renderer of its own where that lies otherwise than the
        // texture: each renderer keeps the coordinates of one channel.
        toolkit::MeshStyle light;
        std::unique_ptr<Mesh_RL_GL> lightRenderer;
    };

    void _draw(Sampling const& sampling);
    float _lineWidth(Sampling const& sampling, double standard) const;
    void _drawShape();
    void _drawLinesAndPoints(Sampling const& sampling);
    static void _send(unsigned int primitive, std::vector<ModelVertex> const& vertices, bool hasColors);
    void _drawSurface(Part& part, Sampling const& sampling);
    void _drawPlainSurface(Part& part, Sampling const& sampling);
    void _addLight(Part& part);
    void _drawSurfaceWithEdges(Part& part, Sampling const& sampling);
    void _drawWireframe(Sampling const& sampling);
    void _drawBox(Sampling const& sampling);
    void _drawEdges(Part& part, Sampling const& sampling);
    void _drawNormals(Part& part, Sampling const& sampling);
    void _drawConnectivity(Part& part, Sampling const& sampling);
    void _drawPreview(Part& part, Sampling const& sampling);

    Core_RL& layer;
    Model const& model;
    MeshStyle style;
    TextureStore& textures;
    bool areLinesBlended;  // BlendedParts draws them
    bool arePointsBlended;
    std::vector<Part> parts;
    std::optional<Matrix4<double>> place;

    // The vertices of all parts, only for the box: it is that of the model, not one for each material.
    std::unique_ptr<Mesh> whole;
    std::unique_ptr<Mesh_RL_GL> wholeRenderer;
};

}  // namespace vellum::viewport
