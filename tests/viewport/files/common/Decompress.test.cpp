#include "viewport/files/common/Decompress.h"

#include "foundation/basic/threads.h"
#include "tests/viewport/files/common/compressed_texts.h"
#include "viewport/files/common/DecompressAhead.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

using namespace vellum::viewport;
using compressed_texts::Codec;
using compressed_texts::CODECS;

namespace {

constexpr std::uint64_t ENOUGH = 1'000'000;

std::string someText() {
    std::string text;
    for (int i = 0; i < 30'000; ++i) {
        text += std::to_string(i * 7919) + "\n";
    }
    return text;
}

}  // namespace

TEST(Decompress, everyCodecGivesTheText) {
    std::string const text = someText();
    for (Codec const& codec : CODECS) {
        std::string const bytes = codec.compress(text);
        ASSERT_TRUE(isCompressed(bytes)) << codec.name;
        std::vector<std::uint64_t> told;
        Result<DecompressedText> const result =
            decompress(bytes, ENOUGH, [&](std::uint64_t done, std::uint64_t all) {
                EXPECT_EQ(all, bytes.size());
                told.push_back(done);
            });
        ASSERT_TRUE(result.isOk()) << result.fault().line();
        EXPECT_EQ(result.value().buffer.bytes(), text) << codec.name;
        EXPECT_FALSE(result.value().isCutOff) << codec.name;
        EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
        EXPECT_EQ(decompressStart(bytes, 1000), text.substr(0, 1000)) << codec.name;
        EXPECT_EQ(decompressStart(codec.compress("short"), 1000), "short") << codec.name;
    }
    EXPECT_FALSE(isCompressed("text"));
    EXPECT_FALSE(isCompressed(""));
}

TEST(Decompress, membersFollowOneAnotherAndTheRestIsIgnored) {
    for (Codec const& codec : CODECS) {
        std::string const bytes = codec.compress("one ") + codec.compress("two") + std::string(100, '\0');
        Result<DecompressedText> const result = decompress(bytes, ENOUGH, {});
        ASSERT_TRUE(result.isOk()) << codec.name;
        EXPECT_EQ(result.value().buffer.bytes(), "one two") << codec.name;
        EXPECT_FALSE(result.value().isCutOff) << codec.name;
        EXPECT_EQ(decompressStart(bytes, 100), "one two") << codec.name;
    }
}

