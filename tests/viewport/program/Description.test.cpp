#include "viewport/program/Description.h"

#include "viewport/program/InfoDocument.h"

#include <gmock/gmock.h>

#include <limits>

#include <nlohmann/json.hpp>

using namespace vellum::viewport;
using testing::HasSubstr;

namespace {

LoadedFrame someParticles() {
    LoadedFrame loaded;
    loaded.frame.file = "a.xyz";
    loaded.frame.positions = {{0, 0, 0}, {1, 2, 3}, {std::numeric_limits<float>::quiet_NaN(), 0, 0}};
    ParticleChannel channel;
    channel.name = "t";
    channel.values = {1, 3, std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()};
    loaded.frame.channels.push_back(channel);
    return loaded;
}

}  // namespace

TEST(Description, channelsAreMeasuredByTheirFiniteValues) {
    ChannelFacts const facts = factsOf(someParticles().frame.channels[0].values);
    EXPECT_EQ(facts.finiteCount, 2U);
    EXPECT_EQ(facts.undefinedCount, 1U);
    EXPECT_EQ(facts.infiniteCount, 1U);
    EXPECT_EQ(facts.minimum, 1);
    EXPECT_EQ(facts.maximum, 3);
    EXPECT_EQ(facts.mean, 2);
    EXPECT_THAT(describeParticles(someParticles()),
                HasSubstr("channel t:                      1 to 3, mean 2, 1 no number, 1 infinite\n"));
}

TEST(Description, theDocumentIsJsonWithTheSameFacts) {
    InfoDocument document;
    document.addParticles(someParticles());
    document.addPicture("a.png", 64, 48, "--view top");
    nlohmann::json const json = nlohmann::json::parse(document.toText());
    nlohmann::json const& file = json["files"][0];
    EXPECT_EQ(file["kind"], "particles");
    EXPECT_EQ(file["particles"], 3);
    EXPECT_EQ(file["bounds"]["to"], (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(file["channels"][0]["mean"], 2.0);
    EXPECT_EQ(file["channels"][0]["undefined"], 1);
    EXPECT_TRUE(file["box"].is_null());
    EXPECT_TRUE(json["driver"].is_null());
    EXPECT_EQ(json["pictures"][0]["camera"], "--view top");
}

TEST(Description, namesThatAreNoUtf8DoNotSpoilTheDocument) {
    InfoDocument document;
    LoadedFrame loaded = someParticles();
    loaded.frame.file = "a\xFF\n\".xyz";
    document.addParticles(loaded);
    EXPECT_EQ(nlohmann::json::parse(document.toText())["files"][0]["file"], "a\xEF\xBF\xBD\n\".xyz");
}

TEST(Description, everythingThatParticlesHaveIsTold) {
    LoadedFrame loaded = someParticles();
    loaded.count = 2;
    loaded.timesteps = {0, 10};
    loaded.times = {std::nullopt, 0.5};
    loaded.frame.channels[0].unit = "K";
    loaded.frame.labels.push_back({"species", {"Si", "O"}, {0, 1, 1}, true});
    loaded.frame.typeNames[3] = "Fe";
    loaded.frame.box = ParticleBox{{1, 2, 3}, {{4, 0, 0}, {0, 5, 0}, {0, 0, 6}}, {true, false, true}};
    loaded.frame.notes = {"it is odd"};
    InfoDocument document;
    document.addParticles(loaded);
    nlohmann::json const file = nlohmann::json::parse(document.toText())["files"][0];
    EXPECT_EQ(file["channels"][0]["unit"], "K");
    EXPECT_EQ(file["timesteps"], (std::vector<int>{0, 10}));
    EXPECT_EQ(file["times"].dump(), "[null,0.5]");
    EXPECT_EQ(file["labels"][0]["words"], (std::vector<std::string>{"Si", "O"}));
    EXPECT_EQ(file["labels"][0]["elements"], true);
    EXPECT_EQ(file["types"][0]["name"], "Fe");
    EXPECT_EQ(file["up"], "z");
    EXPECT_EQ(file["box"]["origin"], (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(file["box"]["edges"][1], (std::vector<double>{0, 5, 0}));
    EXPECT_EQ(file["box"]["periodic"].dump(), "[true,false,true]");
    EXPECT_EQ(file["notes"].dump(), "[\"it is odd\"]");
    EXPECT_THAT(describeParticles(loaded), HasSubstr("box from:                       1, 2, 3\n"))
        << "the text calls it as the document does";
    EXPECT_THAT(describeParticles(loaded), HasSubstr("channel t [K]:"));
    EXPECT_THAT(describeParticles(loaded), HasSubstr("elements species:               Si, O\n"));
}

TEST(Description, everythingThatAMeshHasIsTold) {
    MeshData mesh;
    mesh.up = UpAxis::MINUS_Z;
    mesh.positions = {{0, 0, 0}, {1, 0, 0}};
    mesh.lines = {{0, 1}};
    mesh.points = {0, 1};
    mesh.scalars.push_back({"T", "K", {1, 3}});
    mesh.animations = {{"walk", 1.5}, {"", 2}};
    Material material;
    material.opacityTexture = "leaf.png";
    mesh.materials = {material};
    InfoDocument document;
    document.addMesh("a.obj", mesh);
    nlohmann::json const file = nlohmann::json::parse(document.toText())["files"][0];
    EXPECT_EQ(file["up"], "-z");
    EXPECT_EQ(file["lines"], 1);
    EXPECT_EQ(file["points"], 2);
    EXPECT_EQ(file["scalars"][0]["unit"], "K");
    EXPECT_EQ(file["scalars"][0]["mean"], 2);
    EXPECT_EQ(file["animations"][0]["seconds"], 1.5);
    EXPECT_TRUE(file["animations"][1]["name"].is_null());
    EXPECT_EQ(file["materials"][0]["opacityTexture"], "leaf.png");
    std::string const text = describeMesh("a.obj", mesh);
    EXPECT_THAT(text, HasSubstr("up:                             -z\n"));
    EXPECT_THAT(text, HasSubstr("scalar T [K]:                   1 to 3, mean 2\n"));
    EXPECT_THAT(text, HasSubstr("animations:                     walk 1.5 s, unnamed 2 s\n"));
}
