#include "viewport/program/PictureWords.h"

#include "viewport/program/CommandLine.h"

#include <gmock/gmock.h>

using namespace vellum::viewport;
using testing::HasSubstr;

namespace {

CommandLine parsePicture(std::vector<char const*> arguments) {
    arguments.insert(arguments.begin(), {"vl_viewport", "a.obj"});
    return parseCommandLine(static_cast<int>(arguments.size()), arguments.data());
}

std::vector<PictureOptions> picturesOf(std::vector<char const*> const& arguments) {
    CommandLine const line = parsePicture(arguments);
    EXPECT_TRUE(line.options.has_value()) << line.error;
    return line.options.value_or(Options{}).pictures;
}

std::string pictureError(std::vector<char const*> const& arguments) {
    CommandLine const line = parsePicture(arguments);
    EXPECT_FALSE(line.options.has_value()) << testing::PrintToString(arguments);
    EXPECT_EQ(line.exitStatus, 2);
    return line.error;
}

}  // namespace

TEST(PictureWords, optionsAfterAnOutBelongToItsPictureAlone) {
    std::vector<PictureOptions> const pictures =
        picturesOf({"--size", "64x48", "--no-grid", "--out", "a.png", "--view", "top", "--edges", "--out",
                    "b.jpg", "--size", "10x20", "--quality", "7", "b.obj", "--out=c.exr"});
    ASSERT_EQ(pictures.size(), 3U);
    EXPECT_EQ(pictures[0].out, "a.png");
    EXPECT_EQ(pictures[0].size.width, 64);
    EXPECT_EQ(pictures[0].camera.view, vellum::toolkit::ViewKind::TOP);
    EXPECT_FALSE(pictures[0].quality.has_value());
    EXPECT_EQ(pictures[1].size.width, 10);
    EXPECT_EQ(pictures[1].size.height, 20);
    EXPECT_EQ(pictures[1].camera.view, vellum::toolkit::ViewKind::PERSPECTIVE);
    EXPECT_EQ(pictures[1].quality, 7);
    EXPECT_EQ(pictures[2].out, "c.exr");
    EXPECT_EQ(pictures[2].size.height, 48);
    for (PictureOptions const& picture : pictures) {
        EXPECT_FALSE(picture.explanations.hasGrid);
        EXPECT_TRUE(picture.explanations.hasAxes);
    }
}

TEST(PictureWords, anOptionIsGivenOnceForAPicture) {
    EXPECT_THAT(pictureError({"--out", "a.png", "--size", "1x1", "--size", "2x2"}), HasSubstr("--size"));
    EXPECT_THAT(pictureError({"--size", "1x1", "--size", "2x2", "--out", "a.png"}), HasSubstr("--size"));
    EXPECT_EQ(picturesOf({"--size", "1x1", "--out", "a.png", "--size", "2x2"})[0].size.width, 2);
}

TEST(PictureWords, picturesDoNotReplaceEachOther) {
    EXPECT_THAT(pictureError({"--out", "a.png", "--out", "a.png"}), HasSubstr("--out: a.png is named twice"));
}

TEST(PictureWords, nothingElseGoesToStandardOutputBesideAPicture) {
    EXPECT_EQ(picturesOf({"--out", "-"})[0].out, "-");
    EXPECT_THAT(pictureError({"--out", "-", "--info"}), HasSubstr("--info"));
    EXPECT_THAT(pictureError({"--out", "/dev/stdout", "--info=json"}), HasSubstr("--info"));
    EXPECT_THAT(pictureError({"--out", "a.png", "--pick", "1,1", "--out", "-"}), HasSubstr("--pick"));
    EXPECT_THAT(pictureError({"--out", "-", "--out", "/dev/stdout"}), HasSubstr("--out"));
}

