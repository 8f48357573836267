#include "viewport/content/ChannelCatalog.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cmath>
#include <limits>
#include <numeric>
#include <thread>

using namespace vellum::viewport;
using testing::ElementsAre;

namespace {

ParticleFrame frameOf(std::vector<double> const& values) {
    ParticleFrame frame;
    frame.file = "folder/a.dump";
    for (double const value : values) {
        frame.positions.push_back({value, 1, 2});
    }
    frame.channels.push_back({"heat", {values.begin(), values.end()}, "K"});
    return frame;
}

std::optional<ChannelFacts> factsOf(Content const& content, std::string const& name) {
    return ChannelFacts::of(content, name, false);
}

/// Asks again and again, as a window does.
template <class Ask>
auto awaited(Ask const& ask) {
    auto answer = ask();
    for (int i = 0; i < 2000 && answer == nullptr; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        answer = ask();
    }
    return answer;
}

}  // namespace

TEST(ChannelFacts, tellTheEndsAndHowValuesAreSpread) {
    Content content;
    content.particles.push_back(frameOf({0, 0, 1, 64}));
    ChannelFacts const facts = *factsOf(content, "heat");
    EXPECT_EQ(facts.least, 0);
    EXPECT_EQ(facts.most, 64);
    EXPECT_EQ(facts.unit, "K");
    EXPECT_EQ(facts.bins[0], 2U);
    EXPECT_EQ(facts.bins[1], 1U);
    EXPECT_EQ(facts.bins[63], 1U) << "the largest value is in the last part";
    EXPECT_EQ(std::accumulate(facts.bins.begin(), facts.bins.end(), std::size_t(0)), 4U);
    EXPECT_EQ(facts.fullestBin(), 2U);
}

TEST(ChannelFacts, countWhatIsNoFiniteNumberApart) {
    Content content;
    content.particles.push_back(frameOf({std::nan(""), 3, std::numeric_limits<double>::infinity()}));
    ChannelFacts const facts = *factsOf(content, "heat");
    EXPECT_EQ(facts.count, 1U);
    EXPECT_EQ(facts.undefinedCount, 2U);
    EXPECT_EQ(facts.least, 3);
    EXPECT_EQ(facts.most, 3);
}

TEST(ChannelFacts, spreadValuesWhoseDifferenceNoDoubleHolds) {
    Content content;
    content.particles.push_back(frameOf({-1.7e308, 1.7e308, 0}));
    ChannelFacts const facts = *factsOf(content, "heat");
    EXPECT_EQ(facts.bins[0], 1U);
    EXPECT_EQ(facts.bins[32], 1U);
    EXPECT_EQ(facts.bins[63], 1U);
}

TEST(ChannelFacts, areOfAllFilesAndAlsoOfMeshes) {
    Content content;
    content.particles.push_back(frameOf({1, 2}));
    content.particles.push_back(frameOf({-5}));
    MeshData mesh;
    mesh.scalars.push_back({"heat", "", {100}});
    content.meshes.push_back(mesh);
    EXPECT_EQ(factsOf(content, "heat")->count, 4U);
    EXPECT_EQ(factsOf(content, "heat")->least, -5);
    EXPECT_EQ(factsOf(content, "heat")->most, 100);
    EXPECT_FALSE(factsOf(content, "cold"));
}

TEST(ChannelFacts, areNotThereWhereTheyAreCancelled) {
    Content content;
    content.particles.push_back(frameOf({1, 2}));
    EXPECT_FALSE(ChannelFacts::of(content, "heat", true));
}

TEST(channelNames, areOfferedOnceWithThoseOfInterestFirst) {
    Content content;
    content.particles.push_back(frameOf({1}));
    content.particles.front().channels.push_back({"id", {1}, ""});
    content.particles.push_back(frameOf({1}));
    EXPECT_THAT(channelNames(content), ElementsAre("heat", "id", "x", "y", "z"));
}

TEST(factsOfFiles, tellWhatIsInThem) {
    Content content;
    content.particles.push_back(frameOf({-1, 4, std::nan("")}));
    content.frameCounts.push_back(7);
    MeshData mesh;
    mesh.name = "b.ply";
    mesh.positions = {{0, 0, 0}, {1, 0, 0}, {0, 2, 0}};
    mesh.triangles = {{0, 1, 2}};
    content.meshes.push_back(mesh);
    std::vector<FileFacts> const files = factsOfFiles(content, false);
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(files[0].name, "b.ply");
    EXPECT_EQ(files[0].triangleCount, 1U);
    EXPECT_EQ(files[0].bounds->max.y, 2);
    EXPECT_EQ(files[1].name, "a.dump");
    EXPECT_EQ(files[1].extension, "dump");
    EXPECT_EQ(files[1].particleCount, 3U);
    EXPECT_EQ(files[1].frameCount, 7U);
    EXPECT_EQ(files[1].bounds->min.x, -1);
    EXPECT_EQ(files[1].bounds->max.x, 4);
}

TEST(ChannelCatalog, knowsFactsAWhileAfterSomebodyAsksAndWakesThem) {
    std::atomic<int> wakes{0};
    ChannelCatalog catalog([&wakes] { ++wakes; });
    EXPECT_EQ(catalog.facts("heat"), nullptr) << "of no content";
    auto const content = std::make_shared<Content>();
    content->particles.push_back(frameOf({1, 2}));
    catalog.setContent(content);
    EXPECT_EQ(catalog.facts("heat"), nullptr);
    ChannelFacts const* const facts = awaited([&] { return catalog.facts("heat"); });
    ASSERT_NE(facts, nullptr);
    EXPECT_EQ(facts->most, 2);
    EXPECT_GE(wakes, 1);
    ASSERT_NE(awaited([&] { return catalog.files(); }), nullptr);
    EXPECT_EQ(catalog.facts("heat"), facts) << "each is computed once";
}

TEST(ChannelCatalog, forgetsTheFactsOfAFormerContent) {
    ChannelCatalog catalog;
    auto const content = std::make_shared<Content>();
    content->particles.push_back(frameOf({1, 2}));
    catalog.setContent(content);
    static_cast<void>(awaited([&] { return catalog.facts("heat"); }));
    auto const other = std::make_shared<Content>();
    other->particles.push_back(frameOf({9}));
    catalog.setContent(other);
    EXPECT_EQ(awaited([&] { return catalog.facts("heat"); })->most, 9);
}

TEST(ChannelCatalog, factsOfTheFormerFrameStayUntilThoseOfTheNextAreKnown) {
    auto const contentWith = [](std::vector<double> const& values) {
        auto content = std::make_shared<Content>();
        content->particles.push_back(frameOf(values));
        return content;
    };
    ChannelCatalog catalog;
    catalog.setContent(contentWith({1, 2}));
    ASSERT_NE(awaited([&] { return catalog.facts("heat"); }), nullptr);
    ASSERT_NE(awaited([&] { return catalog.files(); }), nullptr);
    catalog.follow(contentWith({1, 2, 5}));
    ASSERT_NE(catalog.facts("heat"), nullptr);
    ASSERT_NE(catalog.files(), nullptr);
    EXPECT_NE(awaited([&] {
                  ChannelFacts const* const facts = catalog.facts("heat");
                  return facts->most == 5 ? facts : nullptr;
              }),
              nullptr);
    EXPECT_NE(awaited([&] {
                  std::vector<FileFacts> const* const files = catalog.files();
                  return files->at(0).particleCount == 3 ? files : nullptr;
              }),
              nullptr);
    catalog.setContent(contentWith({1}));
    EXPECT_EQ(catalog.facts("heat"), nullptr) << "other files have other values";
}
