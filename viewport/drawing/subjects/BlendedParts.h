#pragma once

#include "foundation/geometry/Vector3.h"
#include "foundation/raster/Core_RL.h"
#include "viewport/drawing/subjects/MeshStyle.h"
#include "viewport/drawing/subjects/TextureStore.h"
#include "viewport/scene/Scene.h"

#include <vector>

namespace vellum::viewport {

/// Draws the parts of models that something shines through, after all that does not: the triangles of all of them from
/// the back to the front, whatever part they belong to, since parts lie inside each other and none need be convex.
/// Triangles that cut each other are drawn one after the other.
///
///     BlendedParts blended(layer, style, textures);
///     blended.add(model);
///     ... draw all else ...
///     blended.draw();
///
/// It expects what ModelRenderer expects. Layer, models and textures must outlive it. Drawing allocates nothing.
class BlendedParts {
public:
    BlendedParts(Core_RL& layer, MeshStyle const& style, TextureStore& textures)
        : layer(layer), style(style), textures(textures) {}

    /// Whether it draws the part, and not the model's renderer.
    static bool covers(ModelPart const& part, MeshStyle const& style) {
        float const opacity = style.opacity * (style.color ? style.color->a : 1);
        // The color that is asked for is in place of the part's, with its opacity.
        bool const isBlended = opacity < 1 || (part.isBlended && !style.color);
        return isBlended && style.isFilled() && !style.edgesBlend && !style.wireframeBack;
    }

    /// Adds the parts of a model that it covers.
    void add(Model const& model);

    /// Draws them. Writes no depth.
    /// State: that of Lit.
    void draw();

private:
    struct Source {
        ModelPart const* part;
        Vector3<double> const* vertices;
        Tuple3<unsigned int> const* triangles;
        Vector3<float> const* normals;
        Tuple3<unsigned int> const* normalTriangles;
        Color4<float> const* colors;  // of the vertices; null: one for all
        Color4<float> color;
        unsigned int texture = 0;  // 0: none
        Tuple3<unsigned int> const* coordinateTriangles = nullptr;
        Vector2<float> const* coordinates = nullptr;
    };
    struct Triangle {
        double depth;  // along the direction of view; the sum of the corners
        unsigned int source;
        unsigned int index;
    };

    Source _sourceOf(ModelPart const& part) const;
    void _sort();
    void _begin(Source const& source) const;
    void _end(Source const& source) const;
    void _emit(Source const& source, unsigned int triangle) const;

    Core_RL& layer;
    MeshStyle style;
    TextureStore& textures;
    std::vector<Source> sources;
    std::vector<Triangle> triangles;  // in the order of the last drawing
};

}  // namespace vellum::viewport
