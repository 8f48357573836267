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
    ChannelFacts const facts = factsOf(someParticles().frame.channels[0]);
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
    EXPECT_TRUE(file["cell"].is_null());
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
