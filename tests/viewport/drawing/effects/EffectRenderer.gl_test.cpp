#include "viewport/drawing/effects/EffectRenderer.h"

#include "tests/gl_spy/GlTest.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/attribute_state.h"
#include "tests/viewport/drawing/ViewerTest.h"
#include "viewport/drawing/Viewer.h"
#include "viewport/drawing/layer/GlewStart.h"
#include "viewport/files/images/Picture.h"

#include <gmock/gmock.h>

#include <cmath>
#include <memory>

#include <GL/glew.h>

using namespace vellum;
using namespace vellum::viewport;
using testing::AnyOf;
using testing::Each;
using testing::IsEmpty;

namespace {

MeshData tetrahedron() {
    MeshData mesh;
    mesh.name = "tetrahedron.obj";
    mesh.positions = {{1, 1, 1}, {-1, -1, 1}, {-1, 1, -1}, {1, -1, -1}};
    mesh.triangles = {{0, 2, 1}, {0, 1, 3}, {0, 3, 2}, {1, 2, 3}};
    for (Vector3<double> const& p : mesh.positions) {
        mesh.normals.push_back(convert<float>(normalized(p)));
    }
    mesh.colors.assign(4, {1, 1, 1, 1});
    return mesh;
}

OceanEffect smallOcean() {
    OceanEffect ocean;
    ocean.sea.size = 16;
    return ocean;
}

/// Where the arrays of the last mesh were. Mesh renderers leave that behind; the arrays themselves are off.
MATCHER(isOfArrays, "") {
    return std::string(arg).find("_ARRAY_") != std::string::npos;
}

/// What the layer sets anew with each push and leaves as it is when there is nothing to pop to.
MATCHER(isOfTheLayer, "") {
    return std::string(arg).find("GL_BLEND_") == 0 || std::string(arg) == "GL_DEPTH_FUNC";
}

/// A red cube with a sea about it.
struct CubeInTheSea {
    CubeInTheSea() {
        Result<EffectSubject> subject = EffectSubject::prepare(spec, meshes, scene, 1);
        if (subject.isOk()) {
            effect = std::make_unique<EffectRenderer>(*layer, spec, MeshStyle(), std::move(subject.value()));
        }
    }

    std::unique_ptr<toolkit::Layer> layer = std::make_unique<toolkit::Layer>();
    EffectSpec spec{smallOcean(), std::nullopt};
    std::vector<MeshData> meshes{cube("cube.obj", {0, 0, 0}, {1, 0, 0, 1})};
    Scene scene{meshes};
    std::unique_ptr<EffectRenderer> effect;  // null: it could not be prepared
};

class EffectRenderer_gl_test : public gl_spy::GlTest {
protected:
    void SetUp() override {
        GlTest::SetUp();
        ASSERT_FALSE(startGlew().has_value());
    }

    TemporaryFolder folder;
};

}  // namespace

TEST_F(EffectRenderer_gl_test, drawingLeavesTheStateAsItWas) {
    Picture map{4, 4, std::vector<unsigned char>(64, 128)};
    ASSERT_FALSE(map.savePng(folder.file("map.png")));
    std::string const fragment =
        folder.write("green.frag", "void main() { gl_FragColor = vec4(0.0, 1.0, 0.0, 1.0); }");
    DisplacementEffect displaced;
    displaced.map = folder.file("map.png");
    DisplacementEffect tessellated = displaced;
    tessellated.tessellate = true;
    ScatteringEffect scattering;
    scattering.lights.count = 2;
    CustomEffect custom;
    custom.grabsFrameBuffer = true;
    custom.fragmentShader = fragment;
    struct Row {
        char const* name;
        EffectValues values;
    };
    std::vector<MeshData> const meshes{tetrahedron()};
    Scene const scene(meshes);
    for (Row const& row : {Row{"displacement", displaced}, Row{"displacement, tessellated", tessellated},
                           Row{"ocean", smallOcean()}, Row{"glass", GlassEffect()},
                           Row{"scattering", scattering}, Row{"custom", custom}}) {
        SCOPED_TRACE(row.name);
        auto const layer = std::make_unique<toolkit::Layer>();
        EffectSpec const spec{row.values, 0};
        Result<EffectSubject> subject = EffectSubject::prepare(spec, meshes, scene, 1);
        ASSERT_TRUE(subject.isOk()) << subject.fault().line();
        EffectRenderer effect(*layer, spec, MeshStyle(), std::move(subject.value()));
        EXPECT_THAT(effect.notes(), IsEmpty());
        EXPECT_TRUE(effect.covers(0));
        EXPECT_EQ(effect.ownScene(), nullptr);
        layer->pushColor({0.1F, 0.2F, 0.3F, 1});
        for (int pass = 0; pass < 2; ++pass) {
            AttributeState const before;
            effect.draw();
            AttributeState const after;
            EXPECT_THAT(before.namesThatDiffer(after), Each(isOfArrays())) << before.differences(after);
        }
        layer->popColor(1);
    }
}

