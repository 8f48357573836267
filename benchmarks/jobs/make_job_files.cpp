// Writes the files that the whole jobs read: one wavy surface in four formats, points in two, and a dump of
// many frames. The same sizes give the same bytes in every run.
//
//     vl_job_files FOLDER TRIANGLES POINTS FRAMES POINTS_OF_A_FRAME

#include "benchmarks/plain_scenes.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace vellum::benchmarks {
namespace {

/// A file that is written; the program ends with a message where the disk refuses it.
class File {
public:
    File(std::string const& folder, char const* name)
        : path(folder + "/" + name), stream(std::fopen(path.c_str(), "wb")) {
        if (stream == nullptr) {
            _fail();
        }
    }
    ~File() {
        if (std::fclose(stream) != 0) {
            _fail();
        }
    }
    File(File const&) = delete;
    File& operator=(File const&) = delete;

    /// Takes what fprintf() to the stream returns.
    void check(int written) const {
        if (written < 0) {
            _fail();
        }
    }
    void text(char const* words) { bytes(words, std::strlen(words)); }
    void bytes(void const* data, std::size_t count) {
        if (std::fwrite(data, 1, count, stream) != count) {
            _fail();
        }
    }

private:
    [[noreturn]] void _fail() const {
        std::perror(path.c_str());
        std::exit(1);
    }

    std::string path;

public:
    std::FILE* const stream;
};

void writePlyHeading(File& file, char const* format, PlainSurface const& surface) {
    file.check(
        std::fprintf(file.stream, "ply\nformat %s 1.0\nelement vertex %zu\n", format, surface.vertexCount()));
    file.text("property float x\nproperty float y\nproperty float z\n");
    file.check(std::fprintf(file.stream,
                            "element face %zu\nproperty list uchar int vertex_indices\nend_header\n",
                            surface.triangleCount()));
}

void writeBinaryPly(std::string const& folder, PlainSurface const& surface) {
    File file(folder, "surface.ply");
    writePlyHeading(file, "binary_little_endian", surface);
    file.bytes(surface.positions.data(), surface.positions.size() * sizeof(float));
    for (std::size_t i = 0; i < surface.corners.size(); i += 3) {
        unsigned char const three = 3;
        file.bytes(&three, 1);
        file.bytes(&surface.corners[i], 3 * sizeof(unsigned int));
    }
}

void writeTextPly(std::string const& folder, PlainSurface const& surface) {
    File file(folder, "surface_text.ply");
    writePlyHeading(file, "ascii", surface);
    for (std::size_t i = 0; i < surface.positions.size(); i += 3) {
        float const* const p = &surface.positions[i];
        file.check(std::fprintf(file.stream, "%.7g %.7g %.7g\n", double{p[0]}, double{p[1]}, double{p[2]}));
    }
    for (std::size_t i = 0; i < surface.corners.size(); i += 3) {
        file.check(std::fprintf(file.stream, "3 %u %u %u\n", surface.corners[i], surface.corners[i + 1],
                                surface.corners[i + 2]));
    }
}

void writeStl(std::string const& folder, PlainSurface const& surface) {
    File file(folder, "surface.stl");
    char const heading[80] = "a wavy surface";
    file.bytes(heading, sizeof heading);
    auto const count = static_cast<std::uint32_t>(surface.triangleCount());
    file.bytes(&count, sizeof count);
    for (std::size_t i = 0; i < surface.corners.size(); i += 3) {
        float facet[12] = {0, 0, 1};
        for (std::size_t corner = 0; corner < 3; ++corner) {
            std::memcpy(facet + 3 + corner * 3,
                        &surface.positions[std::size_t{surface.corners[i + corner]} * 3], 3 * sizeof(float));
        }
        std::uint16_t const attributes = 0;
        file.bytes(facet, sizeof facet);
        file.bytes(&attributes, sizeof attributes);
    }
}

void writeObj(std::string const& folder, char const* name, PlainSurface const& surface) {
    File file(folder, name);
    for (std::size_t i = 0; i < surface.positions.size(); i += 3) {
        float const* const p = &surface.positions[i];
        file.check(std::fprintf(file.stream, "v %.7g %.7g %.7g\n", double{p[0]}, double{p[1]}, double{p[2]}));
    }
    for (std::size_t i = 0; i < surface.corners.size(); i += 3) {
        file.check(std::fprintf(file.stream, "f %u %u %u\n", surface.corners[i] + 1,
                                surface.corners[i + 1] + 1, surface.corners[i + 2] + 1));
    }
}

void writePointPly(std::string const& folder, PlainPoints const& points) {
    File file(folder, "points.ply");
    file.check(std::fprintf(file.stream, "ply\nformat binary_little_endian 1.0\nelement vertex %zu\n",
                            points.count()));
    file.text("property float x\nproperty float y\nproperty float z\n");
    file.text("property float vx\nproperty float vy\nproperty float vz\nend_header\n");
    for (std::size_t i = 0; i < points.positions.size(); i += 3) {
        file.bytes(&points.positions[i], 3 * sizeof(float));
        file.bytes(&points.velocities[i], 3 * sizeof(float));
    }
}

/// A LAMMPS dump in which the points move along their velocities.
void writeDump(std::string const& folder, char const* name, PlainPoints const& points, int frames) {
    File file(folder, name);
    for (int frame = 0; frame < frames; ++frame) {
        file.check(std::fprintf(file.stream, "ITEM: TIMESTEP\n%d\nITEM: NUMBER OF ATOMS\n%zu\n", frame * 100,
                                points.count()));
        file.text("ITEM: BOX BOUNDS pp pp pp\n-1 1\n-1 1\n-1 1\nITEM: ATOMS id type x y z vx vy vz\n");
        double const time = 0.001 * frame;
        for (std::size_t i = 0; i < points.count(); ++i) {
            float const* const p = &points.positions[i * 3];
            float const* const v = &points.velocities[i * 3];
            file.check(std::fprintf(file.stream, "%zu %zu %.6g %.6g %.6g %.6g %.6g %.6g\n", i + 1, i % 3 + 1,
                                    p[0] + time * double{v[0]}, p[1] + time * double{v[1]},
                                    p[2] + time * double{v[2]}, double{v[0]}, double{v[1]}, double{v[2]}));
        }
    }
}

}  // namespace
}  // namespace vellum::benchmarks

int main(int count, char** words) {
    using namespace vellum::benchmarks;
    if (count != 6) {
        std::fputs("usage: vl_job_files FOLDER TRIANGLES POINTS FRAMES POINTS_OF_A_FRAME\n", stderr);
        return 2;
    }
    std::string const folder = words[1];
    auto const number = [words](int word) { return std::strtoul(words[word], nullptr, 10); };
    writeObj(folder, "small.obj", makePlainSurface(4));
    PlainSurface const surface = makePlainSurface(number(2));
    writeBinaryPly(folder, surface);
    writeTextPly(folder, surface);
    writeStl(folder, surface);
    writeObj(folder, "surface.obj", surface);
    PlainPoints const points = makePlainPoints(number(3));
    writePointPly(folder, points);
    writeDump(folder, "points.lammpstrj", points, 1);
    writeDump(folder, "frames.lammpstrj", makePlainPoints(number(5)), static_cast<int>(number(4)));
    return 0;
}
