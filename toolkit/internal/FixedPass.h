#pragma once

namespace vellum::toolkit {

/// While it lives, fixed functions draw in plain colors, as the passes of effects do: no program, no light,
/// no textures, alpha blending.
///
/// GL: glPushAttrib(GL_ENABLE_BIT | GL_COLOR_BUFFER_BIT), glDisable for lighting and textures,
/// glEnable(GL_BLEND), glBlendFunc, and with shaders glUseProgram(0); at its end glPopAttrib. State: the
/// program.
class FixedPass {
public:
    FixedPass();
    ~FixedPass();
    FixedPass(FixedPass const&) = delete;
    FixedPass& operator=(FixedPass const&) = delete;
};

}  // namespace vellum::toolkit
