#include "viewport/gallery/effect_inputs.h"

#include "foundation/geometry/constants.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include <png.h>

namespace vellum::gallery {

namespace {

struct Point {
    double x;
    double y;
    double z;
};

/// Writes one OBJ file.
class Model {
public:
    explicit Model(std::string const& path) : file(path + ".obj") {}

    bool isWritten() {
        file.close();
        return file.good();
    }

    void use(std::string const& library, std::string const& material) {
        if (!hasLibrary) {
            file << "mtllib " << library << '\n';
            hasLibrary = true;
        }
        file << "usemtl " << material << '\n';
    }

    /// Four corners counter-clockwise, shared with no other square.
    void addSquare(Point const& a, Point const& b, Point const& c, Point const& d) {
        for (Point const& p : {a, b, c, d}) {
            file << "v " << p.x << ' ' << p.y << ' ' << p.z << '\n';
        }
        count += 4;
        file << "f " << count - 3 << ' ' << count - 2 << ' ' << count - 1 << ' ' << count << '\n';
    }

    void addBox(Point const& low, Point const& high) {
        Point const& a = low;
        Point const& b = high;
        addSquare({a.x, a.y, b.z}, {b.x, a.y, b.z}, {b.x, b.y, b.z}, {a.x, b.y, b.z});
        addSquare({b.x, a.y, a.z}, {a.x, a.y, a.z}, {a.x, b.y, a.z}, {b.x, b.y, a.z});
        addSquare({b.x, a.y, b.z}, {b.x, a.y, a.z}, {b.x, b.y, a.z}, {b.x, b.y, b.z});
        addSquare({a.x, a.y, a.z}, {a.x, a.y, b.z}, {a.x, b.y, b.z}, {a.x, b.y, a.z});
        addSquare({a.x, b.y, b.z}, {b.x, b.y, b.z}, {b.x, b.y, a.z}, {a.x, b.y, a.z});
        addSquare({a.x, a.y, a.z}, {b.x, a.y, a.z}, {b.x, a.y, b.z}, {a.x, a.y, b.z});
    }

    /// The surface of a profile that is turned about a vertical axis. The profile runs from t = 0 at the top
    /// to t = 1 at the bottom; `radius` and `height` give its points.
    void addTurned(Point const& foot, std::function<double(double)> const& radius,
                   std::function<double(double)> const& height) {
        constexpr unsigned int RINGS = 96;
        constexpr unsigned int SIDES = 128;
        constexpr double STEP = 1e-4;
        unsigned int const first = count + 1;
        for (unsigned int ring = 0; ring <= RINGS; ++ring) {
            double const t = std::clamp(static_cast<double>(ring) / RINGS, 0.0005, 0.9995);
            double const r = radius(t);
            double const outwards = height(t - STEP) - height(t + STEP);
            double const upwards = radius(t + STEP) - radius(t - STEP);
            double const length = std::hypot(outwards, upwards);
            for (unsigned int side = 0; side < SIDES; ++side) {
                double const angle = 2 * constants::d::PI * side / SIDES;
                double const c = std::cos(angle);
                double const s = std::sin(angle);
                file << "v " << foot.x + r * c << ' ' << foot.y + height(t) << ' ' << foot.z + r * s << '\n';
                file << "vn " << outwards / length * c << ' ' << upwards / length << ' '
                     << outwards / length * s << '\n';
                ++count;
            }
        }
        auto const corner = [&](unsigned int ring, unsigned int side) {
            std::string const n = std::to_string(first + ring * SIDES + side % SIDES);
            // Vertices and normals come in pairs, so that both have the same number.
            return " " + n + "//" + n;
        };
        for (unsigned int ring = 0; ring < RINGS; ++ring) {
            for (unsigned int side = 0; side < SIDES; ++side) {
                file << 'f' << corner(ring, side) << corner(ring, side + 1) << corner(ring + 1, side + 1)
                     << corner(ring + 1, side) << '\n';
            }
        }
    }

