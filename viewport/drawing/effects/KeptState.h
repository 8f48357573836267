#pragma once

namespace vellum::viewport {

/// Restores lights, materials, textures and the current color as they were, when it ends.
class KeptState {
public:
    KeptState();   ///< GL: glGet, glPushAttrib.
    ~KeptState();  ///< GL: glActiveTexture x 2, glPopAttrib, glColor.
    KeptState(KeptState const&) = delete;
    KeptState& operator=(KeptState const&) = delete;

private:
    float color[4];
};

}  // namespace vellum::viewport
