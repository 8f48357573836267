#include "viewport/files/particles/TableRows.h"

#include "viewport/files/particles/ParticleFrame.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>
#include <vector>

using namespace vellum::viewport;
using testing::ElementsAre;
using testing::ElementsAreArray;

namespace {

/// The places, from 0, that particles had before they were sorted by these ids.
std::vector<double> order(std::vector<double> const& ids) {
    ParticleFrame frame;
    frame.channels.push_back({"place", {}, {}});
    for (std::size_t i = 0; i < ids.size(); ++i) {
        auto const place = static_cast<double>(i);
        frame.positions.push_back({place, 0, 0});
        frame.channels.front().values.push_back(place);
    }
    frame.sortBy(ids);
    for (std::size_t i = 0; i < ids.size(); ++i) {
        EXPECT_EQ(frame.positions[i].x, frame.channels.front().values[i]);
    }
    return frame.channels.front().values;
}

TEST(ParticleFrame_test, idsOfAllKindsAreSorted) {
    EXPECT_THAT(order({}), ElementsAre());
    EXPECT_THAT(order({3, 1, 4, 2}), ElementsAre(1, 3, 0, 2)) << "without gaps";
    EXPECT_THAT(order({7, 5, 9, 2}), ElementsAre(3, 1, 0, 2)) << "with gaps";
    EXPECT_THAT(order({-1, 1e15, -5}), ElementsAre(2, 0, 1)) << "far apart";
    EXPECT_THAT(order({4, 1, 1, 2}), ElementsAre(1, 2, 3, 0)) << "one twice, as many numbers as particles";
    EXPECT_THAT(order({9e15, 1, 9e15, 1}), ElementsAre(1, 3, 0, 2)) << "far apart, and twice";
}

TEST(ParticleFrame_test, manyMixedIdsAreSorted) {
    constexpr unsigned int count = 10007;
    std::vector<double> ids;
    std::vector<double> expected(count);
    for (unsigned int i = 0; i < count; ++i) {
        unsigned int const rank = i * 611 % count;
        ids.push_back(rank + 1);
        expected[rank] = static_cast<double>(i);
    }
    EXPECT_THAT(order(ids), ElementsAreArray(expected));
}

}  // namespace
