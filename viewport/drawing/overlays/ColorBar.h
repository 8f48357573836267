#pragma once

#include "viewport/drawing/overlays/ColorKey.h"
#include "viewport/drawing/overlays/TextMask.h"
#include "viewport/drawing/overlays/key_sizes.h"
#include "viewport/drawing/overlays/painting.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/scene/ValueScale.h"

#include <string>
#include <vector>

namespace vellum::viewport {

/// The bar that shows which values colors stand for.
///
///     | speed [m/s]    name and unit
///     | [==] above     where some value is above the range
///     | [##]- 8.2      the range's end
///     | [##]- 6
///     | [##]- 0.02
///     | [::] no value  where some have none
///     |      12        how many
class ColorBar : public ColorKey {
public:
    /// A value with its text beside the bar.
    struct Mark {
        double value;
        std::string text;
    };

    /// \param right pixels at the picture's right side that are left to another key
    ColorBar(ValueScale const& scale, ValueColors const& colors, PictureSize const& size, int right = 0);

    int reservedWidth() const override { return fits ? reserved : 0; }
    void draw(Picture& picture, Color4<float> const& ink) const override;

    /// The area of the range, without its frame.
    PixelArea area() const { return bar; }

    /// The values to be marked, the lowest first: both ends, and round numbers between them. Whole values
    /// have whole marks, logarithmic scales powers of ten. A range without an extent has one mark.
    /// \param nearest the smallest distance of two marks, as a part of the range
    static std::vector<Mark> marksOf(ValueScale const& scale, double nearest);

private:
    int _rowOf(double value) const;
    void _drawTitle(Picture& picture, int bottom, Color4<float> const& ink) const;

    TextWriter writer;
    ValueScale scale;
    ValueColors colors;
    KeySizes sizes;
    PixelArea bar;
    bool fits = false;
    int reserved = 0;  // pixels at the right side, if it fits
    std::vector<Mark> marks;
};

}  // namespace vellum::viewport
