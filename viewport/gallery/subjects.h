#pragma once

#include "viewport/gallery/Sheet.h"

#include <vector>

/// What the gallery shows, one function and one source for each picture.
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

/// All of them in the order in which they are numbered.
inline std::vector<Subject> allSubjects() {
    return {primitives(), boxes(),    circles(),  arrows(),    vectorField(), gizmos(),
            grids(),      ellipses(), textures(), luminance(), composed()};
}

}  // namespace vellum::gallery
