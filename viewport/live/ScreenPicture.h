#pragma once

#include "viewport/drawing/view/PictureSize.h"
#include "viewport/files/images/Picture.h"

namespace vellum::viewport {

/// A picture that is kept in a texture and shown again and again, pixel by pixel, while only what is over it
/// changes. Needs a current context to its end.
class ScreenPicture {
public:
    ScreenPicture() = default;
    ~ScreenPicture();
    ScreenPicture(ScreenPicture const&) = delete;
    ScreenPicture& operator=(ScreenPicture const&) = delete;

    /// Takes over a picture.  State: none is left changed.
    void set(Picture const& picture);

    /// Takes over what has been drawn into the lower left corner of the framebuffer.  State: none is left
    /// changed.
    void copy(PictureSize const& size);

    void clear();  ///< There is no picture then.
    bool isEmpty() const { return size.width == 0; }

    /// How it lies over what is in the framebuffer.
    enum class Cover { ALL, BY_OPACITY };

    /// Fills a part of the framebuffer of the picture's size, from (left, bottom), with it.
    /// State: none is left changed but the viewport.
    void draw(int left, int bottom, Cover cover) const;

private:
    void _prepare(PictureSize const& newSize);

    unsigned int texture = 0;
    PictureSize size{0, 0};
    PictureSize stored{0, 0};  // of the texture
    bool isTopFirst = false;   // in the texture
};

}  // namespace vellum::viewport
