#pragma once

#include "viewport/gallery/Sheet.h"
#include "viewport/text/Fault.h"

#include <optional>
#include <string>
#include <vector>

namespace vellum::gallery {

/// A picture of the gallery's page.
struct Exhibit {
    std::string file;  ///< in the folder of the page
    std::string title;
    std::string caption;
};

/// The name of the list of further pictures in a gallery's folder. Each of its lines holds a file name, a title
/// and a caption with tabs between them.
inline constexpr char FURTHER_PICTURES[] = "captions.tsv";

/// Writes `folder`/index.html: the drawings, then the pictures of the list of further ones where there is such a
/// list. A picture that is named and does not exist is a fault, as is a line of the list that cannot be read.
/// Gives the fault, or nothing.
std::optional<viewport::Fault> writeIndexPage(std::string const& folder,
                                              std::vector<Exhibit> const& drawings);

}  // namespace vellum::gallery
