#pragma once

#include "viewport/gallery/PictureList.h"
#include "viewport/text/Fault.h"

#include <optional>
#include <string>
#include <vector>

namespace vellum::gallery {

struct Exhibit;
class ProgramRunner;
class WorkFolder;

/// What a gallery is made of.
struct GallerySettings {
    std::string list;               ///< file that lists the pictures
    std::string out;                ///< folder for the pictures and index.html
    std::string viewport;           ///< the program vl_viewport
    ListVariables variables;        ///< for the list; "inputs" is added
    std::vector<std::string> only;  ///< files of the pictures to draw; empty for all
};

/// Draws the pictures of a list and writes the page that shows them. Standard output says what is being
/// drawn, standard error what went wrong. Neither a fault nor an interruption leaves a temporary file or half
/// a picture.
class Gallery {
public:
    enum ExitStatus { DONE = 0, FAILURE = 1, USAGE_ERROR = 2, NO_GL = 3 };

    explicit Gallery(GallerySettings const& settings) : settings(settings) {}

    /// Does all of it; where the process is asked to end by a signal, it ends by that signal.
    ExitStatus run();

private:
    ExitStatus _draw();
    std::optional<viewport::Fault> _drawPictures(WorkFolder const& work, ProgramRunner& runner);
    viewport::Result<std::vector<ListedPicture>> _chosen(ListVariables const& variables) const;
    std::vector<Exhibit> _exhibits() const;

    GallerySettings settings;
    std::vector<ListedPicture> listed;
};

}  // namespace vellum::gallery
