#include "tests/support/TemporaryFolder.h"
#include "tests/support/build_facts.h"
#include "tests/viewport/files/mesh/mesh_texts.h"
#include "tests/viewport/program/program_runner.h"
#include "viewport/files/images/Picture.h"
#include "viewport/ocean/SkyPicture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <functional>

#include <sys/stat.h>
#include <unistd.h>

/// The program's effects as they are asked for from a shell: pixels, logs, exit statuses.

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using vellum::viewport::Picture;
using vellum::viewport::Result;

namespace {

constexpr int width = 96;
constexpr int height = 72;

/// A square of the plane z = 0, which the front view shows whole.
constexpr char square[] = "v -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nvn 0 0 1\n"
                          "f 1/1/1 2/2/1 3/3/1 4/4/1\n";

constexpr char greenFragment[] = "void main()\n{\n    gl_FragColor = vec4(0.0, 1.0, 0.0, 1.0);\n}\n";

struct Rgb {
    int r;
    int g;
    int b;
};

Rgb at(Picture const& picture, int const& x, int const& y) {
    unsigned char const* const p =
        picture.pixels.data() + 4 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width) +
                                     static_cast<std::size_t>(x));
    return {p[0], p[1], p[2]};
}

Rgb middle(Picture const& picture) {
    return at(picture, picture.width / 2, picture.height / 2);
}

int differingPixels(Picture const& a, Picture const& b) {
    int count = 0;
    for (int y = 0; y < a.height; ++y) {
        for (int x = 0; x < a.width; ++x) {
            Rgb const p = at(a, x, y);
            Rgb const q = at(b, x, y);
            count += std::abs(p.r - q.r) + std::abs(p.g - q.g) + std::abs(p.b - q.b) > 12 ? 1 : 0;
        }
    }
    return count;
}

double brightness(Picture const& picture) {
    double sum = 0;
    for (std::size_t i = 0; i < picture.pixels.size(); i += 4) {
        sum += picture.pixels[i] + picture.pixels[i + 1] + picture.pixels[i + 2];
    }
    return sum / static_cast<double>(picture.pixels.size());
}

class effect_program_gl_test : public testing::Test {
protected:
    Outcome run(std::vector<std::string> arguments, std::vector<std::string> environment = {}) const {
        if (isAddressSanitized()) {
            // Drivers keep memory to the end. The unit tests look for leaks of the program's own.
            environment.push_back("ASAN_OPTIONS=detect_leaks=0");
        }
        arguments.insert(arguments.end(), {"--size", std::to_string(width) + "x" + std::to_string(height)});
        return runProgram(VL_VIEWPORT_PROGRAM, arguments, environment);
    }

    /// The picture of a run that has to succeed. `error` gets what the program says.
    Picture draw(std::vector<std::string> arguments, std::string& error) const {
        arguments.insert(arguments.end(), {"--out", folder.file("out.png")});
        unlink(folder.file("out.png").c_str());
        Outcome const outcome = run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.error;
        EXPECT_EQ(outcome.output, "");
        error = outcome.error;
        Result<Picture> picture = Picture::loadPng(folder.file("out.png"));
        EXPECT_TRUE(picture.isOk()) << outcome.error;
        return picture.isOk() ? picture.value()
                              : Picture{width, height, std::vector<unsigned char>(4 * width * height, 0)};
    }

    /// The same of a run that has nothing to say.
    Picture draw(std::vector<std::string> const& arguments) const {
        std::string error;
        Picture const picture = draw(arguments, error);
        EXPECT_EQ(error, "");
        return picture;
    }

    /// The program names the file and the fault in one line, gives status 1 and leaves no picture.
    void expectFault(std::vector<std::string> arguments, std::string const& file,
                     std::string const& fault) const {
        arguments.insert(arguments.end(), {"--out", folder.file("fault.png")});
        std::vector<std::string> const before = folder.names();
        Outcome const outcome = run(arguments);
        EXPECT_EQ(outcome.status, 1) << outcome.error;
        EXPECT_EQ(outcome.output, "");
        EXPECT_THAT(outcome.error, StartsWith("vl_viewport: " + file + ": "));
        EXPECT_THAT(outcome.error, HasSubstr(fault));
        EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << outcome.error;
        EXPECT_EQ(folder.names(), before);
    }

