#include "foundation/geometry/equal_positions.h"

#include "foundation/basic/MemoryGuard.h"
#include "foundation/basic/threads.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace vellum {

namespace {

constexpr std::size_t RANGE = 1 << 14;

std::uint32_t hashOf(Vector3<double> const& p) {
    std::uint64_t hash = 0;
    for (double const element : {p.x, p.y, p.z}) {
        // Adding 0 turns -0 into +0: the two are equal and so must have the same hash.
        double const unsignedZero = element + 0.0;
        std::uint64_t bits = 0;
        std::memcpy(&bits, &unsignedZero, sizeof bits);
        hash = (hash ^ bits) * 0x9E3779B97F4A7C15U;
        hash ^= hash >> 32;
    }
    return static_cast<std::uint32_t>(hash);
}

bool areEqual(Vector3<double> const& a, Vector3<double> const& b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

/// The different positions of one part. Linear probing in a table that is at most half full.
class PositionTable {
public:
    PositionTable(Vector3<double> const* positions, std::size_t expected) : positions(positions) {
        std::size_t size = 64;
        while (size < expected) {
            size *= 2;
        }
        slots.resize(size);
    }

    void prefetch([[maybe_unused]] std::uint32_t hash) const {
#if defined(__GNUC__)
        __builtin_prefetch(&slots[hash & (slots.size() - 1)], 1);
#endif
    }

    /// The index of an equal position that was asked for before, or its own.
    unsigned int findOrAdd(unsigned int index, std::uint32_t hash) {
        Slot& slot = _slotOf(index, hash);
        if (slot.first == NONE) {
            slot = {hash, index};
            if (2 * ++used > slots.size()) {
                _grow();
            }
            return index;
        }
        return slot.first;
    }

private:
    static constexpr unsigned int NONE = 0xFFFFFFFFU;

    struct Slot {
        std::uint32_t hash = 0;
        unsigned int first = NONE;
    };

    Slot& _slotOf(unsigned int index, std::uint32_t hash) {
        std::size_t place = hash & (slots.size() - 1);
        while (slots[place].first != NONE &&
               (slots[place].hash != hash || !areEqual(positions[slots[place].first], positions[index]))) {
            place = (place + 1) & (slots.size() - 1);
        }
        return slots[place];
    }

    void _grow() {
        std::vector<Slot> former(slots.size() * 2);
        former.swap(slots);
        for (Slot const& slot : former) {
            if (slot.first != NONE) {
                std::size_t place = slot.hash & (slots.size() - 1);
                while (slots[place].first != NONE) {
                    place = (place + 1) & (slots.size() - 1);
                }
                slots[place] = slot;
            }
        }
    }

    Vector3<double> const* positions;
    std::vector<Slot> slots;  // a power of two
    std::size_t used = 0;
};

/// Finds the equal ones among the positions whose hash belongs to a part.
class PartSearch {
public:
    PartSearch(Vector3<double> const* positions, std::uint32_t const* hashes, std::size_t expected,
               unsigned int* firsts)
        : table(positions, expected), hashes(hashes), firsts(firsts) {}

    /// The table is larger than the caches, so the slots of some positions are on the way while others are
    /// looked at.
    void take(unsigned int index) {
        table.prefetch(hashes[index]);
        waiting[count++] = index;
        if (count == TOGETHER) {
            finish();
        }
    }

    void finish() {
        for (std::size_t i = 0; i < count; ++i) {
            firsts[waiting[i]] = table.findOrAdd(waiting[i], hashes[waiting[i]]);
        }
        count = 0;
    }

private:
    static constexpr std::size_t TOGETHER = 32;

    PositionTable table;
    std::uint32_t const* hashes;
    unsigned int* firsts;
    unsigned int waiting[TOGETHER];
    std::size_t count = 0;
};

}  // namespace

std::unique_ptr<unsigned int[]> firstEqualPositions(Vector3<double> const* positions, unsigned int count) {
    // Equal positions have the same hash and so are in the same part. Each part looks at all hashes.
    constexpr int MOST_PARTS = 8;
    std::size_t const partCount =
        count < RANGE ? 1 : static_cast<std::size_t>(std::min(threadLimit(), MOST_PARTS));
    std::unique_ptr<std::uint32_t[]> const hashes(new std::uint32_t[count]);
    std::unique_ptr<unsigned int[]> firsts(new unsigned int[count]);
    forRanges(count, RANGE, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            hashes[i] = hashOf(positions[i]);
        }
    });
    MemoryGuard guard;
    forRanges(partCount, 1, [&](std::size_t part, std::size_t) {
        guard.run([&] {
            PartSearch search(positions, hashes.get(), count / 4 / partCount, firsts.get());
            for (unsigned int i = 0; i < count; ++i) {
                // The upper bits choose the part, the lower ones the slot.
                if (std::uint64_t{hashes[i]} * partCount >> 32 == part) {
                    search.take(i);
                }
            }
            search.finish();
        });
    });
    guard.check();
    return firsts;
}

}  // namespace vellum
