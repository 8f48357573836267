#pragma once

#include "viewport/gallery/sheets/Sheet.h"
#include "viewport/text/Fault.h"

#include <string>
#include <vector>

namespace vellum::gallery {

/// A picture of a contact sheet.
struct SheetTile {
    std::string file;  ///< PNG
    std::string label;
};

/// A sheet of pictures that lie in files, each shown pixel by pixel over its label, in as many rows as
/// columns or in one row less. All pictures must have one size, which determines the size of the sheet. A
/// file that cannot be read, a picture of another size and a sheet that is too large to be drawn are faults.
viewport::Result<Subject> contactSheet(std::vector<SheetTile> const& tiles);

}  // namespace vellum::gallery
