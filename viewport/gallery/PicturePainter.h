#pragma once

#include "viewport/gallery/PictureList.h"
#include "viewport/gallery/WorkFolder.h"
#include "viewport/gallery/sheets/Sheet.h"
#include "viewport/text/Fault.h"

#include <optional>
#include <string>
#include <vector>

namespace vellum::gallery {

class ProgramRunner;

/// Draws the pictures of a list: sheets with the render layer, in this process; the others by running
/// vl_viewport. A picture replaces an earlier one of its name only once it is complete.
class PicturePainter {
public:
    /// \param viewport the program vl_viewport.
    /// \param folder the gallery's folder.
    /// \param work a folder inside it, for pictures in the making.
    PicturePainter(std::string const& viewport, std::string const& folder, WorkFolder const& work,
                   ProgramRunner& runner);

    /// Draws a picture whose variables are filled in.
    /// \return the fault, or nothing.
    std::optional<viewport::Fault> paint(ListedPicture const& picture);

private:
    std::optional<viewport::Fault> _paintInto(std::string const& file, ListedPicture const& picture);
    std::optional<viewport::Fault> _runViewport(std::string const& file, std::string const& size,
                                                std::vector<std::string> const& arguments);

    std::string viewport;
    std::string folder;
    WorkFolder const& work;
    ProgramRunner& runner;
    std::vector<Subject> subjects;
};

}  // namespace vellum::gallery
