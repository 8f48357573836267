#pragma once

#include "viewport/gallery/sheets/Sheet.h"

#include <vector>

/// The sheets that the gallery draws with the render layer, one function for each. The list of pictures asks
/// for them by name.
namespace vellum::gallery {

Subject primitives();
Subject boxes();
Subject circles();
Subject arrows();
Subject vectorField();
Subject gizmos();
Subject grids();
Subject ellipses();
Subject textures();
Subject luminance();
Subject composed();

/// All of them.
inline std::vector<Subject> allSubjects() {
    return {primitives(), boxes(),    circles(),  arrows(),    vectorField(), gizmos(),
            grids(),      ellipses(), textures(), luminance(), composed()};
}

}  // namespace vellum::gallery
