#pragma once

#include "MeshImporter_RL_GL.h"
#include "Mesh_RL_GL.h"
#include "foundation/raster/Core_RL.h"
#include "viewport/program/Options.h"
#include "viewport/scene/Scene.h"

#include <map>
#include <memory>
#include <vector>

namespace vellum::viewport {

/// The textures of a scene as OpenGL has them, each image once.
class TextureStore {
public:
    explicit TextureStore(Core_RL& layer) : layer(layer) {}
    ~TextureStore();
    TextureStore(TextureStore const&) = delete;
    TextureStore& operator=(TextureStore const&) = delete;

    /// The name of the texture, which is made of the image when it is asked for first.
    unsigned int nameOf(VL_Image const& image);

private:
    Core_RL& layer;
    std::map<VL_Image const*, unsigned int> names;
};

/// Draws one model in the way that the options ask for: each of its parts through a mesh renderer, with buffer objects
/// if the driver has them and the options do not forbid it.
///
/// It expects the camera, the lights and the depth test to be set, and needs a current context as long as it lives.
/// Model, options and textures must outlive it.
class ModelRenderer {
public:
    ModelRenderer(Core_RL& layer, Model const& model, Options const& options, TextureStore& textures);

    /// \param lineScale the width of a line of one pixel of the picture, in samples.
    void draw(double lineScale);

    void drawShape();  ///< Nothing but the triangles, for picking and for the depth buffer.

private:
    struct Part {
        ModelPart const* source = nullptr;
        std::unique_ptr<Mesh_RL_GL> renderer;
        std::unique_ptr<MeshImporter> import;  // only for the preview
    };

    void _drawSurface(Part& part);
    void _drawPlainSurface(Part& part);
    void _drawColoredSurface(ModelPart const& part);
    void _drawWireframe();
    void _drawBox();
    void _drawEdges(Part& part);
    void _drawNormals(Part& part);
    void _drawConnectivity(Part& part);
    void _drawPreview(Part& part);
    bool _isFilled() const;
    void _pushLineWidth(double pixels) const;

    Core_RL& layer;
    Options const& options;
    TextureStore& textures;
    std::vector<Part> parts;

    // The vertices of all parts, only for the box: it is that of the model, not one for each material.
    std::unique_ptr<Mesh> whole;
    std::unique_ptr<Mesh_RL_GL> wholeRenderer;
    double lineScale = 1;
};

}  // namespace vellum::viewport
