#pragma once

#include "viewport/drawing/ViewStyle.h"
#include "viewport/drawing/view/CameraSpec.h"
#include "viewport/drawing/view/PictureSize.h"
#include "viewport/scene/Scene.h"
#include "viewport/text/Fault.h"

#include <cstddef>

namespace vellum::viewport {

/// The camera of a film: that of the first picture for all of them, or one that goes round the scene.
///
///     Result<FilmCamera> const camera = FilmCamera::of(firstScene, style, size, 0);
///     ... for each picture ...
///         camera.value().place(i, style);
///         Viewer viewer(layer, scene, style);
///
/// A camera that framed each scene anew would jitter. All places are those of the files, so that scenes of
/// any frame are seen alike. Makes no GL calls.
class FilmCamera {
public:
    /// Chooses what the style leaves open, by the first scene. A fault where it makes no camera.
    /// \param turn pictures of a full turn about the vertical axis through the focus, which is the middle of the scene unless
    ///     the style says otherwise. The whole scene is in all of them, unless the style has a position. 0: no turn. Not
    ///     together with a view along an axis, which cannot turn: a fault.
    static Result<FilmCamera> of(Scene const& first, ViewStyle const& style, PictureSize const& size,
                                 std::size_t turn);

    /// The camera of a picture, counted from 0.
    CameraSpec at(std::size_t picture) const;

    /// Gives a style the camera of a picture, and the room beside it that the key of the first one took.
    void place(std::size_t picture, ViewStyle& style) const;

private:
    FilmCamera() = default;

    void _hold(Scene const& first, class ViewCamera const& camera);

    CameraSpec held;                 // of the first picture
    Vector3<double> right{0, 0, 0};  // with the next two: the axes of the scene in the files
    Vector3<double> vertical{0, 0, 0};
    Vector3<double> front{0, 0, 0};
    std::size_t turn = 0;
    int keyWidth = 0;  // pixels
};

}  // namespace vellum::viewport