TEST_F(EffectRenderer_gl_test, theSeaHasASceneOfItsOwnAndLeavesTheStateAsItWas) {
    auto const layer = std::make_unique<toolkit::Layer>();
    EffectSpec const spec{smallOcean(), std::nullopt};
    Scene const scene({});
    Result<EffectSubject> subject = EffectSubject::prepare(spec, {}, scene, 1);
    ASSERT_TRUE(subject.isOk());
    EffectRenderer effect(*layer, spec, MeshStyle(), std::move(subject.value()));
    ASSERT_NE(effect.ownScene(), nullptr);
    Camera_RL_GL camera;
    effect.ownScene()->placeCamera(camera);
    camera.updateProjectionMatrix();
    camera.updateModelMatrix();
    AttributeState const before;
    effect.ownScene()->drawSky(*layer);
    effect.draw();
    effect.ownScene()->drawHaze(*layer);
    AttributeState const after;
    EXPECT_THAT(before.namesThatDiffer(after), Each(AnyOf(isOfArrays(), isOfTheLayer())))
        << before.differences(after);
}

TEST_F(EffectRenderer_gl_test, theSurroundingSeaLeavesTheStateAsItWas) {
    CubeInTheSea const subject;
    ASSERT_NE(subject.effect, nullptr);
    Scene const& scene = subject.scene;
    EffectRenderer& effect = *subject.effect;
    auto const& layer = subject.layer;
    SurroundingSea const* const sea = effect.surroundingSea();
    ASSERT_NE(sea, nullptr);
    EXPECT_EQ(effect.ownScene(), nullptr);
    EXPECT_FALSE(effect.covers(0)) << "the cube is drawn as ever";
    for (toolkit::ViewKind const kind : {toolkit::ViewKind::PERSPECTIVE, toolkit::ViewKind::FRONT}) {
        SCOPED_TRACE(static_cast<int>(kind));
        ViewStyle style;
        style.camera.view = kind;
        ViewLayout layout = ViewLayout::of(scene, style, nullptr, {64, 48}, sea);
        ASSERT_FALSE(layout.fault);
        SeaView const view = layout.camera.seaView({64, 48});
        layout.camera.load(Region::whole({64, 48}));
        effect.frameSea(view);
        AttributeState const before;
        sea->drawSky(*layer, view);
        effect.draw();
        sea->drawHaze(*layer, view);
        AttributeState const after;
        EXPECT_THAT(before.namesThatDiffer(after), Each(AnyOf(isOfArrays(), isOfTheLayer())))
            << before.differences(after);
    }
}

