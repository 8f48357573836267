#include "viewport/drawing/effects/KeptState.h"

#include <GL/glew.h>

namespace vellum::viewport {

KeptState::KeptState() {
    glGetFloatv(GL_CURRENT_COLOR, color);
    glPushAttrib(GL_LIGHTING_BIT | GL_TEXTURE_BIT);
}

KeptState::~KeptState() {
    // Workaround: Mesa 22.3 restores only the attribute groups that changed while this push was the innermost one (see
    // docs/drivers.md). Effects change textures inside a push of their own, so textures are changed here once more.
    glActiveTexture(GL_TEXTURE1);
    glActiveTexture(GL_TEXTURE0);
    glPopAttrib();
    glColor4fv(color);
}

}  // namespace vellum::viewport