    std::string writePicture(std::string const& name, int const& columns, int const& rows,
                             Rgb const& color) const {
        Picture picture{columns, rows, {}};
        for (int i = 0; i < columns * rows; ++i) {
            picture.pixels.insert(picture.pixels.end(),
                                  {static_cast<unsigned char>(color.r), static_cast<unsigned char>(color.g),
                                   static_cast<unsigned char>(color.b), 255});
        }
        EXPECT_FALSE(picture.savePng(folder.file(name)));
        return folder.file(name);
    }

    /// A plate in the plane of x and z with parts x parts squares.
    std::string writePlate(std::string const& name, int const& parts) const {
        std::string text;
        for (int row = 0; row <= parts; ++row) {
            for (int column = 0; column <= parts; ++column) {
                text += "v " + std::to_string(column) + " 0 " + std::to_string(row) + "\n";
            }
        }
        for (int row = 0; row < parts; ++row) {
            for (int column = 0; column < parts; ++column) {
                int const n = row * (parts + 1) + column + 1;
                text += "f " + std::to_string(n) + " " + std::to_string(n + parts + 1) + " " +
                        std::to_string(n + parts + 2) + " " + std::to_string(n + 1) + "\n";
            }
        }
        return folder.write(name, text);
    }

    /// The front view of the square with user stages.
    std::vector<std::string> custom(std::vector<std::string> const& more) const {
        std::vector<std::string> words{folder.write("square.obj", square), "--view", "front", "--effect",
                                       "custom"};
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }

    /// Without an effect the square is gray and lit: less than the white of stages that pass everything on.
    void expectPlain(Picture const& picture) const {
        Rgb const color = middle(picture);
        EXPECT_GT(color.r, 100);
        EXPECT_LT(color.r, 250);
        EXPECT_NEAR(color.g, color.r, 12);
        EXPECT_NEAR(color.b, color.r, 12);
    }

    TemporaryFolder folder;
};

}  // namespace

// == Ocean ==

TEST_F(effect_program_gl_test, anOceanNeedsNoFilesAndIsTheSameEveryTime) {
    std::vector<std::string> const words{"--effect", "ocean", "--effect-param", "size=128"};
    Picture const first = draw(words);
    Rgb const sky = at(first, 5, 3);
    EXPECT_GT(sky.b, sky.r) << "blue above";
    Rgb const water = at(first, 5, height - 5);
    EXPECT_LT(water.r + water.g + water.b, sky.r + sky.g + sky.b) << "darker below";
    EXPECT_EQ(draw(words).pixels, first.pixels);

    std::vector<std::string> later = words;
    later.insert(later.end(), {"--effect-param", "time=1.5"});
    EXPECT_GT(differingPixels(draw(later), first), width * height / 20);
    std::vector<std::string> other = words;
    other.insert(other.end(), {"--effect-param", "seed=2"});
    EXPECT_GT(differingPixels(draw(other), first), width * height / 20);
}

TEST_F(effect_program_gl_test, theFoamThresholdShowsTheFoam) {
    std::vector<std::string> words{"--effect",       "ocean",           "--effect-param", "wind=25",
                                   "--effect-param", "size=128",        "--effect-param", "sun=-20",
                                   "--effect-param", "foam-threshold=1"};
    Picture const foam = draw(words);
    words.back() = "foam-threshold=0";
    Picture const water = draw(words);
    int brighter = 0;
    for (int y = height / 2; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            brighter += at(foam, x, y).r > at(water, x, y).r + 20 ? 1 : 0;
        }
    }
    EXPECT_GT(brighter, 40);
    EXPECT_GT(brightness(foam), brightness(water));
}

TEST_F(effect_program_gl_test, aPlateOfAFileIsAnOceanToo) {
    std::string const plate = writePlate("plate.obj", 40);
    Picture const plain = draw({plate});
    Picture const sea =
        draw({plate, "--effect", "ocean", "--effect-model", "1", "--effect-param", "size=64"});
    EXPECT_GT(differingPixels(plain, sea), width * height / 8);
}

TEST_F(effect_program_gl_test, modelsAndParticlesStandInTheSea) {
    std::string const cube = folder.write("cube.off", mesh_texts::cubeOff);
    std::string const particles = folder.write("a.xyz", "2\n\nH 0 0 0\nH 1 1 1\n");
    for (std::string const& file : {cube, particles}) {
        std::vector<std::string> const words{file,    "--elevation",    "12",     "--effect",
                                             "ocean", "--effect-param", "size=64"};
        Picture const sea = draw(words);
        EXPECT_EQ(draw(words).pixels, sea.pixels);
        Rgb const sky = at(sea, 3, 2);
        Rgb const water = at(sea, 3, height - 3);
        EXPECT_LT(water.r + water.g + water.b, sky.r + sky.g + sky.b) << "darker below";
        // The thing is not the sea that a smaller one would show there.
        std::vector<std::string> sunk = words;
        sunk.insert(sunk.end(), {"--effect-param", "level=-2"});
        EXPECT_GT(differingPixels(draw(sunk), sea), width * height / 20);
    }
}