TEST(PictureWords, theCameraIsRead) {
    CameraSpec const camera =
        picturesOf({"--out", "a.png", "--camera-position", "-1,2,3e2", "--camera-focus", "0,0,-1",
                    "--camera-up", "0,0,2", "--fov", "50", "--zoom", "1.5"})[0]
            .camera;
    EXPECT_EQ(camera.position->x, -1);
    EXPECT_EQ(camera.position->z, 300);
    EXPECT_EQ(camera.focus->z, -1);
    EXPECT_EQ(camera.up->z, 2);
    EXPECT_EQ(camera.fieldOfView, 50);
    EXPECT_EQ(camera.zoom, 1.5);
    CameraSpec const other =
        picturesOf({"--out", "a.png", "--azimuth", "-30", "--elevation", "90", "--projection", "parallel"})[0]
            .camera;
    EXPECT_EQ(other.azimuth, -30);
    EXPECT_EQ(other.elevation, 90);
    EXPECT_EQ(other.projection, Projection::PARALLEL);
    EXPECT_TRUE(picturesOf({"--out", "a.png", "--view", "top", "--camera-focus", "1,2,3", "--zoom", "2"})[0]
                    .camera.focus.has_value());
}

TEST(PictureWords, camerasThatContradictThemselvesAreUsageErrors) {
    struct Row {
        std::vector<char const*> words;
        char const* error;
    };
    for (Row const& row :
         {Row{{"--view", "top", "--camera-position", "1,2,3"}, "--camera-position"},
          Row{{"--view", "top", "--projection", "perspective"}, "--projection"},
          Row{{"--view", "left", "--fov", "30"}, "--fov"},
          Row{{"--view", "left", "--camera-up", "1,0,0"}, "--camera-up"},
          Row{{"--view", "left", "--azimuth", "3"}, "--azimuth"},
          Row{{"--view", "perspective", "--projection", "parallel"}, "--projection"},
          Row{{"--projection", "parallel", "--fov", "30"}, "--fov"},
          Row{{"--camera-position", "1,2,3", "--elevation", "3"}, "--elevation"},
          Row{{"--camera-position", "1,2,3", "--camera-focus", "1,2,3"}, "the same point"},
          Row{{"--camera-up", "0,0,0"}, "--camera-up"}, Row{{"--camera-up", "1,2"}, "--camera-up"},
          Row{{"--camera-focus", "1,2,nan"}, "--camera-focus"}, Row{{"--elevation", "91"}, "--elevation"},
          Row{{"--azimuth", "361"}, "--azimuth"}, Row{{"--fov", "0"}, "--fov"},
          Row{{"--fov", "171"}, "--fov"}, Row{{"--zoom", "0"}, "--zoom"}, Row{{"--zoom", "-1"}, "--zoom"},
          Row{{"--projection", "fisheye"}, "--projection"}}) {
        std::vector<char const*> words = row.words;
        words.insert(words.end(), {"--out", "a.png"});
        EXPECT_THAT(pictureError(words), HasSubstr(row.error));
    }
}

TEST(PictureWords, looksAreRead) {
    PictureOptions const picture = picturesOf({"--out", "a.png", "--background", "#ff0000,0000ff", "--light",
                                               "-90,45", "--no-axes", "--no-bar", "--no-box"})[0];
    EXPECT_EQ(picture.background.top.r, 1);
    EXPECT_EQ(picture.background.bottom.b, 1);
    EXPECT_EQ(picture.light->azimuth, -90);
    EXPECT_EQ(picture.light->elevation, 45);
    EXPECT_TRUE(picture.explanations.hasGrid);
    EXPECT_FALSE(picture.explanations.hasAxes || picture.explanations.hasBar || picture.explanations.hasBox);
    EXPECT_FALSE(picture.explanations.hasSizes);
    EXPECT_TRUE(picturesOf({"--out", "a.png", "--sizes"})[0].explanations.hasSizes);
    EXPECT_TRUE(picturesOf({"--out", "a.png", "--background", "transparent"})[0].background.isTransparent);
    EXPECT_EQ(picturesOf({"--out", "a.png", "--background", "00ff00"})[0].background.bottom.g, 1);
    for (char const* const word : {"", "red", "ff0000,", "ff0000,00ff00,0000ff", "clear"}) {
        EXPECT_THAT(pictureError({"--out", "a.png", "--background", word}), HasSubstr("--background"))
            << word;
    }
    for (char const* const word : {"", "1", "1,2,3", "361,0", "0,91", "a,b"}) {
        EXPECT_THAT(pictureError({"--out", "a.png", "--light", word}), HasSubstr("--light")) << word;
    }
    for (char const* const word : {"", "0", "101", "1.5", "best"}) {
        EXPECT_THAT(pictureError({"--out", "a.jpg", "--quality", word}), HasSubstr("--quality")) << word;
    }
}

