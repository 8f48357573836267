#include "viewport/gallery/ContactSheet.h"

#include "foundation/raster/Core_RL.h"
#include "viewport/files/images/Picture.h"
#include "viewport/gallery/SheetLayer.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <memory>
#include <utility>
#include <vector>

#define GL_GLEXT_PROTOTYPES 1
#include <GL/gl.h>
#include <GL/glext.h>

namespace vellum::gallery {

namespace {

namespace fs = std::filesystem;
using viewport::Fault;
using viewport::Picture;
using viewport::Result;

/// A sheet of this many pixels is still drawn in one piece by every driver.
constexpr int LARGEST_SIDE = 16384 / SheetLayer::OVERSAMPLING;

struct Tile {
    std::string label;
    std::shared_ptr<Picture const> picture;
};

/// Copies the picture into the drawing area. Each of its pixels fills those that are averaged to one of the sheet.
void copyInto(Core_RL& layer, Picture const& picture) {
    Tuple4<unsigned int> const area = layer.getCurrentViewportCoords();
    layer.pushDepthTest({DEPTH_TEST_OFF, false});
    glPixelZoom(SheetLayer::OVERSAMPLING, -SheetLayer::OVERSAMPLING);  // the top row comes first
    glWindowPos2i(static_cast<GLint>(area.e0), static_cast<GLint>(area.e1 + area.e3));
    glDrawPixels(picture.width, picture.height, GL_RGBA, GL_UNSIGNED_BYTE, picture.pixels.data());
    glPixelZoom(1.0F, 1.0F);
    layer.popDepthTest();
}

Result<std::vector<Tile>> readTiles(std::string const& list) {
    std::ifstream lines(list);
    if (!lines) {
        return Fault{list, "cannot be read"};
    }
    std::vector<Tile> tiles;
    std::string line;
    while (std::getline(lines, line)) {
        std::size_t const tab = line.find('\t');
        if (tab == 0 || tab == std::string::npos || tab + 1 == line.size()) {
            return Fault{list, "line " + std::to_string(tiles.size() + 1) +
                                   " is not a file and a label with a tab between them"};
        }
        std::string const file = (fs::path(list).parent_path() / line.substr(0, tab)).string();
        Result<Picture> picture = Picture::loadPng(file);
        if (!picture.isOk()) {
            return picture.fault();
        }
        tiles.push_back({line.substr(tab + 1), std::make_shared<Picture const>(std::move(picture.value()))});
        Picture const& first = *tiles.front().picture;
        if (tiles.back().picture->width != first.width || tiles.back().picture->height != first.height) {
            return Fault{file, "has another size than the first picture of the list"};
        }
    }
    if (tiles.empty()) {
        return Fault{list, "names no picture"};
    }
    return tiles;
}

}  // namespace

Result<Subject> contactSheet(std::string const& list) {
    Result<std::vector<Tile>> const tiles = readTiles(list);
    if (!tiles.isOk()) {
        return tiles.fault();
    }
    std::size_t const count = tiles.value().size();
    std::size_t columns = 1;
    while (columns * columns < count) {
        ++columns;
    }
    Subject sheet;
    for (std::size_t begin = 0; begin < count; begin += columns) {
        Row row{1.0F, {}};
        for (std::size_t i = begin; i < std::min(begin + columns, count); ++i) {
            Tile const& tile = tiles.value()[i];
            row.cells.push_back(
                {tile.label, View::flat(1.0F),
                 [picture = tile.picture](Core_RL& layer, View) { copyInto(layer, *picture); }});
        }
        sheet.rows.push_back(row);
    }
    // The last row is filled up, so that all cells have the same width.
    while (sheet.rows.back().cells.size() < columns) {
        sheet.rows.back().cells.push_back({"", View::flat(1.0F), [](Core_RL&, View) {}});
    }
    Picture const& first = *tiles.value().front().picture;
    fitToDrawings(sheet, first.width, first.height);
    if (sheet.width > LARGEST_SIDE || sheet.height > LARGEST_SIDE) {
        return Fault{list, "makes a sheet of more than " + std::to_string(LARGEST_SIDE) + " pixels"};
    }
    return sheet;
}

}  // namespace vellum::gallery
