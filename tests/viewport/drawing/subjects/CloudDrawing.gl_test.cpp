#include "viewport/drawing/subjects/CloudDrawing.h"

#include "tests/gl_spy/GlTest.h"
#include "toolkit/Layer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include <GL/gl.h>

using namespace vellum;
using namespace vellum::viewport;

namespace {

using Rgba = gl_spy::GlTest::Pixel;

/// Draws four particles side by side.
class CloudDrawing_gl_test : public gl_spy::GlTest {
protected:
    static constexpr unsigned int COUNT = 4;

    void SetUp() override {
        GlTest::SetUp();
        layer = std::make_unique<toolkit::Layer>();
        layer->assumeFreeGpuMemory(1024);
        system = std::make_shared<ParticleSystem_v2>();
        system->addChannel("position", ParticleChannel_v2::VECTOR);
        system->addChannel("shown", ParticleChannel_v2::VECTOR);
        colors = system->addChannel("colors", ParticleChannel_v2::VECTOR);
        sizes = system->addChannel("sizes", ParticleChannel_v2::SCALAR);
        system->addParticles(COUNT);
        ParticleSystemChunk_v2& chunk = *system->firstChunk();
        for (unsigned int k = 0; k < COUNT; ++k) {
            chunk.channelData(ParticleCloud::POSITIONS)->asVectors()[k] = {x(k), 0, 0};
            chunk.channelData(ParticleCloud::SHOWN)->asVectors()[k] = {0, static_cast<float>(k) / 4, 0};
            chunk.channelData(colors)->asVectors()[k] = COLORS[k];
            chunk.channelData(sizes)->asFloats()[k] = 0.1F + 0.1F * static_cast<float>(k);
        }
        cloud.system = system;
        cloud.spacing = 0.5;
        cloud.diameter = 0.2;
        glViewport(0, 0, width, height);
        glEnable(GL_DEPTH_TEST);
    }

    void TearDown() override {
        layer.reset();
        GlTest::TearDown();
    }

    static float x(unsigned int k) { return -0.75F + 0.5F * static_cast<float>(k); }

    std::vector<unsigned char> draw(char const* name) {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        {
            CloudDrawing drawing(*layer, cloud, style);
            drawing.draw(Sampling());
        }
        savePicture(std::string("cloud_") + name);
        EXPECT_EQ(layer->currentLineWidth(), 1.0F);
        return readPixels();
    }

    static Rgba at(std::vector<unsigned char> const& picture, int column, int row) {
        Rgba pixel{};
        std::copy_n(picture.begin() + std::ptrdiff_t{4} * (row * width + column), 4, pixel.begin());
        return pixel;
    }

    /// The pixels of a column that are not black.
    static int heightAt(std::vector<unsigned char> const& picture, unsigned int k) {
        int count = 0;
        auto const column = static_cast<int>(128 + 128 * x(k));
        for (int row = 0; row < height; ++row) {
            Rgba const p = at(picture, column, row);
            count += p[0] + p[1] + p[2] > 30 ? 1 : 0;
        }
        return count;
    }

    /// From the middle of the picture up to the highest pixel of an arrow.
    static int reachOf(std::vector<unsigned char> const& picture, unsigned int k) {
        for (int row = 0; row < height / 2; ++row) {
            for (int column = -25; column < 25; ++column) {
                Rgba const p = at(picture, static_cast<int>(128 + 128 * x(k)) + column, row);
                if (p[0] + p[1] + p[2] > 30) {
                    return height / 2 - row;
                }
            }
        }
        return 0;
    }

    /// The color in the middle of a particle, as bright as its largest part is.
    static Vector3<float> hueAt(std::vector<unsigned char> const& picture, unsigned int k, int row = 128) {
        Rgba const p = at(picture, static_cast<int>(128 + 128 * x(k)), row);
        auto const most = static_cast<float>(std::max({p[0], p[1], p[2], static_cast<unsigned char>(1)}));
        return {static_cast<float>(p[0]) / most, static_cast<float>(p[1]) / most,
                static_cast<float>(p[2]) / most};
    }

