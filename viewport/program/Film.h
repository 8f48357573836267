#pragma once

#include "viewport/content/Content.h"
#include "viewport/content/Options.h"
#include "viewport/drawing/FilmCamera.h"
#include "viewport/playback/FrameReader.h"
#include "viewport/program/Console.h"
#include "viewport/program/PictureMaker.h"
#include "viewport/program/ProgressBar.h"
#include "viewport/scene/HeldLook.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vellum::viewport {

/// Draws the pictures of a film, one for each frame or for each step of a turn, into numbered files.
///
///     Film film(options, content, std::move(subject), maker);
///     if (std::optional<Failure> const failure = film.make()) ...
///
/// While a frame is drawn, the next ones are read on other threads (see FrameReader), unless the film has
/// animated meshes, whose import copies the process. Memory does not grow with the number of pictures.
class Film {
public:
    /// \param content whose meshes are kept; it is used up from frame to frame
    /// \param subject of the first frame, as the maker shows it
    Film(Options const& options, Content& content, Subject& subject, PictureMaker& maker);

    /// Draws and writes all pictures, with a bar of progress on a terminal.
    std::optional<Failure> make();

    /// The number of pictures in each series of files. A fault where frames and turn do not go together.
    static Result<std::size_t> length(Options const& options, Content const& content);

    /// The failure of a film that would replace one of the files that are read, or one picture by another.
    static std::optional<Failure> nameFailure(Options const& options, Content const& content,
                                              std::size_t length);

    /// The cameras of the pictures, one for each PictureOptions.
    static Result<std::vector<FilmCamera>> cameras(Options const& options, Subject const& subject);

private:
    void _readAhead(std::size_t number);
    std::optional<Failure> _load(std::size_t number);
    std::optional<Failure> _draw(std::size_t number);
    void _showBar();
    void _say(std::size_t number, std::vector<Fault> const& notes);

    Options const& options;
    Content& content;
    Subject& subject;
    PictureMaker& maker;
    HeldLook held;
    std::vector<FilmCamera> views;
    std::vector<std::unique_ptr<FrameReader>> readers;  // of the moving files
    std::set<std::string> said;                         // notes, each once
    std::unique_ptr<ProgressBar> bar;
};

}  // namespace vellum::viewport
