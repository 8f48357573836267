#include "toolkit/internal/FixedPass.h"

#include "foundation/raster/Core_RL.h"

#include "toolkit/internal/gl.h"

namespace vellum::toolkit {

FixedPass::FixedPass() {
    glPushAttrib(GL_ENABLE_BIT | GL_COLOR_BUFFER_BIT);
    for (GLenum const capability : {GL_LIGHTING, GL_TEXTURE_1D, GL_TEXTURE_2D, GL_TEXTURE_3D}) {
        glDisable(capability);
    }
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    if (VL_Raster->checkShaderSupport()) {
        glUseProgram(0);
    }
}

FixedPass::~FixedPass() {
    glPopAttrib();
}

}  // namespace vellum::toolkit