    void expectColors(std::vector<unsigned char> const& picture, unsigned int first = 0, int row = 128) {
        for (unsigned int k = first; k < COUNT; ++k) {
            Vector3<float> const hue = hueAt(picture, k, row);
            EXPECT_NEAR(hue.x, COLORS[k].x, 0.03) << k;
            EXPECT_NEAR(hue.y, COLORS[k].y, 0.03) << k;
            EXPECT_NEAR(hue.z, COLORS[k].z, 0.03) << k;
        }
    }

    static constexpr Vector3<float> COLORS[COUNT] = {{1, 0, 0}, {0.5F, 1, 0}, {0, 0.5F, 1}, {1, 0, 0.75F}};

    std::unique_ptr<toolkit::Layer> layer;
    std::shared_ptr<ParticleSystem_v2> system;
    unsigned int colors = 0;
    unsigned int sizes = 0;
    ParticleCloud cloud;
    ParticleStyle style;
};

}  // namespace

TEST_F(CloudDrawing_gl_test, spheresHaveTheColorsAndDiametersOfTheCloud) {
    style.mode = ParticleMode::SPHERES;
    cloud.colors = colors;
    cloud.sizes = sizes;
    std::vector<unsigned char> const picture = draw("spheres");
    expectColors(picture);
    for (unsigned int k = 0; k < COUNT; ++k) {
        EXPECT_NEAR(heightAt(picture, k), 128 * (0.1 + 0.1 * k), 2) << k;
    }
    cloud.sizes = std::nullopt;
    EXPECT_NEAR(heightAt(draw("spheres_equal"), 3), 128 * 0.2, 2);
}

TEST_F(CloudDrawing_gl_test, pointsHaveTheColorsOfTheCloudAndPixelsAsTheirSize) {
    style.mode = ParticleMode::POINTS;
    style.size = 10;
    cloud.colors = colors;
    cloud.sizes = sizes;
    std::vector<unsigned char> const picture = draw("points");
    expectColors(picture);
    for (unsigned int k = 0; k < COUNT; ++k) {
        EXPECT_NEAR(heightAt(picture, k), 10, 1) << k;
    }
}

TEST_F(CloudDrawing_gl_test, bothKindsOfArrowsHaveTheColorsOfTheCloud) {
    cloud.colors = colors;
    style.size = 1;
    for (ParticleMode const mode : {ParticleMode::ARROWS, ParticleMode::SOLID_ARROWS}) {
        style.mode = mode;
        bool const isSolid = mode == ParticleMode::SOLID_ARROWS;
        std::vector<unsigned char> const picture = draw(isSolid ? "solidArrows" : "arrows");
        expectColors(picture, 1, 128 - 10);
        for (unsigned int k = 1; k < COUNT; ++k) {
            EXPECT_NEAR(reachOf(picture, k), 128 * 0.25 * k, 3) << k;
        }
    }
}

TEST_F(CloudDrawing_gl_test, aNamedMapColorsTheLengths) {
    style.mode = ParticleMode::POINTS;
    style.size = 10;
    style.scale = ParticleScale();
    style.scale->range = {0, 0.75};
    style.colorMap = "viridis";
    std::vector<unsigned char> const picture = draw("map");
    toolkit::ColorMap const map = toolkit::ColorMap::named("viridis");
    for (unsigned int k = 0; k < COUNT; ++k) {
        Color4<float> const wanted = map.at(k / 3.0);
        Rgba const pixel = at(picture, static_cast<int>(128 + 128 * x(k)), 128);
        EXPECT_NEAR(pixel[0], 255 * wanted.r, 2) << k;
        EXPECT_NEAR(pixel[1], 255 * wanted.g, 2) << k;
        EXPECT_NEAR(pixel[2], 255 * wanted.b, 2) << k;
    }
}