TEST_F(EffectRenderer_gl_test, theLowerPartOfThingsIsUnderWater) {
    constexpr PictureSize size{64, 64};
    auto const layer = std::make_unique<toolkit::Layer>();
    OceanEffect ocean = smallOcean();
    ocean.sea.windSpeed = 0.5;  // ripples
    ocean.level = 0.5;
    EffectSpec const spec{ocean, std::nullopt};
    std::vector<MeshData> const meshes{cube("cube.obj", {0, 0, 0}, {1, 0, 0, 1})};
    Scene const scene(meshes);
    for (toolkit::ViewKind const kind :
         {toolkit::ViewKind::PERSPECTIVE, toolkit::ViewKind::FRONT, toolkit::ViewKind::TOP}) {
        SCOPED_TRACE(static_cast<int>(kind));
        Result<EffectSubject> subject = EffectSubject::prepare(spec, meshes, scene, 1);
        ASSERT_TRUE(subject.isOk());
        EffectRenderer effect(*layer, spec, MeshStyle(), std::move(subject.value()));
        ViewStyle style;
        style.camera.view = kind;
        style.explanations.hasAxes = false;
        if (kind == toolkit::ViewKind::PERSPECTIVE) {
            style.camera.azimuth = 0;
            style.camera.elevation = 10;
        }
        Viewer viewer(*layer, scene, style, &effect);
        ASSERT_FALSE(viewer.cameraFault(size));
        glViewport(0, 0, size.width, size.height);
        viewer.draw(size);
        auto const isRed = [&](int x, int fromTop) {
            unsigned char c[4];
            glReadPixels(x, size.height - 1 - fromTop, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, c);
            return c[0] > 2 * c[2];
        };
        EXPECT_TRUE(isRed(32, 24)) << "above the water";
        EXPECT_FALSE(isRed(2, 62)) << "water";
        EXPECT_FALSE(isRed(62, 2)) << "sky, or water";
        EXPECT_EQ(isRed(32, 52), kind == toolkit::ViewKind::TOP) << "below the water";
        EXPECT_TRUE(viewer.pick(size, {32, 24}).has_value());
        EXPECT_EQ(viewer.pick(size, {32, 52}).has_value(), kind == toolkit::ViewKind::TOP);

        glViewport(0, 0, size.width, size.height);
        viewer.drawDepths(size, Region::whole(size), 1);
        GLfloat depth = 1;
        glReadPixels(2, 2, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
        EXPECT_LT(depth, 1) << "water has a depth";
    }
}

TEST_F(EffectRenderer_gl_test, aCameraUnderWaterIsAFault) {
    CubeInTheSea const subject;
    ASSERT_NE(subject.effect, nullptr);
    Scene const& scene = subject.scene;
    EffectRenderer& effect = *subject.effect;
    auto const& layer = subject.layer;
    ViewStyle style;
    style.camera.position = {5, -3, 5};
    std::optional<Fault> const deep = Viewer(*layer, scene, style, &effect).cameraFault({64, 48});
    ASSERT_TRUE(deep.has_value());
    EXPECT_THAT(deep->message, testing::HasSubstr("under water"));
    style.camera.position = {5, 3, 5};
    EXPECT_FALSE(Viewer(*layer, scene, style, &effect).cameraFault({64, 48}));
    style.camera = {toolkit::ViewKind::BOTTOM};
    EXPECT_TRUE(Viewer(*layer, scene, style, &effect).cameraFault({64, 48}));
}

// == Coverage ==

TEST(EffectSpec, coversAllModelsOrTheOneThatIsNamed) {
    EXPECT_TRUE((EffectSpec{GlassEffect(), std::nullopt}).covers(3));
    EXPECT_TRUE((EffectSpec{GlassEffect(), 3}).covers(3));
    EXPECT_FALSE((EffectSpec{GlassEffect(), 3}).covers(2));
    EXPECT_FALSE((EffectSpec{OceanEffect(), std::nullopt}).covers(0)) << "things stand in the sea";
    EXPECT_TRUE((EffectSpec{OceanEffect(), 1}).covers(1)) << "a mesh that is water itself";
}

// == The sea ==

TEST(OceanScene, theWaterReachesFromBehindTheViewerToTheHorizon) {
    constexpr double unit = 2.5;
    constexpr double patch = 80;
    OceanScene const scene({5, 4, 10, 0, 16.0 / 9});
    std::unique_ptr<Mesh> const mesh = scene.water(unit, patch);
    mesh->workBox();
    Box3<double> const box = mesh->box();
    EXPECT_GT(box.max.z * unit, 10) << "behind the viewer, who looks along -z";
    EXPECT_LT(box.min.z * unit, -8000);
    EXPECT_EQ(box.min.y, 0);
    EXPECT_EQ(box.max.y, 0);
    // As wide as the view at the horizon.
    EXPECT_GT(box.max.x / -box.min.z, std::tan(19 * 3.14159265 / 180) * 16 / 9);
    EXPECT_NEAR(box.max.x, -box.min.x, 1e-9);

    auto const* const positions = VL_ArrayServer.resolve(mesh->positions())->as<Vector3<double>>();
    ArrayTypeable const* const uv =
        VL_ArrayServer.resolve(mesh->namedArray(MeshArrayInf_ns::PER_VERTEX, ModelPart::CHANNEL));
    ASSERT_NE(uv, nullptr);
    for (unsigned int i = 0; i < uv->size; i += 997) {
        EXPECT_NEAR(uv->as<Vector2<float>>()[i].x, positions[i].z * unit / patch, 1e-4);
        EXPECT_NEAR(uv->as<Vector2<float>>()[i].y, -positions[i].x * unit / patch, 1e-4);
    }
}

TEST(OceanScene, theSunStandsWhereItIsAskedFor) {
    Vector3<double> const ahead = OceanScene({5, 4, 0, 0, 1}).sunDirection();
    EXPECT_NEAR(ahead.z, -1, 1e-12);
    Vector3<double> const right = OceanScene({5, 4, 0, 90, 1}).sunDirection();
    EXPECT_NEAR(right.x, 1, 1e-12);
    Vector3<double> const above = OceanScene({5, 4, 90, 0, 1}).sunDirection();
    EXPECT_NEAR(above.y, 1, 1e-12);
}
