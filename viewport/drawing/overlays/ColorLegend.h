#pragma once

#include "viewport/drawing/overlays/ColorKey.h"
#include "viewport/drawing/overlays/TextMask.h"
#include "viewport/drawing/overlays/key_sizes.h"
#include "viewport/drawing/overlays/painting.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/scene/ParticleLook.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vellum::viewport {

/// The list that shows which kinds colors stand for, with their counts.
///
///     | element        title
///     | [##] H    266
///     | [##] O    133
///     | and 3 more     where there are more than can be listed
class ColorLegend : public ColorKey {
public:
    /// More are not listed, however high the picture is.
    static constexpr std::size_t MOST_ENTRIES = 24;

    /// \param right pixels at the picture's right side that are left to another key
    ColorLegend(ParticleLegend const& legend, PictureSize const& size, int right = 0);

    int reservedWidth() const override { return fits ? reserved : 0; }
    void draw(Picture& picture, Color4<float> const& ink) const override;

    std::size_t listedCount() const { return rows.size(); }

    /// The colored area of a listed entry, without its frame.
    PixelArea swatch(std::size_t entry) const;

private:
    struct Row {
        std::string name;  // shortened
        std::string count;
        Color4<float> color;
    };

    int _rowTop(std::size_t row) const;

    TextWriter writer;
    KeySizes sizes;
    int edge;           // the column to the right of it
    std::string title;  // shortened
    std::vector<Row> rows;
    std::string rest;  // the line below them; empty: there is none
    int rowHeight;     // pixels, here and below
    int top = 0;       // of the title
    bool fits = false;
    int reserved = 0;  // at the right side, if it fits
};

}  // namespace vellum::viewport
