#include "viewport/files/particles/TableRows.h"

#include "foundation/basic/threads.h"
#include "tests/support/build_facts.h"
#include "tests/support/thread_limits.h"
#include "viewport/files/particles/CsvFile.h"
#include "viewport/files/particles/LammpsDump.h"
#include "viewport/files/particles/ParticleFrame.h"
#include "viewport/files/particles/XyzFile.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <random>
#include <string>
#include <string_view>
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
    frame.sortBy({ids.begin(), ids.end()});
    for (std::size_t i = 0; i < ids.size(); ++i) {
        EXPECT_EQ(frame.positions[i].x, frame.channels.front().values[i]);
    }
    ValueList<double> const& values = frame.channels.front().values;
    return {values.begin(), values.end()};
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

// == Rows on several threads ==

/// All that a reader says about a text, as bytes that can be compared: values bit by bit, or the fault.
std::string outcome(Result<LoadedFrame> const& result) {
    if (!result.isOk()) {
        return "fault: " + result.fault().message;
    }
    ParticleFrame const& frame = result.value().frame;
    std::string text = "count " + std::to_string(frame.positions.size()) + " " + result.value().warning;
    auto const add = [&text](auto const& values) {
        text.append(reinterpret_cast<char const*>(values.data()), values.size() * sizeof values[0]);
    };
    add(frame.positions);
    for (ParticleChannel const& channel : frame.channels) {
        text += channel.name;
        add(channel.values);
    }
    for (ParticleLabels const& labels : frame.labels) {
        text += labels.name;
        add(labels.indices);
        for (std::string const& word : labels.words) {
            text += word + " ";
        }
    }
    return text;
}

/// The same with every limit of threads; the outcome with one.
template <class Read>
std::string sameOnAllThreads(Read const& read, std::string const& text) {
    vellum::setThreadLimit(1);
    std::string const expected = outcome(read(text));
    for (int const threads : threadLimits()) {
        if (threads == 1) {
            continue;  // it is what the others are compared with
        }
        vellum::setThreadLimit(threads);
        bool const isSame = outcome(read(text)) == expected;
        EXPECT_TRUE(isSame) << threads << " threads; with one: " << expected.substr(0, 200);
    }
    vellum::setThreadLimit(0);
    return expected;
}

Result<LoadedFrame> readDump(std::string const& text) {
    return readLammpsDump(text, std::nullopt, {});
}

Result<LoadedFrame> readTable(std::string const& text) {
    return readCsv(text, {});
}

/// Rows of random numbers, long enough for several slices and batches.
class RowWriter {
public:
    std::string number() {
        double const value =
            std::ldexp(static_cast<double>(random()) - 2147483648.0, -static_cast<int>(random() % 40));
        char text[400];
        auto const print = [&](std::chars_format format, int digits) {
            std::to_chars_result const end = std::to_chars(text, text + sizeof text, value, format, digits);
            return std::string(text, end.ptr);
        };
        switch (random() % 6) {
        case 0:
            return print(std::chars_format::fixed, 3);
        case 1:
            return print(std::chars_format::fixed, 0);
        case 2:
            return print(std::chars_format::general, 17);
        case 3:
            return print(std::chars_format::scientific, 6);
        case 4:
            return value > 0 ? "+" + print(std::chars_format::general, 4) : "-inf";
        default:
            return print(std::chars_format::general, 6);
        }
    }

    std::string row(std::size_t id, std::string const& separator, std::string const& end) {
        std::string text = std::to_string(id) + separator;
        for (int i = 0; i < 4; ++i) {
            text += number() + (i < 3 ? separator : end);
        }
        return text;
    }

    std::mt19937 random{7};
};

std::string headOfDump(std::size_t count) {
    return "ITEM: TIMESTEP\n0\nITEM: NUMBER OF ATOMS\n" + std::to_string(count) +
           "\nITEM: BOX BOUNDS pp pp pp\n0 1\n0 1\n0 1\nITEM: ATOMS id x y z q\n";
}

constexpr std::size_t MANY_ROWS = 40'001;

TEST(TableRows, rowsAreTheSameOnAnyNumberOfThreads) {
    struct Row {
        char const* name;
        char const* separator;
        char const* end;
    };
    for (Row const& form :
         {Row{"line feeds", " ", "\n"}, Row{"CR LF", " ", "\r\n"}, Row{"blanks", "  \t", " \n"}}) {
        RowWriter writer;
        std::string rows;
        for (std::size_t i = 0; i < MANY_ROWS; ++i) {
            rows += writer.row(i * 7919 % MANY_ROWS + 1, form.separator, form.end);
        }
        std::string const text = headOfDump(MANY_ROWS) + rows;
        EXPECT_EQ(sameOnAllThreads(readDump, text).substr(0, 11), "count 40001") << form.name;
        std::string const open = text.substr(0, text.size() - std::strlen(form.end));
        EXPECT_EQ(sameOnAllThreads(readDump, open).substr(0, 11), "count 40001") << form.name;
    }
}

