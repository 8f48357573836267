#pragma once

#include "foundation/geometry/Matrix4.h"
#include "foundation/geometry/Vector3.h"
#include "foundation/raster/Core_RL.h"
#include "viewport/drawing/subjects/MeshStyle.h"
#include "viewport/drawing/subjects/TextureStore.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/scene/Scene.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace vellum::viewport {

/// Draws the parts, lines and points of models that something shines through, after all that does not: the
/// triangles, lines and points of all of them from the back to the front, whatever they belong to, since
/// parts lie inside each other and none need be convex. Triangles that cut each other are drawn one after the
/// other.
///
///     BlendedParts blended(layer, style, textures);
///     blended.add(model);
///     ... draw all else ...
///     blended.draw(sampling);
///
/// It expects what ModelRenderer expects. Layer, models and textures must outlive it. Drawing allocates
/// nothing.
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

    /// Whether it draws these lines or points of a model, all of them, and not the model's renderer.
    static bool covers(std::vector<ModelVertex> const& vertices, MeshStyle const& style);

    /// Adds what it covers of a model.
    void add(Model const& model);

    /// Where a model is drawn that was added; nothing: where the scene has it. See Moved.
    void setPlace(Model const& model, std::optional<Matrix4<double>> const& matrix);

    /// Draws it. Writes no depth.
    /// State: that of Lit.
    void draw(Sampling const& sampling);

private:
    /// A part, or the lines or points of a model.
    struct Source {
        Model const* model = nullptr;
        ModelPart const* part = nullptr;        // null: lines or points
        ModelVertex const* elements = nullptr;  // of lines or points
        bool hasLines = false;                  // and no points; only with `elements`
        Vector3<double> const* vertices = nullptr;
        Tuple3<unsigned int> const* triangles = nullptr;
        Vector3<float> const* normals = nullptr;
        Tuple3<unsigned int> const* normalTriangles = nullptr;
        Color4<float> const* colors = nullptr;  // of the vertices; null: one for all
        Color4<float> color{};
        unsigned int texture = 0;  // 0: none
        Tuple3<unsigned int> const* coordinateTriangles = nullptr;
        Vector2<float> const* coordinates = nullptr;
        unsigned int light = 0;  // the emission map; 0: none
        Tuple3<unsigned int> const* lightTriangles = nullptr;
        Vector2<float> const* lightCoordinates = nullptr;
        std::optional<Matrix4<double>> place = std::nullopt;
        // Of the drawing: the depth of a corner is its product with this; of a piece, with this in addition.
        Vector3<double> toBack{0, 0, 0};
        double depth = 0;
    };
    /// A triangle, line or point.
    struct Piece {
        double depth;  // along the direction of view; the sum of three corners
        unsigned int source;
        unsigned int index;
    };

    void _add(Source const& source, std::size_t count);
    void _addElements(Model const& model, std::vector<ModelVertex> const& vertices, bool areLines);
    void _takeTextures(Source& source) const;
    Source _sourceOf(ModelPart const& part) const;
    static double _depthOf(Source const& source, unsigned int piece);
    void _sort();
    void _begin(Source const& source) const;
    void _end(Source const& source) const;
    void _emit(Source const& source, unsigned int piece) const;
    void _emitTriangle(Source const& source, unsigned int triangle) const;
    void _emitElement(Source const& source, unsigned int element) const;

    Core_RL& layer;
    MeshStyle style;
    TextureStore& textures;
    std::vector<Source> sources;
    std::vector<Piece> pieces;  // in the order of the last drawing
};

}  // namespace vellum::viewport
