#pragma once

#include <string>

/// Small files whose content moves, written out by the tests.
namespace moving_files {

/// A dump of one particle for each frame, which stands at x = its number in a box of 0 to `frames` - 1, with
/// the values 10 times its number. Its time steps are 100 apart, its times 0.5.
inline std::string dumpOf(int frames) {
    std::string text;
    std::string const end = std::to_string(frames > 1 ? frames - 1 : 1);
    for (int i = 0; i < frames; ++i) {
        std::string const x = std::to_string(i);
        text += "ITEM: TIME\n" + std::to_string(i / 2.0) + "\nITEM: TIMESTEP\n" + std::to_string(100 * i) +
                "\nITEM: NUMBER OF ATOMS\n2\nITEM: BOX BOUNDS pp pp pp\n0 " + end + "\n0 " + end + "\n0 " +
                end + "\nITEM: ATOMS id x y z q\n1 " + x + " 1 1 " + std::to_string(10 * i) + "\n2 1 1 0 5\n";
    }
    return text;
}

/// A triangle that moves from x = 0 to x = 4 within 2 seconds.
inline std::string const animatedGltf =
    R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[{"mesh":0,"name":"n"}],)"
    R"("animations":[{"name":"walk","channels":[{"sampler":0,"target":{"node":0,"path":"translation"}}],)"
    R"("samplers":[{"input":1,"output":2}]}],)"
    R"("meshes":[{"primitives":[{"attributes":{"POSITION":0}}]}],)"
    R"("accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3","min":[0,0,0],"max":[1,1,0]},)"
    R"({"bufferView":1,"componentType":5126,"count":2,"type":"SCALAR","min":[0],"max":[2]},)"
    R"({"bufferView":2,"componentType":5126,"count":2,"type":"VEC3"}],)"
    R"("bufferViews":[{"buffer":0,"byteOffset":0,"byteLength":36},{"buffer":0,"byteOffset":36,"byteLength":8},)"
    R"({"buffer":0,"byteOffset":44,"byteLength":24}],)"
    R"("buffers":[{"byteLength":68,"uri":"data:application/octet-stream;base64,)"
    "AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAAAAAAAAAAAEAAAAAAAAAAAAAAAAAAAIBAAAAAAAAAAAA="
    R"("}]})";

}  // namespace moving_files
