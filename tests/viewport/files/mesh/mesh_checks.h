#pragma once

#include "foundation/basic/threads.h"
#include "tests/support/thread_limits.h"
#include "viewport/files/common/Progress.h"
#include "viewport/files/mesh/MeshData.h"
#include "viewport/text/Fault.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

/// What the tests of the readers of mesh files share.
namespace vellum {

inline bool operator==(Vector3<double> const& a, Vector3<double> const& b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}
inline bool operator==(Vector3<float> const& a, Vector3<float> const& b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}
inline bool operator==(Vector2<float> const& a, Vector2<float> const& b) {
    return a.x == b.x && a.y == b.y;
}
inline bool operator==(Color4<float> const& a, Color4<float> const& b) {
    return a.r == b.r && a.g == b.g && a.b == b.b && a.a == b.a;
}
inline bool operator==(Tuple3<unsigned int> const& a, Tuple3<unsigned int> const& b) {
    return a.e0 == b.e0 && a.e1 == b.e1 && a.e2 == b.e2;
}
inline bool operator==(Tuple2<unsigned int> const& a, Tuple2<unsigned int> const& b) {
    return a.e0 == b.e0 && a.e1 == b.e1;
}
template <class T>
void PrintTo(Vector3<T> const& v, std::ostream* const stream) {
    *stream << '(' << v.x << ' ' << v.y << ' ' << v.z << ')';
}
inline void PrintTo(Vector2<float> const& v, std::ostream* const stream) {
    *stream << '(' << v.x << ' ' << v.y << ')';
}
inline void PrintTo(Color4<float> const& c, std::ostream* const stream) {
    *stream << '(' << c.r << ' ' << c.g << ' ' << c.b << ' ' << c.a << ')';
}
inline void PrintTo(Tuple3<unsigned int> const& t, std::ostream* const stream) {
    *stream << '(' << t.e0 << ' ' << t.e1 << ' ' << t.e2 << ')';
}
inline void PrintTo(Tuple2<unsigned int> const& t, std::ostream* const stream) {
    *stream << '(' << t.e0 << ' ' << t.e1 << ')';
}

}  // namespace vellum

namespace mesh_checks {

/// The message of the fault, or an empty one.
inline std::string faultOf(vellum::viewport::Result<vellum::viewport::MeshData> const& result) {
    return result.isOk() ? std::string() : result.fault().message;
}

/// What a reader, with a progress or without, makes of the bytes.
template <class Reader>
vellum::viewport::Result<vellum::viewport::MeshData> resultOf(Reader const& read, std::string_view bytes) {
    if constexpr (std::is_invocable_v<Reader const&, std::string_view>) {
        return read(bytes);
    } else {
        return read(bytes, vellum::viewport::Progress());
    }
}

/// The mesh that a reader makes of the bytes; an empty one, and a failure, for a fault.
template <class Reader>
vellum::viewport::MeshData meshOf(Reader const& read, std::string_view bytes) {
    vellum::viewport::Result<vellum::viewport::MeshData> result = resultOf(read, bytes);
    EXPECT_EQ(faultOf(result), "");
    return result.isOk() ? result.value() : vellum::viewport::MeshData();
}

/// Reads the bytes from memory of exactly their size, where a sanitizer notices a step beyond it. Whatever is
/// read must be sound, but may be empty.
template <class Reader>
std::string readExactly(Reader const& read, std::string_view bytes) {
    std::vector<char> const exact(bytes.begin(), bytes.end());
    vellum::viewport::Result<vellum::viewport::MeshData> const result =
        resultOf(read, std::string_view(exact.data(), exact.size()));
    if (!result.isOk()) {
        EXPECT_NE(result.fault().message, "");
        return result.fault().message;
    }
    vellum::viewport::MeshData const& mesh = result.value();
    std::string const fault = mesh.firstFault("").value_or(vellum::viewport::Fault()).message;
    EXPECT_TRUE(fault.empty() || fault.find("the mesh is empty") == 0) << fault;
    return "";
}

/// What a reader makes of bytes with each number of threads must be the same to the last bit, faults and
/// notes included. \param expected from elsewhere
template <class Reader>
void expectOnAllThreads(Reader const& read, std::string_view bytes,
                        vellum::viewport::Result<vellum::viewport::MeshData> const& expected) {
    for (int const threads : threadLimits()) {
        SCOPED_TRACE(std::to_string(threads) + " threads");
        vellum::setThreadLimit(threads);
        vellum::viewport::Result<vellum::viewport::MeshData> const result = resultOf(read, bytes);
        vellum::setThreadLimit(0);
        ASSERT_EQ(faultOf(result), faultOf(expected));
        if (!result.isOk()) {
            continue;
        }
        vellum::viewport::MeshData const& mesh = result.value();
        vellum::viewport::MeshData const& other = expected.value();
        // No list of thousands is printed.
        EXPECT_TRUE(mesh.positions == other.positions);
        EXPECT_TRUE(mesh.triangles == other.triangles);
        EXPECT_TRUE(mesh.normals == other.normals);
        EXPECT_TRUE(mesh.colors == other.colors);
        EXPECT_TRUE(mesh.textureCoordinates == other.textureCoordinates);
        EXPECT_TRUE(mesh.lines == other.lines);
        EXPECT_TRUE(mesh.triangleMaterials == other.triangleMaterials);
        EXPECT_EQ(mesh.materials.size(), other.materials.size());
        EXPECT_EQ(mesh.partCount, other.partCount);
        EXPECT_EQ(mesh.notes, other.notes);
        EXPECT_FALSE(mesh.positions.empty());
    }
}

/// The text with other line ends.
inline std::string withLineEnds(std::string const& text, std::string const& lineEnd) {
    std::string changed;
    for (char const character : text) {
        if (character == '\n') {
            changed += lineEnd;
        } else {
            changed += character;
        }
    }
    return changed;
}

/// Reads all beginnings of the bytes. \return how many of them are no fault.
template <class Reader>
std::size_t readBeginnings(Reader const& read, std::string_view bytes) {
    std::size_t sound = 0;
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        sound += readExactly(read, bytes.substr(0, size)).empty() ? 1 : 0;
    }
    return sound;
}

/// Reads the bytes with each of them changed in turn, in several ways.
template <class Reader>
void readWithChangedBytes(Reader const& read, std::string_view bytes) {
    std::string changed(bytes);
    for (std::size_t place = 0; place < bytes.size(); ++place) {
        for (unsigned char const other : {0x00, 0x01, 0x20, 0x2D, 0x39, 0x7F, 0x80, 0xFF}) {
            changed[place] = static_cast<char>(other);
            readExactly(read, changed);
        }
        changed[place] = static_cast<char>(bytes[place] ^ 0x10);
        readExactly(read, changed);
        changed[place] = bytes[place];
    }
}

}  // namespace mesh_checks
