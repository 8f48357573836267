#pragma once

namespace vellum {

/// The bits that describe an array of a mesh. They are combined with OR; a search requires all bits under
/// SEARCH_MASK to be equal.
namespace MeshArrayInf_ns {

enum type : unsigned int {
    PER_VERTEX = 1,  ///< One element per vertex.
    PER_EDGE = 2,    ///< One element per edge.
    PER_FACE = 4,    ///< Elements of faces or of their corners.
    BINDEX = 8,      ///< The indices of blocks.
    BINDEXED = 16,   ///< Addressed by block indices.
    TRINDEX = 32,    ///< Triangles: three indices each.
    TRINDEXED = 64,  ///< Triangles of a channel: three indices each into its PER_FACE values.
    BLOCK_INFO = 128,
    BLOCK_DATA = 256,

    POS = 0x10000,          ///< Positions.
    NOR = 0x20000,          ///< Normals.
    UV = 0x40000,           ///< Texture coordinates.
    NOR_SURFACE = 0x80000,  ///< Normals of the surface.

    ATTACHED_TO_LIFECYCLE = 0x80000000,  ///< Lives as long as the mesh; ignored by searches.

    SEARCH_MASK = PER_VERTEX | PER_EDGE | PER_FACE | BINDEX | BINDEXED | TRINDEX | TRINDEXED | BLOCK_INFO |
                  BLOCK_DATA | POS | NOR | UV | NOR_SURFACE,
    TYPE_MASK = POS | NOR | UV,
    STATE_MASK = 0x80000000
};

}  // namespace MeshArrayInf_ns

}  // namespace vellum
