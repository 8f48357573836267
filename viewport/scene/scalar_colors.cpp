#include "viewport/scene/scalar_colors.h"

#include <algorithm>
#include <cmath>

namespace vellum::viewport {

MeshScalar const* findScalar(MeshData const& mesh, std::string const& name) {
    auto const found = std::find_if(mesh.scalars.begin(), mesh.scalars.end(),
                                    [&name](MeshScalar const& scalar) { return scalar.name == name; });
    return found != mesh.scalars.end() ? &*found : nullptr;
}

std::optional<ValueRange> rangeOf(MeshScalar const& scalar, bool isLogarithmic) {
    std::optional<ValueRange> range;
    for (double const value : scalar.values) {
        if (!std::isfinite(value) || (isLogarithmic && value <= 0)) {
            continue;
        }
        range = range ? ValueRange{std::min(range->low, value), std::max(range->high, value)}
                      : ValueRange{value, value};
    }
    return range;
}

void colorByScalar(MeshData& mesh, MeshScalar const& scalar, ValueRange const& range,
                   toolkit::ColorMap const& map, Color4<float> const& undefined, bool isLogarithmic) {
    auto const onScale = [isLogarithmic](double value) { return isLogarithmic ? std::log10(value) : value; };
    double const low = onScale(range.low);
    // Halved, differences of numbers at the end of a double's range stay inside it.
    double const extent = onScale(range.high) / 2 - low / 2;
    for (std::size_t i = 0; i < mesh.colors.size() && i < scalar.values.size(); ++i) {
        double const value = scalar.values[i];
        bool const isDefined = !std::isnan(value) && (!isLogarithmic || value > 0);
        double const above = isDefined ? onScale(value) / 2 - low / 2 : 0;
        double const part = extent > 0 ? above / extent : above > 0 ? 2.0 : above < 0 ? -1.0 : 0.0;
        mesh.colors[i] = isDefined ? map.at(part) : undefined;
        mesh.colors[i].a = 1;
    }
    mesh.hasVertexColors = true;
    for (Material& material : mesh.materials) {
        material.image = nullptr;
        material.texture.clear();
        material.opacityTexture.clear();
        material.textureBytes.clear();
        material.texelColumns = 0;
        material.texelRows = 0;
        material.emission = {0, 0, 0, 1};
    }
}

}  // namespace vellum::viewport
