#include "viewport/gallery/sheets/ContactSheet.h"

#include "foundation/raster/Core_RL.h"
#include "viewport/files/images/Picture.h"
#include "viewport/gallery/sheets/SheetLayer.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

#define GL_GLEXT_PROTOTYPES 1
#include <GL/gl.h>
#include <GL/glext.h>

namespace vellum::gallery {

namespace {

using viewport::Fault;
using viewport::Picture;
using viewport::Result;

/// Pixels. Every driver draws a sheet of this width and height in one piece.
constexpr int LARGEST_SIDE = 16384 / SheetLayer::OVERSAMPLING;

/// Copies the picture into the drawing area. Each of its pixels fills the block that is averaged to one pixel
/// of the sheet.
void copyInto(Core_RL& layer, Picture const& picture) {
    Tuple4<unsigned int> const area = layer.getCurrentViewportCoords();
    layer.pushDepthTest({DEPTH_TEST_OFF, false});
    glPixelZoom(SheetLayer::OVERSAMPLING, -SheetLayer::OVERSAMPLING);  // the top row comes first
    glWindowPos2i(static_cast<GLint>(area.e0), static_cast<GLint>(area.e1 + area.e3));
    glDrawPixels(picture.width, picture.height, GL_RGBA, GL_UNSIGNED_BYTE, picture.pixels.data());
    glPixelZoom(1.0F, 1.0F);
    layer.popDepthTest();
}

}  // namespace

Result<Subject> contactSheet(std::vector<SheetTile> const& tiles) {
    // As many columns as rows, or one more.
    std::size_t columns = 1;
    while (columns * columns < tiles.size()) {
        ++columns;
    }
    Subject sheet;
    std::shared_ptr<Picture const> first;
    for (SheetTile const& tile : tiles) {
        Result<Picture> loaded = Picture::loadPng(tile.file);
        if (!loaded.isOk()) {
            return loaded.fault();
        }
        auto const picture = std::make_shared<Picture const>(std::move(loaded.value()));
        first = first ? first : picture;
        if (picture->width != first->width || picture->height != first->height) {
            return Fault{tile.file, "has another size than the first picture of its sheet"};
        }
        if (sheet.rows.empty() || sheet.rows.back().cells.size() == columns) {
            sheet.rows.push_back({1.0F, {}});
        }
        sheet.rows.back().cells.push_back(
            {tile.label, View::flat(1.0F), [picture](Core_RL& layer, View) { copyInto(layer, *picture); }});
    }
    if (!first) {
        return Fault{"", "a contact sheet has no picture"};
    }
    // The last row is filled up, so that all cells have the same width.
    while (sheet.rows.back().cells.size() < columns) {
        sheet.rows.back().cells.push_back({"", View::flat(1.0F), [](Core_RL&, View) {}});
    }
    fitToDrawings(sheet, first->width, first->height);
    if (sheet.width > LARGEST_SIDE || sheet.height > LARGEST_SIDE) {
        return Fault{tiles.front().file,
                     "makes a sheet of more than " + std::to_string(LARGEST_SIDE) + " pixels"};
    }
    return sheet;
}

}  // namespace vellum::gallery
