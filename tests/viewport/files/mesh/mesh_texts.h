#pragma once

#include <cstdint>
#include <cstring>
#include <string>

/// Small mesh files, written out by the tests.
namespace mesh_texts {

/// A cube from -1 to 1 with six quads, counter-clockwise from outside.
inline std::string const cubeOff = "OFF\n8 6 0\n"
                                   "-1 -1 -1\n1 -1 -1\n-1 1 -1\n1 1 -1\n"
                                   "-1 -1 1\n1 -1 1\n-1 1 1\n1 1 1\n"
                                   "4 0 4 6 2\n4 1 3 7 5\n4 0 1 5 4\n4 2 6 7 3\n4 0 2 3 1\n4 4 5 7 6\n";

inline std::string const triangleObj = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";

inline std::string const trianglePly = "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\n"
                                       "property float y\nproperty float z\nelement face 1\n"
                                       "property list uchar int vertex_indices\nend_header\n"
                                       "0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n";

template <class T>
void append(std::string& bytes, T const& value) {
    char raw[sizeof value];
    std::memcpy(raw, &value, sizeof value);
    bytes.append(raw, sizeof value);
}

/// A strip of `count` triangles as little-endian PLY; the strip lies in the plane z = 0.
inline std::string binaryPly(int const& count) {
    std::string bytes = "ply\nformat binary_little_endian 1.0\nelement vertex " + std::to_string(count + 2) +
                        "\nproperty float x\nproperty float y\nproperty float z\nelement face " +
                        std::to_string(count) + "\nproperty list uchar int vertex_indices\nend_header\n";
    for (int i = 0; i < count + 2; ++i) {
        append(bytes, static_cast<float>(i / 2));
        append(bytes, static_cast<float>(i % 2));
        append(bytes, 0.0F);
    }
    for (int i = 0; i < count; ++i) {
        append(bytes, static_cast<std::uint8_t>(3));
        append(bytes, static_cast<std::int32_t>(i));
        append(bytes, static_cast<std::int32_t>(i + 1 + i % 2));
        append(bytes, static_cast<std::int32_t>(i + 2 - i % 2));
    }
    return bytes;
}

/// The same strip as OFF.
inline std::string stripOff(int const& count) {
    std::string text = "OFF\n" + std::to_string(count + 2) + " " + std::to_string(count) + " 0\n";
    for (int i = 0; i < count + 2; ++i) {
        text += std::to_string(i / 2) + " " + std::to_string(i % 2) + " 0\n";
    }
    for (int i = 0; i < count; ++i) {
        text += "3 " + std::to_string(i) + " " + std::to_string(i + 1 + i % 2) + " " +
                std::to_string(i + 2 - i % 2) + "\n";
    }
    return text;
}

/// `count` separate triangles as binary STL.
inline std::string binaryStl(int const& count) {
    std::string bytes(80, ' ');
    append(bytes, static_cast<std::uint32_t>(count));
    for (int i = 0; i < count; ++i) {
        float const x = static_cast<float>(i);
        for (float const& value : {0.0F, 0.0F, 1.0F, x, 0.0F, 0.0F, x + 1, 0.0F, 0.0F, x, 1.0F, 0.0F}) {
            append(bytes, value);
        }
        append(bytes, static_cast<std::uint16_t>(0));
    }
    return bytes;
}

/// Declares more vertices than memory holds, then gives eight.
inline std::string const endlessOff = "OFF\n987654321012 6 0\n"
                                      "-1 -1 -1\n1 -1 -1\n-1 1 -1\n1 1 -1\n"
                                      "-1 -1 1\n1 -1 1\n-1 1 1\n1 1 1\n"
                                      "4 0 4 6 2\n4 1 3 7 5\n";

/// Bytes without any order, always the same ones.
inline std::string noise(std::size_t const& size) {
    std::string bytes;
    std::uint32_t state = 12345;
    for (std::size_t i = 0; i < size; ++i) {
        state = state * 1664525U + 1013904223U;
        bytes.push_back(static_cast<char>(state >> 24));
    }
    return bytes;
}

}  // namespace mesh_texts