TEST(TableRows, valuesAreThoseOfTheText) {
    RowWriter writer;
    std::string text = headOfDump(MANY_ROWS);
    std::vector<double> expected;
    for (std::size_t i = 0; i < MANY_ROWS; ++i) {
        std::string const last = writer.number();
        text += std::to_string(i + 1) + " " + std::to_string(i) + " 0 -1 " + last + "\n";
        expected.push_back(std::strtod(last.c_str(), nullptr));
    }
    Result<LoadedFrame> const result = readDump(text);
    ASSERT_TRUE(result.isOk());
    ParticleFrame const& frame = result.value().frame;
    ASSERT_EQ(frame.positions.size(), MANY_ROWS);
    for (std::size_t i = 0; i < MANY_ROWS; ++i) {
        ASSERT_EQ(frame.positions[i].x, static_cast<double>(i));
        ASSERT_EQ(frame.positions[i].z, -1);
    }
    EXPECT_THAT(frame.channel("q")->values, ElementsAreArray(expected));
}

TEST(TableRows, theFirstFaultIsReportedWithItsLine) {
    RowWriter writer;
    std::vector<std::string> rows;
    for (std::size_t i = 0; i < MANY_ROWS; ++i) {
        rows.push_back(writer.row(i + 1, " ", "\n"));
    }
    struct Damage {
        char const* row;
        char const* reason;
    };
    std::size_t pair = 0;
    for (Damage const& damage :
         {Damage{"5 1 2\n", "has 3 of 5 values"}, Damage{"5 1 2 3 4 5\n", "has more than 5 values"},
          Damage{"5 1 2x 3 4\n", "'2x' in column 'y' is not a number"},
          Damage{"5.5 1 2 3 4\n", "the particle's id is not a whole number"},
          Damage{"\n", "has 0 of 5 values"},
          Damage{"ITEM: A\n", "the frame has fewer than the 40001 atoms that it declares"}}) {
        for (std::size_t const place :
             {std::size_t(0), std::size_t(9'000), std::size_t(23'456), MANY_ROWS - 1}) {
            // Under the sanitizer all kinds of damage and all places, but not each kind at each place.
            bool const isChosen = pair / 4 % 4 == pair % 4;
            ++pair;
            if (isAddressSanitized() && !isChosen) {
                continue;
            }
            std::vector<std::string> damaged = rows;
            damaged[place] = damage.row;
            damaged[std::min(place + 5'000, MANY_ROWS - 1)] = damage.row;
            std::string text = headOfDump(MANY_ROWS);
            for (std::string const& row : damaged) {
                text += row;
            }
            EXPECT_EQ(sameOnAllThreads(readDump, text),
                      "fault: line " + std::to_string(place + 10) + ": " + damage.reason);
        }
    }
}

TEST(TableRows, linesWithoutWordsAreSkippedOnAllThreads) {
    RowWriter writer;
    std::string const head = "id,x,y,z,q\n";
    std::string plain = head;
    std::string text = head;
    for (std::size_t i = 0; i < MANY_ROWS; ++i) {
        std::string const row = writer.row(i + 1, ",", "\n");
        plain += row;
        text += row;
        if (writer.random() % 50 == 0) {
            text += i % 3 == 0 ? "\n" : i % 3 == 1 ? "  \r\n\n" : "\n\t\n\n";
        }
    }
    std::string const expected = sameOnAllThreads(readTable, plain);
    EXPECT_EQ(expected.substr(0, 11), "count 40001");
    EXPECT_TRUE(sameOnAllThreads(readTable, text) == expected);
    EXPECT_TRUE(sameOnAllThreads(readTable, text + "\n  ") == expected) << "blanks at the end";
    // The line numbers count them.
    auto const lines = std::count(text.begin(), text.end(), '\n');
    EXPECT_EQ(sameOnAllThreads(readTable, text + "1,2,,4,5\n"),
              "fault: line " + std::to_string(lines + 1) + ": '' in column 'y' is not a number");
}

TEST(TableRows, wordsHaveTheOrderOfTheirFirstRowsOnAllThreads) {
    RowWriter writer;
    for (std::size_t const kinds : {std::size_t(3), std::size_t(500), MANY_ROWS}) {
        std::string text = "name,x,y,z\n";
        std::vector<std::string> names;
        for (std::size_t i = 0; i < MANY_ROWS; ++i) {
            names.push_back("w" + std::to_string(std::min<std::size_t>(i / 100, writer.random() % kinds)));
            names.back() = kinds == MANY_ROWS ? "n" + std::to_string(i) : names.back();
            text += names.back() + "," + writer.number() + ",1,1\n";
        }
        sameOnAllThreads(readTable, text);
        Result<LoadedFrame> const result = readTable(text);
        ASSERT_TRUE(result.isOk());
        ParticleLabels const& labels = result.value().frame.labels.at(0);
        std::size_t next = 0;
        for (std::size_t i = 0; i < MANY_ROWS; ++i) {
            ASSERT_EQ(labels.words[labels.indices[i]], names[i]) << i;
            ASSERT_LE(labels.indices[i], next) << i;
            next += labels.indices[i] == next ? 1 : 0;
        }
    }
}

TEST(TableRows, aColumnOfMissingCellsTurnsOutToBeWordsOnAllThreads) {
    std::string text = "x,y,z,kind\n";
    for (std::size_t i = 0; i < MANY_ROWS; ++i) {
        text += "1,2,3," + std::string(i < 30'000 ? "NA" : i % 2 == 0 ? "ash" : "oak") + "\n";
    }
    sameOnAllThreads(readTable, text);
    Result<LoadedFrame> const result = readTable(text);
    ASSERT_TRUE(result.isOk());
    EXPECT_THAT(result.value().frame.labels.at(0).words, ElementsAre("NA", "ash", "oak"));
}

}  // namespace
