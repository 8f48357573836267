#include "viewport/program/idle_options.h"

#include "viewport/files/images/PictureFormat.h"

#include <algorithm>
#include <initializer_list>
#include <string>

namespace vellum::viewport {

namespace {

/// Collects the lines of one command line.
class Lines {
public:
    explicit Lines(Options const& options) : options(options) {}

    /// The names of given options, each once, with the reason.
    void add(std::initializer_list<char const*> names, std::string const& reason) {
        for (char const* const name : names) {
            if (options.given.count(name) != 0 && named.insert(name).second) {
                lines.push_back({"", std::string(name) + " has no effect: " + reason});
            }
        }
    }

    std::vector<Fault> const& found() const { return lines; }

private:
    Options const& options;
    std::set<std::string> named;
    std::vector<Fault> lines;
};

/// Why values have no colors.
char const* reasonOf(ParticleColoring coloring) {
    switch (coloring) {
    case ParticleColoring::KINDS:
        return "the colors show kinds, not values";
    case ParticleColoring::OWN:
        return "the particles have colors of their own";
    case ParticleColoring::NOTHING:
    case ParticleColoring::VALUES:
        break;
    }
    return "there are no values to be shown";
}

bool isAnyJpeg(Options const& options) {
    return std::any_of(options.pictures.begin(), options.pictures.end(), [](PictureOptions const& picture) {
        return pictureFormatOf(picture.out) == PictureFormat::JPEG;
    });
}

void addSea(Lines& lines) {
    char const* const reason = "the sea without files has a camera, lights and a sky of its own";
    lines.add({"--view", "--projection", "--camera-position", "--camera-focus", "--camera-up", "--azimuth",
               "--elevation", "--fov", "--camera-height", "--zoom", "--background", "--light", "--gizmo",
               "--no-grid", "--no-axes", "--up"},
              reason);
    lines.add({"--effect-param level", "--effect-param length"}, "nothing stands in the sea");
}

}  // namespace

std::vector<Fault> idleOptions(Options const& options, ShownKinds const& shown) {
    Lines lines(options);
    if (!shown.hasParticles) {
        lines.add({"--particles", "--percent", "--select", "--size-of-particles", "--wrap", "--replicate",
                   "--gpu-memory", "--no-box"},
                  "there are no particles");
        if (!options.isSeries) {
            lines.add({"--frame"}, "there are no particles, and no series of meshes");
        }
    }
    if (!shown.hasParticles && !shown.hasMeshValues) {
        if (!shown.areMeshValuesHidden) {
            lines.add({"--channel"},
                      shown.hasMeshes ? "no values of meshes are shown" : "there are no particles");
        }
        lines.add({"--range", "--log", "--colors", "--colormap", "--no-bar"},
                  shown.hasMeshes ? "no values of meshes are shown" : "there are no particles");
    } else if (shown.coloring != ParticleColoring::VALUES && !shown.hasMeshValues) {
        lines.add({"--range", "--log", "--colors", "--colormap"}, reasonOf(shown.coloring));
        if (shown.coloring != ParticleColoring::KINDS) {
            lines.add({"--no-bar"}, "colors stand for nothing that could be listed");
        }
    }
    if (!shown.hasAnimations && !shown.hasTimes) {
        lines.add({"--time"}, "the files hold neither an animation nor times");
    }
    if (!shown.hasMoving) {
        lines.add({"--frames"}, "no file holds several frames");
    }
    if (!shown.hasAnimations || !options.film.frames) {
        lines.add({"--fps"},
                  shown.hasAnimations ? "only --frames shows an animation" : "no mesh is animated");
    }
    if (!shown.hasMeshes) {
        lines.add({"--shading", "--mesh-color", "--opacity", "--edges", "--edges-blend", "--line-width",
                   "--normals", "--connectivity", "--texture", "--wireframe-back", "--import-preview",
                   "--immediate", "--import-timeout", "--import-memory"},
                  "there are no meshes");
        if (shown.hasParticles) {
            lines.add({"--light"}, "particles have lights of their own");
        }
    }
    if (options.hasOwnSea()) {
        addSea(lines);
    } else if (options.hasSurroundingSea()) {
        lines.add({"--background", "--no-grid"}, "the sea has a sky of its own, and covers the ground");
        lines.add({"--effect-param eye", "--effect-param tilt"}, "the camera is that of the files");
    } else if (options.effect && !options.effect->onlyModel) {
        lines.add({"--light"}, "the effect has lights of its own");
    } else if (options.effect && std::holds_alternative<OceanEffect>(options.effect->values)) {
        lines.add(
            {"--effect-param level", "--effect-param length", "--effect-param eye", "--effect-param tilt"},
            "the water is a mesh");
    }
    if (!isAnyJpeg(options)) {
        lines.add({"--quality"}, "only JPEG has a quality");
    }
    return lines.found();
}

}  // namespace vellum::viewport
