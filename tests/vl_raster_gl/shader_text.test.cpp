#include "internal/shader_text.h"

#include <gtest/gtest.h>

namespace vellum {
namespace {

TEST(Shader_text_test, partsTakeThePlacesOfTheirNames) {
    EXPECT_EQ(filledIn("a @X@ b @Y@@X@", ShaderPart{"X", "1"}, ShaderPart{"Y", "2"}), "a 1 b 21");
}

TEST(Shader_text_test, aTextWithoutNamesStaysAsItIs) {
    EXPECT_EQ(filledIn("void main()\n{\n}\n", ShaderPart{"X", "1"}), "void main()\n{\n}\n");
    EXPECT_EQ(filledIn(""), "");
}

TEST(Shader_text_test, namesInsidePartsAreNotReplaced) {
    EXPECT_EQ(filledIn("@X@ @Y@", ShaderPart{"X", "@Y@"}, ShaderPart{"Y", "2"}), "@Y@ 2");
}

TEST(Shader_text_test, aSingleMarkIsKept) {
    EXPECT_EQ(filledIn("a @ b", ShaderPart{"X", "1"}), "a @ b");
}

}  // namespace
}  // namespace vellum