TEST(Decompress, dataCutOffGiveThePartThatIsThere) {
    std::string const text = someText();
    for (Codec const& codec : CODECS) {
        std::string const bytes = codec.compress(text);
        for (std::size_t const size :
             {bytes.size() - 1, bytes.size() - 9, bytes.size() * 3 / 4, std::size_t(6)}) {
            std::vector<char> const part(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
            Result<DecompressedText> const result = decompress({part.data(), part.size()}, ENOUGH, {});
            ASSERT_TRUE(result.isOk()) << codec.name << size << result.fault().line();
            EXPECT_TRUE(result.value().isCutOff) << codec.name << size;
            std::string_view const given = result.value().buffer.bytes();
            EXPECT_EQ(given, text.substr(0, given.size())) << codec.name;
            EXPECT_EQ(!given.empty(), size > 6) << codec.name << size;
        }
    }
}

TEST(Decompress, aTextBeyondTheLimitIsAFault) {
    for (Codec const& codec : CODECS) {
        Result<DecompressedText> const result =
            decompress(codec.compress(std::string(200'000, 'x')), 100'000, {});
        ASSERT_FALSE(result.isOk()) << codec.name;
        EXPECT_EQ(result.fault().message, "holds more than 100000 bytes uncompressed");
    }
}

TEST(Decompress, damagedDataAreAFaultOrCutOffNeverAnotherText) {
    std::string const text = someText().substr(0, 2000);
    for (Codec const& codec : CODECS) {
        std::string const bytes = codec.compress(text);
        bool hadFault = false;
        // The first bytes are the signature, the ones after it in gzip hold names and times.
        for (std::size_t place = 10; place < bytes.size(); ++place) {
            std::string damaged = bytes;
            damaged[place] = static_cast<char>(damaged[place] ^ 0x10);
            Result<DecompressedText> const result = decompress(damaged, ENOUGH, {});
            hadFault = hadFault || !result.isOk();
            if (result.isOk() && !result.value().isCutOff) {
                EXPECT_EQ(result.value().buffer.bytes(), text) << codec.name << place;
            }
        }
        EXPECT_TRUE(hadFault) << codec.name;
    }
}

// == DecompressAhead ==

namespace {

/// What is there or the fault, and how often somebody waited.
std::string aheadOf(std::string_view bytes, std::uint64_t limit, bool& isCutOff) {
    std::optional<DecompressedText> text;
    Progress const nobody;
    DecompressAhead ahead(bytes, limit, text, nobody);
    std::string seen;
    while (true) {
        std::string_view const there = ahead.beyond(seen.size());
        EXPECT_EQ(there.substr(0, seen.size()), seen);
        if (there.size() == seen.size()) {
            break;
        }
        seen = there;
    }
    Result<std::string_view> const whole = ahead.whole();
    if (!whole.isOk()) {
        return whole.fault().line();
    }
    EXPECT_EQ(whole.value().substr(0, seen.size()), seen);
    isCutOff = text->isCutOff;
    return std::string(whole.value());
}

/// More than half a MB, and some hundred KB compressed.
std::string longText() {
    std::string text;
    for (unsigned int i = 0; i < 60'000; ++i) {
        text += std::to_string(i * 2654435761U) + "\n";
    }
    return text;
}

}  // namespace

TEST(DecompressAhead, givesWhatIsGivenWithoutAThread) {
    std::string const text = longText();
    // So much larger than its compressed bytes that the thread leaves the rest to its owner.
    std::string even;
    for (unsigned int i = 0; i < 12'000; ++i) {
        even += std::string(500, 'x') + std::to_string(i * 2654435761U);
    }
    for (Codec const& codec : CODECS) {
        std::string const bytes = codec.compress(text);
        std::string damaged = bytes;
        damaged[bytes.size() / 2] = static_cast<char>(~damaged[bytes.size() / 2]);
        std::string const members = bytes + codec.compress("and more") + "rest";
        for (std::string const& each :
             {bytes, bytes.substr(0, bytes.size() * 2 / 3), damaged, members, codec.compress(even),
              codec.compress("short"), std::string("\x1F\x8B")}) {
            for (std::uint64_t const limit : {std::uint64_t(100'000'000), std::uint64_t(500'000)}) {
                Result<DecompressedText> const expected = decompress(each, limit, {});
                bool isCutOff = false;
                std::string const given = aheadOf(each, limit, isCutOff);
                EXPECT_TRUE(given ==
                            (expected.isOk() ? expected.value().buffer.bytes() : expected.fault().line()))
                    << codec.name << " " << each.size() << " " << limit;
                EXPECT_EQ(isCutOff, expected.isOk() && expected.value().isCutOff) << codec.name;
            }
        }
    }
}

TEST(DecompressAhead, textIsThereBeforeItsEnd) {
    std::string const bytes = CODECS[0].compress(longText());
    std::optional<DecompressedText> text;
    Progress const nobody;
    DecompressAhead ahead(bytes, 1'000'000'000, text, nobody);
    std::size_t const first = ahead.beyond(0).size();
    if (vellum::threadLimit() > 1) {
        EXPECT_GT(first, 0U);
        EXPECT_GE(ahead.expectedSize(), first);
    }
    EXPECT_FALSE(text);
    ASSERT_TRUE(ahead.whole().isOk());
    EXPECT_EQ(text->buffer.bytes(), longText());
}

TEST(DecompressAhead, whoeverWaitsCanGiveUp) {
    std::string const bytes = CODECS[0].compress(longText());
    std::optional<DecompressedText> text;
    Progress const giveUp = [](std::uint64_t, std::uint64_t) { throw Cancelled(); };
    {
        DecompressAhead ahead(bytes, 1'000'000'000, text, giveUp);
        EXPECT_THROW(ahead.beyond(0), Cancelled);
        EXPECT_THROW(static_cast<void>(ahead.whole()), Cancelled);
    }
    { DecompressAhead const unused(bytes, 1'000'000'000, text, giveUp); }
    EXPECT_FALSE(text);
}