    /// A square plate from 0 to 1 in the plane of x and z, with x and z as texture coordinates.
    void addPlate(unsigned int parts) {
        for (unsigned int row = 0; row <= parts; ++row) {
            for (unsigned int column = 0; column <= parts; ++column) {
                double const x = static_cast<double>(column) / parts;
                double const z = static_cast<double>(row) / parts;
                file << "v " << x << " 0 " << z << "\nvt " << x << ' ' << z << '\n';
            }
        }
        file << "vn 0 1 0\n";
        auto const corner = [&](unsigned int row, unsigned int column) {
            std::string const n = std::to_string(row * (parts + 1) + column + 1);
            return " " + n + "/" + n + "/1";
        };
        for (unsigned int row = 0; row < parts; ++row) {
            for (unsigned int column = 0; column < parts; ++column) {
                file << 'f' << corner(row, column) << corner(row + 1, column) << corner(row + 1, column + 1)
                     << corner(row, column + 1) << '\n';
            }
        }
    }

private:
    std::ofstream file;
    unsigned int count = 0;  // of vertices
    bool hasLibrary = false;
};

bool writeMaterials(std::string const& folder) {
    std::ofstream file(folder + "/room.mtl");
    struct Material {
        char const* name;
        double red;
        double green;
        double blue;
    };
    for (Material const& m : {Material{"light", 0.86, 0.84, 0.80},
                              {"dark", 0.16, 0.18, 0.22},
                              {"red", 0.80, 0.16, 0.12},
                              {"yellow", 0.93, 0.70, 0.14},
                              {"green", 0.20, 0.55, 0.28},
                              {"blue", 0.16, 0.34, 0.75}}) {
        file << "newmtl " << m.name << "\nKd " << m.red << ' ' << m.green << ' ' << m.blue << '\n';
    }
    file.close();
    return file.good();
}

bool writeRoom(std::string const& folder) {
    Model model(folder + "/room");
    constexpr int TILES = 5;
    for (char const* const color : {"light", "dark"}) {
        model.use("room.mtl", color);
        for (int row = -TILES; row < TILES; ++row) {
            for (int column = -TILES; column < TILES; ++column) {
                bool const isLight = (row + column) % 2 == 0;
                if (isLight == (color == std::string("light"))) {
                    double const x = column;
                    double const z = row;
                    model.addSquare({x, 0, z}, {x, 0, z + 1}, {x + 1, 0, z + 1}, {x + 1, 0, z});
                }
            }
        }
    }
    model.use("room.mtl", "red");
    model.addBox({-2.6, 0, -3.4}, {-1.0, 2.6, -1.8});
    model.use("room.mtl", "yellow");
    model.addBox({-4.6, 0, 0.2}, {-3.4, 1.4, 1.4});
    model.use("room.mtl", "green");
    model.addBox({0.4, 0, -4.6}, {1.8, 1.5, -3.4});
    model.use("room.mtl", "blue");
    model.addBox({-4.4, 0, -3.6}, {-3.2, 3.6, -2.4});
    return model.isWritten();
}

bool writeGlass(std::string const& folder) {
    Model model(folder + "/glass");
    model.addTurned(
        {0.2, 0, 0.6}, [](double t) { return 1.25 * std::sin(constants::d::PI * t); },
        [](double t) { return 1.25 + 1.25 * std::cos(constants::d::PI * t); });
    // A drop with a long neck.
    model.addTurned(
        {3.2, 0, -1.6},
        [](double t) {
            return 0.95 * std::sin(constants::d::PI * t) * (0.18 + 0.82 * std::pow(t, 1.6)) * 1.25;
        },
        [](double t) { return 3.3 * (0.5 + 0.5 * std::cos(constants::d::PI * t)); });
    return model.isWritten();
}

bool writePlate(std::string const& path, unsigned int parts) {
    Model model(path);
    model.addPlate(parts);
    return model.isWritten();
}

// == The land ==

double random(int x, int y) {
    auto n = static_cast<std::uint32_t>(x) * 374761393U + static_cast<std::uint32_t>(y) * 668265263U;
    n = (n ^ n >> 13U) * 1274126177U;
    return static_cast<double>((n ^ n >> 16U) & 0xFFFFFFU) / 0xFFFFFF;
}

double noise(double x, double y) {
    int const column = static_cast<int>(std::floor(x));
    int const row = static_cast<int>(std::floor(y));
    auto const fade = [](double t) { return t * t * t * (t * (6 * t - 15) + 10); };
    double const u = fade(x - column);
    double const v = fade(y - row);
    double const low = random(column, row) * (1 - u) + random(column + 1, row) * u;
    double const high = random(column, row + 1) * (1 - u) + random(column + 1, row + 1) * u;
    return low * (1 - v) + high * v;
}

/// Height of the mountains, 0 to 1; 0 at the borders of the plate.
double landHeight(double x, double z) {
    double sum = 0;
    double part = 0.5;
    double frequency = 3.2;
    double ridge = 1;
    for (int octave = 0; octave < 6; ++octave) {
        double const n =
            1 - std::abs(2 * noise(x * frequency + 17.0 * octave, z * frequency + 5.0 * octave) - 1);
        ridge = std::clamp(n * n * (0.35 + 0.75 * ridge), 0.0, 1.0);
        sum += part * ridge;
        part *= 0.48;
        frequency *= 2.03;
    }
    auto const border = [](double t) {
        double const s = std::clamp(std::min(t, 1 - t) / 0.22, 0.0, 1.0);
        return s * s * (3 - 2 * s);
    };
    return std::clamp(sum * border(x) * border(z) * 1.15, 0.0, 1.0);
}

/// Writes the map: the height as displacement along y, half gray (no displacement) for x and z. 16 bits per
/// channel, because 8 bits would show steps.
bool writeLand(std::string const& path) {
    constexpr unsigned int SIZE = 512;
    std::vector<std::uint16_t> texels;
    for (unsigned int row = 0; row < SIZE; ++row) {
        for (unsigned int column = 0; column < SIZE; ++column) {
            double const height = landHeight((column + 0.5) / SIZE, 1 - (row + 0.5) / SIZE);
            texels.insert(texels.end(), {32768, static_cast<std::uint16_t>(32768 + 32767 * height), 32768});
        }
    }
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = SIZE;
    image.height = SIZE;
    image.format = PNG_FORMAT_LINEAR_RGB;
    return png_image_write_to_file(&image, path.c_str(), 0, texels.data(), 0, nullptr) != 0;
}

}  // namespace

std::optional<viewport::Fault> writeEffectInputs(std::string const& folder) {
    bool const isDone = writeMaterials(folder) && writeRoom(folder) && writeGlass(folder) &&
                        writePlate(folder + "/plate", 256) && writePlate(folder + "/coarse_plate", 48) &&
                        writeLand(folder + "/land.png");
    if (!isDone) {
        return viewport::Fault{folder, "cannot be written to"};
    }
    return std::nullopt;
}

}  // namespace vellum::gallery
