#include "viewport/program/Description.h"

#include "viewport/program/InfoDocument.h"
#include "viewport/program/describe_pick.h"

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
    LoadedFrame const loaded = someParticles();
    ValueList<double> const& values = loaded.frame.channels[0].values;
    ValueFacts const facts = factsOf(values.data(), values.size());
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

// == What is picked ==

namespace {

Picked someParticle() {
    Picked picked{16, "melt\n.dump"};
    picked.particle = PickedParticle{4, 12.0, {1e12, 0.1, 2}, {1e12, 0.1, 2}, {}};
    picked.particle->values.push_back({"element", {}, std::string("O")});
    picked.particle->values.push_back({"type", {}, 2.0, "iron"});
    picked.particle->values.push_back({"pe", "eV", std::nan("")});
    picked.particle->values.push_back(
        {"force", {}, vellum::Vector3<double>{1, -HUGE_VAL, 0.30000000000000004}});
    return picked;
}

}  // namespace

TEST(Description, aPickIsALineWithItsFactsBelow) {
    EXPECT_EQ(describePick(std::nullopt), "nothing\n");
    EXPECT_EQ(describePick(Picked{2, "gizmo move Y"}), "2 gizmo move Y\n");
    Picked picked = someParticle();
    EXPECT_EQ(describePick(picked),
              "16 melt?.dump\n  particle: 4\n  id: 12\n  position: 1e+12, 0.1, 2\n  element: O\n"
              "  type: 2 (iron)\n  pe [eV]: nan\n  force: 1, -inf, 0.30000000000000004\n");
    picked.particle->position.x = 1000000000000.25;
    picked.particle->id.reset();
    EXPECT_THAT(describePick(picked), HasSubstr("\n  particle: 4\n  position: 1000000000000.25, 0.1, 2\n"
                                                "  shown at: 1e+12, 0.1, 2\n"));
    picked = {17, "a.vtk"};
    picked.element = PickedElement{MeshElement::LINE, 3, 7, {1, 2, 3}, {0.5, 2, 3}, "steel", {}};
    picked.element->values.push_back({"stress", "Pa", 4.5});
    EXPECT_EQ(describePick(picked), "17 a.vtk\n  line: 3\n  position: 0.5, 2, 3\n  vertex: 7\n"
                                    "  vertex position: 1, 2, 3\n  material: steel\n  stress [Pa]: 4.5\n");
}

TEST(Description, aPickIsAPartOfItsPictureInTheDocument) {
    InfoDocument document;
    for (int i = 0; i < 4; ++i) {
        document.addPicture("a.png", 64, 48, "--view top");
    }
    document.setPick(0, someParticle());
    document.setPick(1, std::nullopt);
    Picked picked{17, "a.vtk"};
    picked.element = PickedElement{MeshElement::POINT, 3, 7, {1, 2, 3}, {1, 2, 3}, {}, {}};
    document.setPick(2, picked);
    nlohmann::json const pictures = nlohmann::json::parse(document.toText())["pictures"];
    nlohmann::json const& particle = pictures[0]["pick"]["particle"];
    EXPECT_EQ(particle["index"], 4);
    EXPECT_EQ(particle["id"], 12);
    EXPECT_EQ(particle["position"][0], 1e12);
    EXPECT_EQ(particle["values"][0]["value"], "O");
    EXPECT_EQ(particle["values"][1]["meaning"], "iron");
    EXPECT_TRUE(particle["values"][2]["value"].is_null());
    EXPECT_EQ(particle["values"][2]["unit"], "eV");
    EXPECT_EQ(particle["values"][3]["value"][2], 0.30000000000000004);
    EXPECT_TRUE(pictures[1]["pick"].is_null());
    EXPECT_TRUE(pictures[1].contains("pick"));
    EXPECT_EQ(pictures[2]["pick"]["element"]["kind"], "point");
    EXPECT_EQ(pictures[2]["pick"]["name"], 17);
    EXPECT_FALSE(pictures[3].contains("pick"));
}