TEST_F(effect_program_gl_test, aCameraUnderWaterIsAUsageError) {
    std::string const cube = folder.write("cube.off", mesh_texts::cubeOff);
    std::string const out = folder.file("out.png");
    Outcome const outcome =
        run({cube, "--effect", "ocean", "--effect-param", "size=16", "--out", out, "--elevation", "30",
             "--out", folder.file("deep.png"), "--elevation", "-20"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.error, StartsWith("vl_viewport: --effect ocean: the camera is under water"));
    EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << outcome.error;
    EXPECT_TRUE(Picture::loadPng(out).isOk()) << "the picture before it";
}

// == Displacement ==

TEST_F(effect_program_gl_test, aMapDisplacesOnBothPaths) {
    std::string const plate = writePlate("plate.obj", 8);
    std::string const gray = writePicture("gray.png", 4, 4, {128, 128, 128});
    std::string const white = writePicture("white.png", 4, 4, {128, 255, 128});
    for (char const* const path : {"tessellate=no", "tessellate=yes"}) {
        std::vector<std::string> words{plate,        "--effect",       "displacement", "--effect-param",
                                       path,         "--effect-param", "scale=0,30,0", "--effect-param",
                                       "map=" + gray};
        Picture const flat = draw(words);
        words.back() = "map=" + white;
        Picture const raised = draw(words);
        EXPECT_GT(differingPixels(flat, raised), width * height / 20) << path;
        words.insert(words.end(), {"--effect-param", "scale=0"});
        Picture const unscaled = draw(words);
        EXPECT_LT(differingPixels(flat, unscaled), width * height / 100) << path;
    }
}

TEST_F(effect_program_gl_test, mapsThatDoNotSuitAreFaults) {
    std::string const plate = writePlate("plate.obj", 2);
    std::string const odd = writePicture("odd.png", 3, 4, {128, 128, 128});
    std::string const fine = writePicture("fine.png", 4, 4, {128, 128, 128});
    std::string const noise = folder.write("noise.png", mesh_texts::noise(300));
    std::string const text = folder.write("text.png", "a picture");
    std::string const empty = folder.write("empty.png", "");
    auto const words = [&](std::string const& map) {
        return std::vector<std::string>{plate, "--effect", "displacement", "--effect-param", "map=" + map};
    };
    expectFault(words(odd), odd, "is 3x4 pixels; the sides of a map must be powers of two");
    expectFault(words(folder.file("gone.png")), folder.file("gone.png"), "No such file");
    for (std::string const& bad : {noise, text, empty, std::string("/dev/null")}) {
        expectFault(words(bad), bad, "is not a readable picture");
    }
    std::vector<std::string> both = words(fine);
    both.insert(both.end(), {"--effect-param", "normals=" + odd});
    expectFault(both, odd, "powers of two");
}

// == Glass ==

TEST_F(effect_program_gl_test, glassMirrorsItsEnvironment) {
    std::string const cube = folder.write("cube.off", mesh_texts::cubeOff);
    std::string const red = writePicture("red.png", 4, 4, {255, 0, 0});
    std::string const blue = writePicture("blue.png", 5, 3, {0, 0, 255});
    // Of the color seen straight on through glass with no mix ratio, nine tenths are mirrored.
    std::vector<std::string> words{cube,    "--effect",      "glass", "--effect-param",
                                   "mix=0", "--environment", red};
    Rgb const mirrored = middle(draw(words));
    EXPECT_GT(mirrored.r, 2 * mirrored.b + 60);
    words.back() = blue;
    Rgb const other = middle(draw(words));
    EXPECT_GT(other.b, 2 * other.r + 60);
    Picture const own = draw({cube, "--effect", "glass"});
    EXPECT_GT(differingPixels(own, draw({cube})), width * height / 10);
}

TEST_F(effect_program_gl_test, glassShowsWhatIsBehindIt) {
    // Behind: a wall, whose material is red. Before it: the glass, seen from the front.
    folder.write("wall.mtl", "newmtl red\nKd 1 0 0\nnewmtl blue\nKd 0 0 1\n");
    std::string const glass =
        folder.write("glass.obj", "v -1 -1 1\nv 1 -1 1\nv 0 1 1.2\nvn 0 0 1\nf 1//1 2//1 3//1\n");
    std::string const corners = "v -3 -3 -1\nv 3 -3 -1\nv 3 3 -1\nv -3 3 -1\nf 1 2 3 4\n";
    std::string const red = folder.write("red.obj", "mtllib wall.mtl\nusemtl red\n" + corners);
    std::string const blue = folder.write("blue.obj", "mtllib wall.mtl\nusemtl blue\n" + corners);
    auto const through = [&](std::string const& wall) {
        return middle(draw({wall, glass, "--effect", "glass", "--effect-model", "2", "--effect-param",
                            "depth=0", "--effect-param", "mix=100"}));
    };
    Rgb const seenRed = through(red);
    Rgb const seenBlue = through(blue);
    EXPECT_GT(seenRed.r, seenBlue.r + 40);
    EXPECT_GT(seenBlue.b, seenRed.b + 40);
}

TEST_F(effect_program_gl_test, anEnvironmentThatCannotBeReadIsAFault) {
    std::string const cube = folder.write("cube.off", mesh_texts::cubeOff);
    std::string const noise = folder.write("noise.png", mesh_texts::noise(300));
    for (std::string const& bad : {folder.file("gone.png"), noise, cube, std::string("/dev/null")}) {
        expectFault({cube, "--effect", "glass", "--environment", bad}, bad, "");
    }
}

// == Scattering ==

TEST_F(effect_program_gl_test, scatteredLightComesFromOneOrTwoLights) {
    std::string const cube = folder.write("cube.off", mesh_texts::cubeOff);
    std::vector<std::string> words{cube,
                                   "--effect",
                                   "sss",
                                   "--effect-param",
                                   "light-color=0.4,0.4,0.4",
                                   "--effect-param",
                                   "light2-color=0,0,0.6",
                                   "--effect-param",
                                   "light2=1,2,3",
                                   "--effect-param",
                                   "lights=1"};
    Rgb const one = middle(draw(words));
    EXPECT_GT(one.r, one.b) << "the color of skin";
    words.back() = "lights=2";
    Rgb const two = middle(draw(words));
    EXPECT_EQ(two.r, one.r) << "the second light is blue";
    EXPECT_GT(two.b, one.b + 10);
    words.insert(words.end(), {"--effect-param", "thickness=2"});
    EXPECT_GT(middle(draw(words)).r, two.r + 10) << "light comes through";
}

// == User shaders ==

TEST_F(effect_program_gl_test, aUserShaderDraws) {
    std::string const fragment = folder.write("green.frag", greenFragment);
    Rgb const color = middle(draw(custom({"--shader-fragment", fragment})));
    EXPECT_EQ(color.r, 0);
    EXPECT_EQ(color.g, 255);
    EXPECT_EQ(color.b, 0);
}

TEST_F(effect_program_gl_test, aUserShaderGetsItsInputs) {
    std::string const fragment = folder.write(
        "inputs.frag",
        "uniform float FloatVar3;\nuniform vec3 Vec3Var9;\nuniform vec4 Vec4Var0;\nuniform vec4 BaseColor;\n"
        "uniform sampler2D Texture6;\nuniform int nLights;\n"
        "void main() {\n    float b = texture2D(Texture6, gl_TexCoord[0].st).b;\n"
        "    gl_FragColor = vec4(FloatVar3 + Vec3Var9.y, Vec4Var0.w + BaseColor.r, b * float(nLights) / 2.0, "
        "1.0);\n}\n");
    std::string const blue = writePicture("blue.png", 4, 4, {0, 0, 255});
    Rgb const color = middle(draw(
        custom({"--shader-fragment", fragment, "--effect-param", "FloatVar3=0.25", "--effect-param",
                "Vec3Var9=0,0.5,0", "--effect-param", "Vec4Var0=0,0,0,0.5", "--effect-param",
                "BaseColor=0.25,0,0", "--effect-param", "Texture6=" + blue, "--effect-param", "lights=2"})));
    EXPECT_NEAR(color.r, 191, 2);
    EXPECT_NEAR(color.g, 191, 2);
    EXPECT_NEAR(color.b, 255, 2);
    expectFault(
        custom({"--shader-fragment", fragment, "--effect-param", "Texture0=" + folder.file("gone.png")}),
        folder.file("gone.png"), "No such file");
}

TEST_F(effect_program_gl_test, aUserShaderMayReadWhatIsBehind) {
    std::string const fragment = folder.write(
        "copy.frag",
        "uniform sampler2D TextureFB;\n"
        "void main() {\n    gl_FragColor = vec4(texture2D(TextureFB, vec2(0.3)).rgb * vec3(0.0, 0.0, 1.0) + "
        "vec3(1.0, 0.0, 0.0), 1.0);\n}\n");
    Rgb const color = middle(draw(custom({"--shader-fragment", fragment, "--effect-param", "grab=yes"})));
    EXPECT_EQ(color.r, 255);
    EXPECT_EQ(color.g, 0);
    EXPECT_GT(color.b, 20) << "the background";
}

TEST_F(effect_program_gl_test, allThreeStagesAreTaken) {
    std::string const vertex = folder.write("v.vert", "void main() {\n    gl_Position = gl_Vertex;\n}\n");
    std::string const geometry = folder.write(
        "g.geom",
        "#version 150 compatibility\nlayout(triangles) in;\nlayout(triangle_strip, max_vertices = 3) out;\n"
        "out vec4 tint;\nvoid main() {\n    for (int i = 0; i < 3; ++i) {\n        tint = vec4(1.0, 0.5, "
        "0.0, 1.0);\n"
        "        gl_Position = gl_ModelViewProjectionMatrix * gl_in[i].gl_Position;\n        EmitVertex();\n"
        "    }\n    EndPrimitive();\n}\n");
    std::string const fragment =
        folder.write("f.frag", "varying vec4 tint;\nvoid main() {\n    gl_FragColor = tint;\n}\n");
    Rgb const color = middle(draw(
        custom({"--shader-vertex", vertex, "--shader-geometry", geometry, "--shader-fragment", fragment})));
    EXPECT_EQ(color.r, 255);
    EXPECT_NEAR(color.g, 128, 2);
    EXPECT_EQ(color.b, 0);
}

TEST_F(effect_program_gl_test, withTheFallbackAShaderThatDoesNotCompileIsReplacedAndItsLogNamesFileAndLine) {
    std::string const fragment = folder.write("bad.frag", "void main()\n{\n    gl_FragColor = nothing;\n}\n");
    std::string error;
    expectPlain(draw(custom({"--shader-fallback", "--shader-fragment", fragment}), error));
    EXPECT_THAT(error, HasSubstr("vl_viewport: " + fragment + ":3: "));
    EXPECT_THAT(error, HasSubstr(fragment +
                                 ": does not compile; a stage that passes everything on takes its place\n"));

    std::string const vertex = folder.write("bad.vert", "void main()\n{\n    gl_Position = ;\n}\n");
    std::string const green = folder.write("green.frag", greenFragment);
    EXPECT_EQ(
        middle(
            draw(custom({"--shader-fallback", "--shader-vertex", vertex, "--shader-fragment", green}), error))
            .g,
        255);
    EXPECT_THAT(error, HasSubstr(vertex + ":3: "));
    EXPECT_THAT(error, Not(HasSubstr(green)));

    std::string const geometry =
        folder.write("bad.geom", "#version 150 compatibility\nlayout(triangles) in;\nno\n");
    EXPECT_EQ(
        middle(draw(custom({"--shader-fallback", "--shader-geometry", geometry, "--shader-fragment", green}),
                    error))
            .g,
        255);
    EXPECT_THAT(error, HasSubstr(geometry + ":"));
}

TEST_F(effect_program_gl_test, withTheFallbackStagesThatDoNotGoTogetherAreReplaced) {
    std::string const fragment = folder.write(
        "alone.frag", "varying vec3 from;\nvoid main() {\n    gl_FragColor = vec4(from, 1.0);\n}\n");
    std::string error;
    expectPlain(draw(custom({"--shader-fallback", "--shader-fragment", fragment}), error));
    EXPECT_THAT(error, HasSubstr("vl_viewport: the program of the stages: error: "));
    EXPECT_THAT(error, HasSubstr("cannot be linked; stages that pass everything on take its place\n"));
}

TEST_F(effect_program_gl_test, theShapeIsSeenWhereNothingIsLeftOfAnEffect) {
    std::string const roof =
        folder.write("roof.obj", "v -1 0 0\nv 0 0 1\nv 1 0 0\nv -1 2 0\nv 0 2 1\nv 1 2 0\n"
                                 "f 1 2 5 4\nf 2 3 6 5\n");
    std::string const fragment = folder.write("bad.frag", "no\n");
    std::string error;
    Picture const picture = draw({roof, "--view", "front", "--shading", "faceted", "--effect", "custom",
                                  "--shader-fallback", "--shader-fragment", fragment},
                                 error);
    int const left = at(picture, picture.width * 2 / 5, picture.height / 2).r;
    int const right = at(picture, picture.width * 3 / 5, picture.height / 2).r;
    EXPECT_GT(std::abs(left - right), 30) << "two sides of a roof";
    EXPECT_THAT(error, HasSubstr("drawn lit, without it\n"));
}

TEST_F(effect_program_gl_test, aShaderThatDoesNotCompileIsAFaultOfItsFile) {
    std::string const good = folder.write("green.frag", greenFragment);
    struct Row {
        char const* stage;
        char const* text;
    };
    for (Row const& row :
         {Row{"--shader-fragment", "void main()\n{\n    gl_FragColor = nothing;\n}\n"},
          Row{"--shader-vertex", "void main()\n{\n    gl_Position = nothing;\n}\n"},
          Row{"--shader-geometry", "#version 150 compatibility\nlayout(triangles) in;\nno\n"}}) {
        SCOPED_TRACE(row.stage);
        std::string const bad = folder.write("bad.glsl", row.text);
        std::vector<std::string> words =
            custom({row.stage, bad, "--info", "--out", folder.file("fault.png")});
        if (row.stage != std::string("--shader-fragment")) {
            words.insert(words.end(), {"--shader-fragment", good});
        }
        std::vector<std::string> const before = folder.names();
        Outcome const outcome = run(words);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(folder.names(), before);
        // The driver's words with their line, then one line with the fault.
        EXPECT_THAT(outcome.error, StartsWith("vl_viewport: " + bad + ":3: "));
        EXPECT_THAT(outcome.error, testing::EndsWith("\nvl_viewport: " + bad + ": does not compile\n"));
        EXPECT_THAT(outcome.error, Not(HasSubstr("passes everything on")));
        EXPECT_THAT(outcome.error, Not(HasSubstr(good)));
    }
}

TEST_F(effect_program_gl_test, stagesThatDoNotGoTogetherAreAFaultOfTheirFiles) {
    std::string const fragment = folder.write(
        "alone.frag", "varying vec3 from;\nvoid main() {\n    gl_FragColor = vec4(from, 1.0);\n}\n");
    std::string const vertex =
        folder.write("plain.vert", "void main() {\n    gl_Position = ftransform();\n}\n");
    struct Row {
        std::vector<std::string> words;
        std::string files;
    };
    for (Row const& row :
         {Row{{"--shader-fragment", fragment}, fragment},
          Row{{"--shader-fragment", fragment, "--shader-vertex", vertex}, vertex + ", " + fragment}}) {
        std::vector<std::string> words = custom(row.words);
        words.insert(words.end(), {"--out", folder.file("fault.png")});
        std::vector<std::string> const before = folder.names();
        Outcome const outcome = run(words);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(folder.names(), before);
        EXPECT_THAT(outcome.error, StartsWith("vl_viewport: the program of the stages: error: "));
        EXPECT_THAT(outcome.error, testing::EndsWith("\nvl_viewport: " + row.files + ": cannot be linked\n"));
    }
}

TEST_F(effect_program_gl_test, aVertexStageWithoutAColorIsNotShownThroughAStageThatNeedsIt) {
    std::string const vertex =
        folder.write("plain.vert", "void main() {\n    gl_Position = ftransform();\n}\n");
    std::string error;
    expectPlain(draw(custom({"--shader-vertex", vertex}), error));
    EXPECT_THAT(error, HasSubstr(vertex + ": sets no gl_FrontColor"));

    std::string const colored = folder.write(
        "colored.vert",
        "void main() {\n    gl_FrontColor = vec4(0.0, 0.0, 1.0, 1.0);\n    gl_Position = ftransform();\n}\n");
    Rgb const color = middle(draw(custom({"--shader-vertex", colored})));
    EXPECT_EQ(color.r, 0);
    EXPECT_EQ(color.b, 255);
}

TEST_F(effect_program_gl_test, shaderFilesThatCannotBeReadAreFaults) {
    std::string const huge = folder.write("huge.frag", "");
    ASSERT_EQ(truncate(huge.c_str(), off_t{100} << 20), 0);
    std::string const folderPath = folder.file("folder.frag");
    ASSERT_EQ(mkdir(folderPath.c_str(), 0755), 0);
    std::string const pipe = folder.file("pipe.frag");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0644), 0);
    std::string const good = folder.write("green.frag", greenFragment);
    struct Row {
        std::string file;
        char const* fault;
    };
    for (Row const& row : {Row{folder.file("gone.frag"), "cannot be opened: No such file"},
                           Row{good + "/green.frag", "cannot be opened: Not a directory"},
                           Row{folderPath, "is not a plain file"}, Row{pipe, "is not a plain file"},
                           Row{"/dev/null", "is not a plain file"}, Row{"/dev/zero", "is not a plain file"},
                           Row{huge, "is too large"}, Row{folder.write("empty.frag", ""), "is empty"},
                           Row{folder.write("blank.frag", "\n \t\n"), "is empty"},
                           Row{folder.write("noise.frag", mesh_texts::noise(5000)), "is not a text"}}) {
        for (char const* const stage : {"--shader-vertex", "--shader-fragment", "--shader-geometry"}) {
            SCOPED_TRACE(stage);
            expectFault(custom({stage, row.file}), row.file, row.fault);
        }
    }
    expectFault(custom({"--shader-fragment", good, "--shader-vertex", huge}), huge, "is too large");
}

