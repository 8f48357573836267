#include "viewport/drawing/effects/EffectSubject.h"

#include "toolkit/StageReport.h"
#include "viewport/files/images/TextureFile.h"
#include "viewport/scene/ModelParts.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <utility>

namespace vellum::viewport {

namespace {

using Point = Vector3<double>;

/// What all effects start from.
struct Source {
    EffectSpec const& spec;
    std::vector<MeshData> const& meshes;
    Scene const& scene;
    double aspect;
};

// == Frames ==

Matrix4<double> movedAndScaled(double factor, Point const& move) {
    return {{factor, 0, 0, 0, 0, factor, 0, 0, 0, 0, factor, 0, move.x, move.y, move.z, 1}};
}

/// From the frame of the meshes, where they stand as in the scene, to the scene.
Matrix4<double> toScene(Placement const& place, Scene const& scene) {
    return movedAndScaled(scene.unitsPerFileUnit() / place.scale, scene.placeToScene(place.center));
}

Placement inRadii(Scene const& scene) {
    double const perRadius = scene.unitsPerFileUnit() / Scene::RADIUS;
    return {scene.placeToFile({0, 0, 0}), perRadius, Turn(scene.up())};
}

/// \param tiles how often a map covers the longest side of the box
Placement inTiles(Scene const& scene, Box3<double> const& box, double tiles) {
    Point const extent = box.max - box.min;
    double const side = std::max({extent.x, extent.y, extent.z});
    return {box.min * 0.5 + box.max * 0.5, side > 0 ? tiles / side : 1, Turn(scene.up())};
}

// == Models ==

EffectSubject::Model toModel(MeshData const& mesh, Placement const& place, Scene const& scene) {
    // Parts have texture coordinates only if there is a texture for them; effects always need coordinates.
    static auto const anyTexture = std::make_shared<VL_Image>();
    std::vector<ModelPart> parts = makeParts(mesh, place, anyTexture, PartImports::DROPPED);
    EffectSubject::Model model{{}, toScene(place, scene)};
    for (ModelPart& part : parts) {
        model.meshes.push_back(std::move(part.mesh));
    }
    return model;
}

/// The mesh as an ocean: flat, with texture coordinates that follow from the places.
MeshData asOcean(MeshData mesh, double patch, UpAxis up) {
    Turn const turn(up);
    mesh.normals.assign(mesh.positions.size(), turn.back(Vector3<float>{0, 1, 0}));
    mesh.textureCoordinates.resize(mesh.positions.size());
    std::transform(
        mesh.positions.begin(), mesh.positions.end(), mesh.textureCoordinates.begin(),
        [&](Point const& place) {
            Point const p = turn(place);
            return Vector2<float>{static_cast<float>(p.z / patch), static_cast<float>(-p.x / patch)};
        });
    return mesh;
}

/// The subject of the meshes that the effect covers.
/// \param toModel makes a model of a mesh.
template <class ToModel>
Result<EffectSubject> subjectOf(Source const& source, ToModel const& toModel) {
    EffectSubject subject;
    for (std::size_t i = 0; i < source.meshes.size(); ++i) {
        if (source.spec.covers(i)) {
            subject.models.push_back(toModel(source.meshes[i]));
        }
    }
    if (subject.models.empty()) {
        return Fault{"", "there is no mesh to draw with the effect"};
    }
    return subject;
}

Result<EffectSubject> subjectInRadii(Source const& source) {
    Placement const place = inRadii(source.scene);
    return subjectOf(source, [&](MeshData const& mesh) { return toModel(mesh, place, source.scene); });
}

// == Pictures ==

bool isPowerOfTwo(unsigned int number) {
    return number != 0 && (number & (number - 1)) == 0;
}

/// The fault of a picture file that an effect reads itself; none where the path is empty.
std::optional<Fault> pictureFault(std::string const& path) {
    if (path.empty()) {
        return std::nullopt;
    }
    Result<std::shared_ptr<VL_Image const>> const image = readTexture(path);
    return image.isOk() ? std::nullopt : std::optional<Fault>(image.fault());
}

/// The same of a map, whose sides are restricted.
std::optional<Fault> mapFault(std::string const& path) {
    if (path.empty()) {
        return std::nullopt;
    }
    Result<std::shared_ptr<VL_Image const>> const image = readTexture(path);
    if (!image.isOk()) {
        return image.fault();
    }
    unsigned int const width = image.value()->width();
    unsigned int const height = image.value()->height();
    if (!isPowerOfTwo(width) || !isPowerOfTwo(height)) {
        return Fault{path, "is " + std::to_string(width) + "x" + std::to_string(height) +
                               " pixels; the sides of a map must be powers of two"};
    }
    return std::nullopt;
}

// == The sea ==

/// The sea around the things of a scene.
SurroundingSea seaAround(Scene const& scene, OceanEffect const& effect, OceanSpectrum const& spectrum) {
    Box3<double> const& box = scene.box();
    double const longest = std::max({box.max.x - box.min.x, box.max.y - box.min.y, box.max.z - box.min.z});
    double const extent = longest > 0 ? longest : Scene::RADIUS;
    double const unitsPerMeter = effect.length > 0 ? extent / effect.length : scene.unitsPerFileUnit();
    return SurroundingSea({box, unitsPerMeter, effect.level, effect.sea.patch,
                           static_cast<double>(effect.sun.x), static_cast<double>(effect.sun.y)},
                          spectrum.surface(effect.time));
}

/// The fault of a viewer whose eye is in the water.
std::optional<Fault> underWater(OceanEffect const& effect, OceanSpectrum const& spectrum) {
    double const water = highestWater(spectrum.surface(effect.time), effect.sea.patch, {0, 0});
    if (effect.eyeHeight > water) {
        return std::nullopt;
    }
    char height[32];
    std::snprintf(height, sizeof height, "%.1f", water);
    return Fault{"", std::string("--effect-param: eye: the viewer is under water, which is ") + height +
                         " meters high there at this time"};
}

// == One function for each effect ==

Result<EffectSubject> prepareEffect(DisplacementEffect const& effect, Source const& source) {
    for (std::string const& map : {effect.map, effect.normals}) {
        if (std::optional<Fault> const fault = mapFault(map)) {
            return *fault;
        }
    }
    return subjectOf(source, [&](MeshData const& mesh) {
        return toModel(mesh, inTiles(source.scene, mesh.box(), effect.tile.x), source.scene);
    });
}

Result<EffectSubject> prepareEffect(OceanEffect const& effect, Source const& source) {
    if (std::optional<Fault> const fault = effect.sea.firstFault()) {
        return *fault;
    }
    OceanSpectrum const spectrum(effect.sea);
    Sea sea{OceanMap::of(spectrum, effect.time), static_cast<float>(effect.sea.patch), std::nullopt,
            std::nullopt};
    if (sea.map.image.width() == 0) {
        return Fault{"", "there is not enough memory for the sea"};
    }
    auto const unit = static_cast<double>(sea.map.unit);
    if (source.scene.models().empty() && source.scene.clouds().empty()) {
        sea.scene.emplace(OceanScene::View{effect.eyeHeight, effect.tiltDegrees, effect.sun.x, effect.sun.y,
                                           source.aspect});
        EffectSubject::Model water{{}, movedAndScaled(unit, {0, 0, 0})};
        water.meshes.push_back(sea.scene->water(unit, effect.sea.patch));
        EffectSubject subject;
        subject.models.push_back(std::move(water));
        subject.sea = std::move(sea);
        subject.misfit = underWater(effect, spectrum);
        return subject;
    }
    if (source.spec.isSea()) {
        sea.around.emplace(seaAround(source.scene, effect, spectrum));
        EffectSubject subject;
        subject.sea = std::move(sea);
        return subject;
    }
    Placement const place{{0, 0, 0}, 1 / unit, Turn(source.scene.up())};
    Result<EffectSubject> subject = subjectOf(source, [&](MeshData const& mesh) {
        return toModel(asOcean(mesh, static_cast<double>(sea.patch), source.scene.up()), place, source.scene);
    });
    if (subject.isOk()) {
        subject.value().sea = std::move(sea);
    }
    return subject;
}

Result<EffectSubject> prepareEffect(GlassEffect const& effect, Source const& source) {
    if (std::optional<Fault> const fault = pictureFault(effect.environment)) {
        return *fault;
    }
    return subjectInRadii(source);
}

Result<EffectSubject> prepareEffect(ScatteringEffect const& /*effect*/, Source const& source) {
    return subjectInRadii(source);
}

Result<EffectSubject> prepareEffect(CustomEffect const& effect, Source const& source) {
    for (std::string const& shader : {effect.vertexShader, effect.fragmentShader, effect.geometryShader}) {
        std::optional<std::string> const fault =
            shader.empty() ? std::nullopt : toolkit::stageFileFault(shader);
        if (fault) {
            return Fault{shader, *fault};
        }
    }
    for (std::string const& texture : effect.textures) {
        if (std::optional<Fault> const fault = pictureFault(texture)) {
            return *fault;
        }
    }
    return subjectInRadii(source);
}

}  // namespace

Result<EffectSubject> EffectSubject::prepare(EffectSpec const& spec, std::vector<MeshData> const& meshes,
                                             Scene const& scene, double aspect) {
    Source const source{spec, meshes, scene, aspect};
    return std::visit([&source](auto const& effect) { return prepareEffect(effect, source); }, spec.values);
}

}  // namespace vellum::viewport
