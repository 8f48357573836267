#include "viewport/live/ScreenPicture.h"

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

constexpr GLbitfield KEPT = GL_ENABLE_BIT | GL_TEXTURE_BIT | GL_COLOR_BUFFER_BIT | GL_TRANSFORM_BIT |
                            GL_CURRENT_BIT | GL_DEPTH_BUFFER_BIT | GL_PIXEL_MODE_BIT | GL_POLYGON_BIT;

}  // namespace

ScreenPicture::~ScreenPicture() {
    if (texture != 0) {
        glDeleteTextures(1, &texture);
    }
}

void ScreenPicture::set(Picture const& picture) {
    glPushAttrib(KEPT);
    glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
    _prepare({picture.width, picture.height});
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, picture.width, picture.height, GL_RGBA, GL_UNSIGNED_BYTE,
                    picture.pixels.data());
    glPopClientAttrib();
    glPopAttrib();
    isTopFirst = true;
}

void ScreenPicture::copy(PictureSize const& newSize) {
    glPushAttrib(KEPT);
    _prepare(newSize);
    glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, newSize.width, newSize.height);
    glPopAttrib();
    isTopFirst = false;
}

void ScreenPicture::clear() {
    size = {0, 0};
}

void ScreenPicture::_prepare(PictureSize const& newSize) {
    size = newSize;
    if (texture == 0) {
        glGenTextures(1, &texture);
    }
    glBindTexture(GL_TEXTURE_2D, texture);
    if (stored != newSize) {
        stored = newSize;
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, newSize.width, newSize.height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                     nullptr);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    }
}

void ScreenPicture::draw(int left, int bottom, Cover cover) const {
    if (isEmpty()) {
        return;
    }
    glPushAttrib(KEPT);
    glViewport(left, bottom, size.width, size.height);
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    for (GLenum const what : {GL_DEPTH_TEST, GL_LIGHTING, GL_CULL_FACE, GL_ALPHA_TEST, GL_STENCIL_TEST}) {
        glDisable(what);
    }
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    glDisable(GL_BLEND);
    if (cover == Cover::BY_OPACITY) {
        glEnable(GL_BLEND);
    }
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glDepthMask(GL_FALSE);
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
    float const top = isTopFirst ? 0.0F : 1.0F;
    glBegin(GL_QUADS);
    glTexCoord2f(0, 1 - top);
    glVertex2f(-1, -1);
    glTexCoord2f(1, 1 - top);
    glVertex2f(1, -1);
    glTexCoord2f(1, top);
    glVertex2f(1, 1);
    glTexCoord2f(0, top);
    glVertex2f(-1, 1);
    glEnd();
    glPopMatrix();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glPopAttrib();
}

}  // namespace vellum::viewport
