#pragma once

#include <map>
#include <string>
#include <vector>

namespace vellum {

/// Everything that glGet and its kin tell about a context: switches, current values, transforms and their
/// stacks, lights, materials, rasterization, fragment operations, pixel transfer, evaluators, vertex arrays,
/// every texture unit, and what is bound. Not the contents of objects, and no limits.
///
///     AttributeState const before;
///     effect.preprocess();
///     draw();
///     effect.postprocess();
///     effect.cleanup();
///     EXPECT_THAT(before.namesThatDiffer(AttributeState()), UnorderedElementsAre("GL_CURRENT_COLOR"))
///         << before.differences(AttributeState());
///
/// Needs a context of the compatibility profile, version 4.5, outside glBegin and glEnd. Reading raises no GL
/// error and leaves all as it was.
class AttributeState {
public:
    AttributeState();  ///< The state of the current context now.

    /// What the other state has otherwise, by name, sorted: "GL_LIGHTING", "GL_LIGHT1 GL_AMBIENT",
    /// "GL_TEXTURE1 GL_TEXTURE_BINDING_2D".
    std::vector<std::string> namesThatDiffer(AttributeState const& other) const;

    /// A line for each of them: "GL_CURRENT_COLOR: 0.5 0.5 0.5 1 -> 1 1 1 1".
    std::string differences(AttributeState const& other) const;

    std::map<std::string, std::vector<double>> values;
};

}  // namespace vellum