TEST_F(effect_program_gl_test, aShaderFileWithoutPermissionIsAFault) {
    if (geteuid() == 0) {
        GTEST_SKIP() << "the superuser may read every file";
    }
    std::string const locked = folder.write("locked.frag", greenFragment);
    ASSERT_EQ(chmod(locked.c_str(), 0), 0);
    expectFault(custom({"--shader-fragment", locked}), locked, "cannot be opened: Permission denied");
}

TEST_F(effect_program_gl_test, withTheFallbackATextThatIsNoShaderIsReplaced) {
    std::string letters = mesh_texts::noise(5000);
    std::replace(letters.begin(), letters.end(), '\0', '0');
    std::string const file = folder.write("letters.frag", letters);
    std::string error;
    expectPlain(draw(custom({"--shader-fallback", "--shader-fragment", file}), error));
    EXPECT_THAT(error, HasSubstr("vl_viewport: " + file + ": "));
    EXPECT_THAT(error, HasSubstr("; a stage that passes everything on takes its place\n"));
}

TEST_F(effect_program_gl_test, linesOfAnyLengthAreRead) {
    std::string const longLine =
        folder.write("long.frag", "//" + std::string(3000, 'x') + "\n" + greenFragment);
    EXPECT_EQ(middle(draw(custom({"--shader-fragment", longLine}))).g, 255);
    EXPECT_EQ(middle(draw(custom({"--shader-fragment", longLine}))).r, 0);
}

