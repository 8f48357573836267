#pragma once

#include "foundation/basic/Array.h"

namespace vellum {

/// A node of a GeometryTree: the volume that encloses everything below it, and the position of its children.
template <class Volume>
struct GeometryNode {
    Volume volume;
    unsigned int firstChild = 0;  ///< Index of the first child in the tree's nodes; children are adjacent.
    unsigned int childCount = 0;  ///< 0 for a leaf.
};

/// A hierarchy of volumes (bounding boxes of a spatial search), kept in one array. Node 0 is the root; the
/// children of a node come after it.
template <class Node>
struct GeometryTree {
    Array<Node> nodes;
};

}  // namespace vellum