TEST(PictureWords, optionsOfTheWholeProgramAreRead) {
    CommandLine const line = parsePicture({"--out",
                                           "a.png",
                                           "--mesh-color",
                                           "00ff00",
                                           "--opacity",
                                           "0.25",
                                           "--line-width",
                                           "3",
                                           "--edges=all",
                                           "--clip",
                                           "-1,1,-2,2,-3,3",
                                           "--select",
                                           "type==2",
                                           "--colormap",
                                           "viridis",
                                           "--log",
                                           "--wrap",
                                           "--replicate",
                                           "1,2,3",
                                           "--particles",
                                           "arrows3d",
                                           "--up",
                                           "-z",
                                           "--time",
                                           "1.5",
                                           "--format",
                                           "xyz",
                                           "--info=json"});
    ASSERT_TRUE(line.options.has_value()) << line.error;
    Options const& options = *line.options;
    EXPECT_EQ(options.mesh.color->g, 1);
    EXPECT_EQ(options.mesh.opacity, 0.25F);
    EXPECT_EQ(options.mesh.lineWidth, 3);
    EXPECT_TRUE(options.mesh.allEdges);
    EXPECT_FALSE(options.mesh.edges);
    EXPECT_EQ(options.particles.clip->min.z, -3);
    EXPECT_EQ(options.particles.clip->max.y, 2);
    EXPECT_EQ(options.particles.selection, "type==2");
    EXPECT_EQ(options.particles.colorMap, "viridis");
    EXPECT_TRUE(options.particles.isLogarithmic && options.particles.isWrapped);
    EXPECT_EQ(options.particles.copies.e2, 3U);
    EXPECT_EQ(options.particles.mode, ParticleMode::SOLID_ARROWS);
    EXPECT_EQ(options.up, UpAxis::MINUS_Z);
    EXPECT_EQ(options.time, 1.5);
    EXPECT_EQ(options.format, "xyz");
    EXPECT_EQ(options.info, InfoForm::JSON);
    EXPECT_TRUE(parsePicture({"--out", "a.png", "--edges=hard"}).options->mesh.edges);
    EXPECT_FALSE(parsePicture({"--out", "a.png", "--up", "auto"}).options->up.has_value());
}

TEST(PictureWords, wordsThatMakeNoSenseAreUsageErrors) {
    struct Row {
        char const* option;
        std::vector<char const*> words;
    };
    for (Row const& row :
         {Row{"--mesh-color", {"", "green", "00ff0"}}, Row{"--opacity", {"", "-0.1", "1.1", "half"}},
          Row{"--line-width", {"", "0", "101", "2px"}},
          Row{"--clip", {"", "1,2,3", "1,0,0,1,0,1", "0,1,0,1,0,nan"}}, Row{"--colormap", {"", "rainbows"}},
          Row{"--replicate", {"", "1,2", "0,1,1", "1,1,1001", "a,b,c"}}, Row{"--up", {"", "w", "+z"}},
          Row{"--time", {"", "now", "inf"}}, Row{"--select", {""}}, Row{"--format", {""}}}) {
        for (char const* const word : row.words) {
            EXPECT_THAT(pictureError({"--out", "a.png", row.option, word}), HasSubstr(row.option)) << word;
        }
    }
    EXPECT_THAT(pictureError({"--out", "a.png", "--edges=soft"}), HasSubstr("--edges"));
    EXPECT_THAT(pictureError({"--info=xml"}), HasSubstr("--info"));
    EXPECT_THAT(pictureError({"--out", "a.png", "--frame", "1", "--time", "1"}), HasSubstr("--time"));
    EXPECT_THAT(pictureError({"--out", "a.png", "--colors", "000000,ffffff", "--colormap", "gray"}),
                HasSubstr("--colormap"));
    EXPECT_THAT(pictureError({"--out", "a.png", "--effect", "glass", "--clip", "0,1,0,1,0,1"}),
                HasSubstr("--clip"));
}