TEST_F(effect_program_gl_test, particlesAloneHaveNoEffects) {
    std::string const particles = folder.write("a.xyz", "2\n\nH 0 0 0\nH 1 1 1\n");
    Outcome const outcome = run({particles, "--effect", "glass", "--out", folder.file("out.png")});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.error, "vl_viewport: there is no mesh to draw with the effect\n");
    // Beside a mesh they are drawn as ever.
    std::string const cube = folder.write("cube.off", mesh_texts::cubeOff);
    EXPECT_GT(differingPixels(draw({particles, cube}), draw({particles, cube, "--effect", "glass"})), 20);
}

// == Old drivers ==

TEST_F(effect_program_gl_test, everyEffectDrawsOrEndsInOneLineOnOldDrivers) {
    std::string const cube = folder.write("cube.off", mesh_texts::cubeOff);
    std::string const map = writePicture("map.png", 4, 4, {128, 200, 128});
    std::string const green = folder.write("green.frag", greenFragment);
    std::string const geometry = folder.write("g.geom", "void main() {}\n");
    struct Row {
        char const* name;
        std::vector<std::string> words;
        bool needsGeometryStages;
    };
    std::vector<Row> const rows{
        {"displacement", {cube, "--effect", "displacement", "--effect-param", "map=" + map}, false},
        {"tessellation",
         {cube, "--effect", "displacement", "--effect-param", "map=" + map, "--effect-param",
          "tessellate=yes"},
         true},
        {"ocean", {cube, "--effect", "ocean", "--effect-param", "size=16"}, false},
        {"a sea without files", {"--effect", "ocean", "--effect-param", "size=16"}, false},
        {"glass", {cube, "--effect", "glass"}, false},
        {"scattering", {cube, "--effect", "sss", "--gizmo", "move"}, false},
        {"picking", {cube, "--effect", "glass", "--pick", "48,36"}, false},
        {"information", {cube, "--effect", "glass", "--info"}, false},
        {"user shader", {cube, "--effect", "custom", "--shader-fragment", green}, false},
        {"user geometry shader",
         {cube, "--effect", "custom", "--shader-fragment", green, "--shader-geometry", geometry},
         true}};
    std::string const out = folder.file("out.png");
    for (char const* const version : {"1.5", "2.0", "2.1"}) {
        bool const hasShaders = version[0] == '2';
        for (Row const& row : rows) {
            SCOPED_TRACE(std::string(row.name) + " on " + version);
            std::vector<std::string> words = row.words;
            words.insert(words.end(), {"--out", out});
            unlink(out.c_str());
            Outcome const outcome = run(words, {std::string("MESA_GL_VERSION_OVERRIDE=") + version});
            if (hasShaders && !row.needsGeometryStages) {
                EXPECT_EQ(outcome.status, 0);
                EXPECT_EQ(outcome.error, "");
                Result<Picture> const picture = Picture::loadPng(out);
                ASSERT_TRUE(picture.isOk());
                EXPECT_GT(
                    differingPixels(picture.value(),
                                    Picture{width, height, std::vector<unsigned char>(4 * width * height)}),
                    width * height / 2);
                continue;
            }
            EXPECT_EQ(outcome.status, 3);
            EXPECT_EQ(outcome.output, "");
            EXPECT_THAT(outcome.error, StartsWith("vl_viewport: OpenGL here has no "));
            EXPECT_THAT(outcome.error,
                        HasSubstr(hasShaders ? "no geometry stages, which" : "no shaders, which"));
            EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << outcome.error;
            EXPECT_THAT(folder.names(), Not(testing::Contains("out.png")));
        }
    }
}

