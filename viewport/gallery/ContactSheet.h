#pragma once

#include "viewport/gallery/Sheet.h"
#include "viewport/text/Fault.h"

#include <string>

namespace vellum::gallery {

/// A sheet of pictures that lie in files, each shown pixel by pixel over its label.
///
/// `list` names them: each of its lines holds the name of a PNG file in the list's folder and a label with a tab
/// between them. All pictures must have one size, which gives the sheet its own; they stand in as many rows as columns,
/// or in one row less.
/// A file that cannot be read, a picture of another size and a line that is no entry are faults, as is an empty list.
viewport::Result<Subject> contactSheet(std::string const& list);

}  // namespace vellum::gallery
