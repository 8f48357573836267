#pragma once

#include "foundation/geometry/ParticleSystem_v2.h"
#include "viewport/drawing/TextMask.h"
#include "viewport/files/images/Picture.h"
#include "viewport/scene/ParticleLook.h"

#include <memory>
#include <string>
#include <vector>

namespace vellum::viewport {

/// The bar beside particles that tells which values their colors stand for.
///
/// Its area consists of particles, small squares without gaps, each with the value of its height: drawn by the
/// particles' own renderer, in their colors, it cannot show others than they have. Frame, marks and texts are laid
/// over the finished picture.
///
///     | speed          name
///     | [==] above     where some particle is above the range
///     | [##]- 8.2      the range's end
///     | [##]- 6
///     | [##]- 0.02
class ColorBar {
public:
    /// A value that is written beside the bar.
    struct Mark {
        double value;
        std::string text;
    };

    ColorBar(ParticleScale const& scale, int pictureWidth, int pictureHeight);

    /// Whether there is room for it in the picture. If not, it is left out.
    bool isShown() const { return hasRoom; }

    /// Pixels at the picture's right side that it takes; 0 where it is not shown.
    int reservedWidth() const { return hasRoom ? reserved : 0; }

    /// The area: channel 0 has the centers of the cells, pixels from the picture's lower left corner, channel 1 their
    /// magnitudes for scale().
    std::shared_ptr<ParticleSystem_v2 const> cells() const;
    int cellSize() const { return cell; }  ///< pixels; cells are square

    /// The scale of the cells. Its rates are those of the particles' scale.
    ParticleScale const& scale() const { return barScale; }

    /// Frame, marks and texts.
    void drawLabels(Picture& picture) const;

    /// Both ends, and round numbers between them; one where the range has no extent. The lowest first. `nearest` is
    /// the part of the range that lies between two marks at least.
    static std::vector<Mark> marksOf(ValueRange const& range, double nearest);

private:
    int _left(int pictureWidth) const;
    int _rowOf(double value) const;

    TextWriter writer;
    ParticleScale barScale;
    bool hasRoom = false;
    int fullWidth;
    int textHeight;
    int cell;
    int columns;
    int rows;       // of the range
    int aboveRows;  // of the piece for what is above it; 0 where nothing is
    int barBottom;  // pixels from the picture's lower edge
    int reserved = 0;
    std::vector<Mark> marks;
};

}  // namespace vellum::viewport
