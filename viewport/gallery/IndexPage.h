#pragma once

#include "viewport/text/Fault.h"

#include <optional>
#include <string>
#include <vector>

namespace vellum::gallery {

/// A picture of the gallery's page.
struct Exhibit {
    std::string section;  ///< heading above the picture
    std::string file;     ///< in the folder of the page
    std::string title;
    std::string caption;
};

/// Writes `folder`/index.html with these pictures, in their order; neighbors of one section share a heading.
/// The page appears complete or not at all.
/// \return the fault, or nothing.
std::optional<viewport::Fault> writeIndexPage(std::string const& folder,
                                              std::vector<Exhibit> const& exhibits);

}  // namespace vellum::gallery
