#include "viewport/drawing/subjects/part_material.h"

#include <algorithm>

#include <GL/glew.h>

namespace vellum::viewport {

namespace {

// Those of toolkit::Lit.
constexpr Color4<float> GLOSS{0.17F, 0.17F, 0.17F, 1};
constexpr Color4<float> NO_GLOSS{0, 0, 0, 1};
constexpr float SHININESS = 42;

constexpr float LARGEST_SHININESS = 128;  // of OpenGL
constexpr Color4<float> DARK{0, 0, 0, 1};

}  // namespace

void setPartMaterial(ModelPart const& part, bool isGlossy) {
    Color4<float> const specular = part.specular.value_or(isGlossy ? GLOSS : NO_GLOSS);
    float const shininess = part.specular ? std::min(part.shininess, LARGEST_SHININESS) : SHININESS;
    glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, &part.emission.r);
    glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, &specular.r);
    glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, shininess);
}

void endPartMaterial() {
    glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, &DARK.r);
}

PartMask::PartMask(ModelPart const& part)
    : isMasked(part.texture != nullptr && part.alphaMode == AlphaMode::MASK) {
    if (isMasked) {
        glEnable(GL_ALPHA_TEST);
        glAlphaFunc(GL_GEQUAL, part.alphaCutoff);
    }
}

PartMask::~PartMask() {
    if (isMasked) {
        glDisable(GL_ALPHA_TEST);
    }
}

}  // namespace vellum::viewport
