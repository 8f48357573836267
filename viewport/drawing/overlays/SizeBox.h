#pragma once

#include "foundation/geometry/Box3.h"
#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Vector3.h"
#include "foundation/raster/Core_RL.h"
#include "toolkit/View.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/files/images/Picture.h"

#include <functional>
#include <string>
#include <vector>

namespace vellum::viewport {

/// The box around what is shown, with the length of an edge beside one edge of each direction: one at the rim
/// of what is seen of the box, so that its number is beside the scene and not over it.
class SizeBox {
public:
    /// A number and where it stands.
    struct Label {
        std::string text;
        double x;  ///< its middle, pixels from the left edge
        double y;  ///< pixels from the top edge
    };

    /// \param box in the frame of the scene
    /// \param lengths of its edges along the axes of the scene, in units of the files
    SizeBox(Box3<double> const& box, Vector3<double> const& lengths) : box(box), lengths(lengths) {}

    /// Draws the lines with the current matrices, behind what is nearer. Writes no depth.
    /// State: none is left changed.
    void drawLines(Core_RL& layer, Sampling const& sampling, Color4<float> const& ink) const;

    /// Up to three numbers. Edges without a length, that are behind the viewer, or that look shorter than two
    /// lines of text have none. \param view that the picture was drawn with \param textHeight of a line of
    /// text, pixels \param widthOf the width of a text, pixels
    std::vector<Label> labels(toolkit::View const& view, int textHeight,
                              std::function<int(std::string const&)> const& widthOf) const;

    /// Writes them into a finished picture.
    void drawLabels(Picture& picture, toolkit::View const& view, Color4<float> const& ink) const;

private:
    Box3<double> box;
    Vector3<double> lengths;
};

}  // namespace vellum::viewport
