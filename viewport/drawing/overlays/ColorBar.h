#pragma once

#include "foundation/geometry/ParticleSystem_v2.h"
#include "viewport/drawing/overlays/TextMask.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/files/images/Picture.h"
#include "viewport/scene/ParticleLook.h"

#include <memory>
#include <string>
#include <vector>

namespace vellum::viewport {

/// The layout of the bar beside particles that shows which values their colors stand for.
///
/// Its area consists of particles, small squares without gaps, each with the value of its height. Drawn by the
/// particles' own renderer (ColorBarDrawing), it shows exactly their colors. Frame, marks and texts are drawn here, over
/// the finished picture. Nothing here touches OpenGL.
///
///     | speed          name
///     | [==] above     where some particle is above the range
///     | [##]- 8.2      the range's end
///     | [##]- 6
///     | [##]- 0.02
class ColorBar {
public:
    /// A value with its text beside the bar.
    struct Mark {
        double value;
        std::string text;
    };

    ColorBar(ParticleScale const& scale, PictureSize const& size);

    /// Whether it fits into the picture. If not, it is left out.
    bool isShown() const { return fits; }

    /// Pixels that it needs at the picture's right side; 0 where it is not shown.
    int reservedWidth() const { return fits ? reserved : 0; }

    /// The area: channel 0 has the centers of the cells, pixels from the picture's lower left corner, channel 1 their
    /// magnitudes for scale().
    std::shared_ptr<ParticleSystem_v2 const> cells() const;
    int cellSize() const { return cell; }  ///< pixels; cells are square

    /// The scale of the cells. Its rates are those of the particles' scale.
    ParticleScale const& scale() const { return cellScale; }

    /// Draws frame, marks and texts into a picture of the size that was given.
    void drawLabels(Picture& picture) const;

    /// The values to be marked, the lowest first: both ends, and round numbers between them; only one where the range
    /// has no extent.
    /// \param nearest the smallest distance of two marks, as a part of the range
    static std::vector<Mark> marksOf(ValueRange const& range, double nearest);

private:
    int _left() const;                  // of the bar, pixels from the picture's left edge
    int _heightOf(double value) const;  // pixels above the bar's bottom

    TextWriter writer;
    ParticleScale cellScale;
    PictureSize size;  // of the picture
    bool fits = false;
    int textHeight;  // pixels
    int cell;        // side of a cell, pixels
    int columns;
    int rows;          // of the range
    int aboveRows;     // of the piece for values above the range; 0 where there are none
    int barBottom;     // pixels from the picture's lower edge
    int reserved = 0;  // pixels at the right side, if it fits
    std::vector<Mark> marks;
};

}  // namespace vellum::viewport
