#include "tests/support/attribute_state.h"

#include "tests/gl_spy/GlTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "internal/gl_api.h"

namespace vellum {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Attribute_state_drawn_test : public gl_spy::GlTest {};

TEST_F(Attribute_state_drawn_test, readingChangesNothing) {
    glActiveTexture(GL_TEXTURE3);
    glClientActiveTexture(GL_TEXTURE2);
    AttributeState const before;
    EXPECT_GT(before.values.size(), 1000U);
    EXPECT_THAT(before.namesThatDiffer(AttributeState()), IsEmpty());
    EXPECT_EQ(before.values.at("GL_ACTIVE_TEXTURE").at(0), GL_TEXTURE3);
    EXPECT_EQ(before.values.at("GL_CLIENT_ACTIVE_TEXTURE").at(0), GL_TEXTURE2);
}

struct Change {
    char const* name;
    void (*make)();
};

TEST_F(Attribute_state_drawn_test, everyChangeIsSeenByItsName) {
    static constexpr float VALUES[4] = {0.25F, 0.5F, 0.75F, 0.125F};
    Change const changes[] = {
        {"GL_ACTIVE_TEXTURE", [] { glActiveTexture(GL_TEXTURE1); }},
        {"GL_BACK GL_SPECULAR", [] { glMaterialfv(GL_BACK, GL_SPECULAR, VALUES); }},
        {"GL_BLEND", [] { glEnable(GL_BLEND); }},
        {"GL_BLEND_COLOR", [] { glBlendColor(1, 0, 1, 0); }},
        {"GL_CLIP_PLANE1", [] { glEnable(GL_CLIP_PLANE1); }},
        {"GL_CURRENT_COLOR", [] { glColor4fv(VALUES); }},
        {"GL_CURRENT_NORMAL", [] { glNormal3f(1, 0, 0); }},
        {"GL_DEPTH_FUNC", [] { glDepthFunc(GL_GREATER); }},
        {"GL_FRONT GL_SHININESS", [] { glMaterialf(GL_FRONT, GL_SHININESS, 9); }},
        {"GL_LIGHT1", [] { glEnable(GL_LIGHT1); }},
        {"GL_LIGHT2 GL_AMBIENT", [] { glLightfv(GL_LIGHT2, GL_AMBIENT, VALUES); }},
        {"GL_LIGHTING", [] { glEnable(GL_LIGHTING); }},
        {"GL_LINE_WIDTH", [] { glLineWidth(2); }},
        {"GL_MATRIX_MODE", [] { glMatrixMode(GL_PROJECTION); }},
        {"GL_MODELVIEW_STACK_DEPTH",
         [] {
             glMatrixMode(GL_MODELVIEW);
             glPushMatrix();
         }},
        {"GL_POLYGON_OFFSET_FILL", [] { glEnable(GL_POLYGON_OFFSET_FILL); }},
        {"GL_TEXTURE1 GL_TEXTURE_2D", [] { glEnable(GL_TEXTURE_2D); }},
        {"GL_TEXTURE1 GL_TEXTURE_BINDING_2D",
         [] {
             GLuint texture = 0;
             glGenTextures(1, &texture);
             glBindTexture(GL_TEXTURE_2D, texture);
         }},
        {"GL_TEXTURE1 GL_TEXTURE_ENV_MODE", [] { glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_ADD); }},
        {"GL_UNPACK_ALIGNMENT", [] { glPixelStorei(GL_UNPACK_ALIGNMENT, 1); }},
        {"GL_VIEWPORT", [] { glViewport(1, 2, 3, 4); }},
        {"attribute 5 enabled", [] { glEnableVertexAttribArray(5); }},
        {"GL_ATTRIB_STACK_DEPTH", [] { glPushAttrib(GL_FOG_BIT); }},
    };
    for (Change const& change : changes) {
        AttributeState const before;
        change.make();
        AttributeState const after;
        // Two at most: a matrix is pushed behind a change of the matrix mode.
        std::vector<std::string> names = before.namesThatDiffer(after);
        EXPECT_THAT(names, testing::Contains(change.name)) << before.differences(after);
        EXPECT_LE(names.size(), 2U) << before.differences(after);
    }
    glPopAttrib();
    glDisableVertexAttribArray(5);
}

TEST_F(Attribute_state_drawn_test, differencesSayBothValues) {
    AttributeState const before;
    glLineWidth(3);
    AttributeState const after;
    EXPECT_EQ(before.differences(after), "GL_LINE_WIDTH: 1 -> 3\n");
    EXPECT_THAT(before.namesThatDiffer(after), ElementsAre("GL_LINE_WIDTH"));
}

}  // namespace
}  // namespace vellum