// == The command line ==

TEST_F(effect_program_gl_test, effectsThatMakeNoSenseAreUsageErrors) {
    std::string const cube = folder.write("cube.off", mesh_texts::cubeOff);
    for (std::vector<std::string> const& words :
         std::vector<std::vector<std::string>>{{cube, "--effect", "fog"},
                                               {cube, "--effect", "glass", "--effect-param", "fog=1"},
                                               {cube, "--effect", "glass", "--effect-param", "depth=deep"},
                                               {cube, "--environment", cube},
                                               {cube, "--shader-vertex", cube},
                                               {cube, "--effect", "displacement"},
                                               {cube, "--effect", "custom"},
                                               {cube, "--effect", "glass", "--edges"},
                                               {"--effect", "glass"}}) {
        std::vector<std::string> arguments = words;
        arguments.insert(arguments.end(), {"--out", folder.file("out.png")});
        Outcome const outcome = run(arguments);
        EXPECT_EQ(outcome.status, 2) << outcome.error;
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << outcome.error;
        EXPECT_THAT(folder.names(), Not(testing::Contains("out.png")));
    }
}

TEST_F(effect_program_gl_test, theParametersAreListed) {
    Outcome const outcome = run({"--effect", "sss", "--effect-param", "help"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.error, "");
    EXPECT_THAT(outcome.output, HasSubstr("\n  thickness=NUMBER"));
}

TEST_F(effect_program_gl_test, effectsGoTogetherWithPickingAndGizmos) {
    std::string const cube = folder.write("cube.off", mesh_texts::cubeOff);
    Outcome const outcome = run({cube, "--effect", "glass", "--pick", "48,36"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(withoutFacts(outcome.output), "16 cube.off\n");
    Picture const plain = draw({cube, "--effect", "glass"});
    Picture const withGizmo = draw({cube, "--effect", "glass", "--gizmo", "move"});
    EXPECT_GT(differingPixels(plain, withGizmo), 10);
    Outcome const sea = run({"--effect", "ocean", "--effect-param", "size=16", "--pick", "48,36"});
    EXPECT_EQ(sea.status, 0) << sea.error;
    EXPECT_EQ(sea.output, "nothing\n");
}

TEST_F(effect_program_gl_test, effectsLookTheSameWithoutBufferObjects) {
    std::string const cube = folder.write("cube.off", mesh_texts::cubeOff);
    Picture const buffered = draw({cube, "--effect", "sss"});
    Picture const immediate = draw({cube, "--effect", "sss", "--immediate"});
    EXPECT_EQ(differingPixels(buffered, immediate), 0);
    for (char const* const view : {"front", "top", "right"}) {
        EXPECT_GT(
            differingPixels(draw({cube, "--effect", "sss", "--view", view}), draw({cube, "--view", view})),
            100);
    }
}
