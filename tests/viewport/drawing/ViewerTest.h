#pragma once

#include "Core_RL_GL.h"
#include "tests/gl_spy/GlTest.h"
#include "viewport/drawing/TiledPicture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <memory>
#include <string>

/// Pictures of small scenes, for tests of what is drawn.
namespace vellum::viewport {

/// A tile that fits the context of the fixture.
inline constexpr Tiling oneTile{2, 112, 112, 8};
static_assert(oneTile.width + 2 * oneTile.margin == gl_spy::GlTest::width / 2, "fills the context");

/// A cube from -1 to 1 in a color of its own.
inline MeshData cube(std::string const& name, Vector3<double> const& place, Color4<float> const& color) {
    MeshData mesh;
    mesh.name = name;
    for (unsigned int i = 0; i < 8; ++i) {
        Vector3<double> const corner{(i & 1) != 0 ? 1.0 : -1.0, (i & 2) != 0 ? 1.0 : -1.0,
                                     (i & 4) != 0 ? 1.0 : -1.0};
        mesh.positions.push_back(corner + place);
        mesh.normals.push_back(convert<float>(normalized(corner)));
        mesh.colors.push_back(color);
    }
    mesh.triangles = {{0, 4, 6}, {0, 6, 2}, {1, 3, 7}, {1, 7, 5}, {0, 1, 5}, {0, 5, 4},
                      {2, 6, 7}, {2, 7, 3}, {0, 2, 3}, {0, 3, 1}, {4, 5, 7}, {4, 7, 6}};
    return mesh;
}

/// A square from -1 to 1 that shows a texture of four colors: red and green below, blue and white above.
inline MeshData texturedSquare() {
    MeshData mesh;
    mesh.name = "square.obj";
    mesh.positions = {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};
    mesh.triangles = {{0, 1, 2}, {0, 2, 3}};
    mesh.normals.assign(4, {0, 0, 1});
    mesh.colors.assign(4, {1, 1, 1, 1});
    mesh.textureCoordinates = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    mesh.triangleMaterials.assign(2, 0);
    auto const image = std::make_shared<VL_Image>();
    image->create(2, 2, 3, 8);
    constexpr unsigned char texels[] = {255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255};
    std::copy(std::begin(texels), std::end(texels), image->getBuffer());
    mesh.materials.resize(1);
    mesh.materials[0].image = image;
    return mesh;
}

/// A square from -1 to 1 that faces the viewer of the front view.
inline MeshData square(double z, Color4<float> const& color) {
    MeshData mesh = texturedSquare();
    for (Vector3<double>& p : mesh.positions) {
        p.z = z;
    }
    mesh.colors.assign(4, color);
    mesh.materials[0] = Material();
    return mesh;
}

inline constexpr Color4<float> orange{1.0F, 0.45F, 0.0F, 1};

inline std::string textOf(std::optional<Picked> const& picked) {
    return picked ? std::to_string(picked->name) + " " + picked->owner : "nothing";
}

class ViewerTest : public gl_spy::GlTest {
protected:
    void SetUp() override {
        GlTest::SetUp();
        layer.reset(new Core_RL_GL);
    }

    Picture draw(Tiling const& tiling = oneTile) {
        Viewer viewer(*layer, scene, style);
        Result<Picture> picture = TiledPicture(size, tiling).draw(viewer, *layer, context());
        EXPECT_TRUE(picture.isOk());
        return picture.isOk() ? picture.value() : Picture{};
    }

    std::string pick(int const& x, int const& y) {
        Viewer viewer(*layer, scene, style);
        return textOf(viewer.pick(size, {x, y}));
    }

    Scene scene{{cube("cube.obj", {0, 0, 0}, orange)}};
    PictureSize size{112, 112};
    ViewStyle style;
    std::unique_ptr<Core_RL> layer;
};

inline unsigned char const* at(Picture const& picture, int const& x, int const& y) {
    return picture.pixels.data() + 4 * (y * picture.width + x);
}

}  // namespace vellum::viewport
