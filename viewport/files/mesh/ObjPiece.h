#pragma once

#include "foundation/geometry/Color4.h"
#include "foundation/geometry/Vector2.h"
#include "foundation/geometry/Vector3.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace vellum::viewport {

/// Some lines of an OBJ text that stand together, as far as they can be read without what stands before them:
/// lists and plain faces, whose indices are as the file has them. A core reads a piece while others read
/// other ones.
///
/// What is unusual in any way, or depends on more, is only marked as a statement of its own kind, and the
/// reader of the file reads it: damage, names of parts and materials, lines and points. Both give the same
/// where both can read a statement.
///
///     ObjPiece piece;
///     piece.read(lines, textEnd);
///     for (ObjPiece::Run const& run : piece.runs)
///         ... `run.count` of the positions, normals, faces ... that are next in their lists
///     if (piece.stop != nullptr)
///         ... what follows there
struct ObjPiece {
    enum class Kind : unsigned char { POSITIONS, COLORED_POSITIONS, TEXTURES, NORMALS, FACES, OTHERS };

    /// Statements of the same kind that follow one another.
    struct Run {
        Kind kind;
        bool
            hasPairs;  ///< some corners of faces are "v/vt", of which the second may be a normal all the same
        std::size_t count;
    };

    /// Counted from 1, or back from the last one with negative numbers; 0: there is none.
    struct Corner {
        std::int32_t indices[3];  ///< position, texture coordinate, normal
    };

    /// A polygon.
    struct Face {
        char const* statement;  ///< where it begins
        std::size_t corners;    ///< 3 or more
    };

    std::vector<Run> runs;  ///< in the order of the text
    std::vector<Vector3<double>> positions;
    std::vector<Color4<float>> colors;  ///< of the positions that have one
    std::vector<Vector2<float>> textures;
    std::vector<Vector3<float>> normals;
    std::vector<Corner> corners;  ///< of all faces
    std::vector<Face> faces;
    std::vector<char const*> others;  ///< where other statements begin, each of which is a line
    char const* stop =
        nullptr;  ///< a statement from which on nothing was read, since a line goes on; or null

    /// \param text begins with a statement; its lines end with a line feed, the last one perhaps with
    /// `textEnd`
    void read(std::string_view text, char const* textEnd);

private:
    bool _readStatement(char const* here, char const* textEnd);
    bool _readPosition(char const* here, char const* textEnd);
    bool _readTexture(char const* here, char const* textEnd);
    bool _readNormal(char const* here, char const* textEnd);
    bool _readFace(char const* statement, char const* here, char const* textEnd);
    void _count(Kind kind, bool hasPairs = false);
};

/// What a normal of the file is in the mesh: of unit length, or zero where it has no direction.
Vector3<float> objNormal(double x, double y, double z);

/// What texture coordinates are: zero where they are no numbers.
Vector2<float> objTexture(double u, double v);

/// What a part of a color is: 0 or more; the largest one of the file tells what 1 is.
float objColorPart(double value);

}  // namespace vellum::viewport
