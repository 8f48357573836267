#include "viewport/live/Change.h"

#include "viewport/drawing/effects/EffectParameter.h"

#include <algorithm>
#include <tuple>

namespace vellum::viewport {

namespace {

// Compared member by member here: as values, options have no use for equality elsewhere.

template <class T>
bool same(T const& a, T const& b) {
    return a == b;
}

bool same(Vector3<double> const& a, Vector3<double> const& b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

bool same(Color4<float> const& a, Color4<float> const& b) {
    return a.r == b.r && a.g == b.g && a.b == b.b && a.a == b.a;
}

bool same(Box3<double> const& a, Box3<double> const& b) {
    return same(a.min, b.min) && same(a.max, b.max);
}

bool same(ValueRange const& a, ValueRange const& b) {
    return a.low == b.low && a.high == b.high;
}

bool same(LightSpec const& a, LightSpec const& b) {
    return a.azimuth == b.azimuth && a.elevation == b.elevation;
}

template <class T>
bool same(std::optional<T> const& a, std::optional<T> const& b) {
    return a.has_value() == b.has_value() && (!a || same(*a, *b));
}

bool sameCamera(CameraSpec const& a, CameraSpec const& b) {
    return a.view == b.view && a.projection == b.projection && same(a.position, b.position) &&
           same(a.focus, b.focus) && same(a.up, b.up) && same(a.azimuth, b.azimuth) &&
           same(a.elevation, b.elevation) && same(a.fieldOfView, b.fieldOfView) && same(a.height, b.height) &&
           a.zoom == b.zoom;
}

bool sameMesh(MeshStyle const& a, MeshStyle const& b) {
    auto const facts = [](MeshStyle const& s) {
        return std::tie(s.shading, s.normals, s.edges, s.edgesBlend, s.allEdges, s.connectivity,
                        s.wireframeBack, s.immediate, s.opacity, s.lineWidth);
    };
    return facts(a) == facts(b) && same(a.color, b.color);
}

bool samePicture(PictureOptions const& a, PictureOptions const& b) {
    auto const facts = [](PictureOptions const& p) {
        Explanations const& e = p.explanations;
        return std::make_tuple(p.gizmo, p.background.isTransparent, e.hasGrid, e.hasAxes, e.hasBar, e.hasBox,
                               e.hasSizes);
    };
    return facts(a) == facts(b) && same(a.background.top, b.background.top) &&
           same(a.background.bottom, b.background.bottom) && same(a.light, b.light);
}

bool sameParticles(ParticleOptions const& a, ParticleOptions const& b) {
    auto const facts = [](ParticleOptions const& p) {
        return std::tie(p.mode, p.channel, p.percent, p.size, p.colorMap, p.isLogarithmic, p.selection,
                        p.isWrapped, p.copies.e0, p.copies.e1, p.copies.e2);
    };
    return facts(a) == facts(b) && same(a.range, b.range) && same(a.clip, b.clip) &&
           same(a.colors.low, b.colors.low) && same(a.colors.high, b.colors.high) &&
           same(a.colors.above, b.colors.above);
}

/// By the texts of its parameters, of which there is one table.
bool sameEffect(std::optional<EffectSpec> const& a, std::optional<EffectSpec> const& b) {
    if (!a || !b || a->values.index() != b->values.index() || a->onlyModel != b->onlyModel) {
        return !a && !b;
    }
    return sameValues(a->values, b->values);
}

bool sameSubject(Options const& a, Options const& b) {
    // Whether a color is given decides whether values are shown.
    return sameParticles(a.particles, b.particles) && a.texture == b.texture && a.up == b.up &&
           a.mesh.importPreview == b.mesh.importPreview &&
           a.mesh.color.has_value() == b.mesh.color.has_value() && sameEffect(a.effect, b.effect);
}

bool sameFiles(Options const& a, Options const& b) {
    // Textures of a file are not read where an effect covers them.
    bool const needTextures = a.texture.empty() == b.texture.empty() &&
                              a.effect.has_value() == b.effect.has_value() &&
                              (!a.effect || a.effect->onlyModel == b.effect->onlyModel);
    return a.files == b.files && a.format == b.format && a.isSeries == b.isSeries && needTextures;
}

}  // namespace

Change changeBetween(Options const& before, Options const& after) {
    if (!sameFiles(before, after)) {
        return Change::FILES;
    }
    if (before.particles.frame != after.particles.frame || before.time != after.time) {
        return Change::FRAME;
    }
    if (!sameSubject(before, after)) {
        return Change::SUBJECT;
    }
    PictureOptions const& a = before.pictures.front();
    PictureOptions const& b = after.pictures.front();
    if (!sameMesh(before.mesh, after.mesh) || !samePicture(a, b) || before.transforms != after.transforms ||
        before.gpuMemory != after.gpuMemory) {
        return Change::LOOK;
    }
    return sameCamera(a.camera, b.camera) ? Change::NOTHING : Change::CAMERA;
}

}  // namespace vellum::viewport
