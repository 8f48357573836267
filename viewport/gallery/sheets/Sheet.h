#pragma once

#include "foundation/geometry/Vector3.h"
#include "viewport/files/images/Picture.h"

#include <functional>
#include <string>
#include <vector>

namespace vellum {
class Core_RL;
class OffscreenContext;
}  // namespace vellum

namespace vellum::gallery {

class SheetLayer;

/// The camera of a cell. +Y is up.
struct View {
    Vector3<float> eye;     ///< perspective only
    Vector3<float> target;  ///< the middle of the cell
    float fieldOfView;      ///< degrees across the cell's shorter side; 0 for a flat view along -z
    float reach;            ///< flat view only: half of what the cell's shorter side shows

    static View perspective(Vector3<float> const& eye, Vector3<float> const& target, float fieldOfView);
    static View flat(float reach);

    bool isFlat() const { return fieldOfView == 0.0F; }
    Vector3<float> direction() const;  ///< The direction in which the viewer looks; unit length.
};

/// One drawing with its label. Before `draw` is called, lighting and blending are off, the depth test is on,
/// the line width is 1.5 and the matrices of the view are loaded. `draw` pops everything that it pushes.
struct Cell {
    std::string label;  ///< may be empty
    View view;
    std::function<void(Core_RL& layer, View view)> draw;
};

/// Cells of equal width, side by side.
struct Row {
    float height;  ///< relative to the other rows
    std::vector<Cell> cells;
};

constexpr int SHEET_WIDTH = 1280;  // pixels
constexpr int SHEET_HEIGHT = 800;  // pixels

/// The content of one picture.
struct Subject {
    std::string name;           ///< by which the list of pictures asks for it
    std::vector<Row> rows;      ///< from the top
    int width = SHEET_WIDTH;    ///< of the picture, in pixels
    int height = SHEET_HEIGHT;  ///< of the picture, in pixels
};

/// Sets the size of the picture so that each drawing has this size in pixels. Requires rows of equal height
/// with the same number of cells, and a label in the first cell.
void fitToDrawings(Subject& subject, int width, int height);

/// Draws the subject. Requires a current context that is SheetLayer::OVERSAMPLING times as wide and high as
/// the subject.
viewport::Picture drawSheet(OffscreenContext& context, SheetLayer& layer, Subject const& subject);

}  // namespace vellum::gallery
