#include "internal/particles/particle_records.h"

#include "internal/fresh_pages.h"
#include "internal/long_loops.h"

#include "foundation/geometry/ParticleEntry_v2.h"
#include "foundation/geometry/ParticleSystemChunk_v2.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vellum {

namespace {

// More records than this exceed the cache, so they bypass it.
constexpr std::size_t STREAMED_BYTES = std::size_t{8} << 20;

// The values of a chunk without a channel.
constexpr float ZEROS[VECTOR_FLOATS * ParticleSystemChunk_v2::CAPACITY] = {};

RecordWriter fastestRecordWriter() {
    if (RecordWriter const writer = avxRecordWriter()) {
        return writer;
    }
    if (RecordWriter const writer = sse2RecordWriter()) {
        return writer;
    }
    return plainRecordWriter();
}

// Collects particles and writes their records. Long runs are written directly from the channels; short ones
// are staged, so that the writer is called for many at once.
template <unsigned int valueFloats>
class RecordSink {
public:
    RecordSink(RecordFormula const& formula, float* out, bool streams)
        : formula(formula), out(out), streams(streams) {}

    // Adds `count` particles: those at the ascending offsets, or without offsets the first of `readable`
    // consecutive ones.
    void put(float const* positions, float const* values, unsigned int const* offsets, unsigned int count,
             unsigned int readable) {
        if (count == 0) {
            return;
        }
        unsigned int const last = offsets != nullptr ? offsets[count - 1] : count - 1;
        lastPosition = positions + VECTOR_FLOATS * last;
        lastValue = values + std::size_t{valueFloats} * last;
        unsigned int k = 0;
        if (count >= MANY) {
            // Staged particles up to the end of a cache line, full lines directly from the channels, and the
            // rest staged again.
            k = (LINE_RECORDS - _beyondLine(staged)) % LINE_RECORDS;
            _stage(positions, values, offsets, 0, k);
            flush();
            unsigned int end = count - (count - k) % LINE_RECORDS;
            // The writer reads beyond a vector, which it must not do after the last one of the run.
            end -= end == count && last + 1 == readable ? LINE_RECORDS : 0;
            _write(_first<VECTOR_FLOATS>(positions, offsets, k), _first<valueFloats>(values, offsets, k),
                   offsets != nullptr ? offsets + k : nullptr, end - k);
            k = end;
        }
        _stage(positions, values, offsets, k, count);
        if (staged >= STAGE) {
            flush();
        }
    }

    // Repeats the last particle.
    void repeatLast() { put(lastPosition, lastValue, nullptr, 1, 1); }

    void flush() {
        if (staged != 0) {
            _write(stagedPositions, stagedValues, nullptr, staged);
            staged = 0;
        }
    }

private:
    static constexpr unsigned int MANY = 64;
    static constexpr unsigned int STAGE = 256;
    static constexpr unsigned int LINE_RECORDS = 8;  // fill whole cache lines of 64 bytes

    // The first of the particles from index k; offsets are relative to it.
    template <unsigned int floats>
    static float const* _first(float const* from, unsigned int const* offsets, unsigned int k) {
        return offsets != nullptr ? from : from + std::size_t{floats} * k;
    }

    // Of so many records, those after the last cache-line end that is also a record end.
    unsigned int _beyondLine(unsigned int count) const {
        // In units of 8 bytes: a line has 8, a record 3, and 3 * 3 is 1 modulo 8.
        std::uintptr_t const start = reinterpret_cast<std::uintptr_t>(out) / 8;
        return static_cast<unsigned int>((count + 3 * start) % LINE_RECORDS);
    }

    void _stage(float const* positions, float const* values, unsigned int const* offsets, unsigned int first,
                unsigned int end) {
        _copy<VECTOR_FLOATS>(positions, offsets, first, end, stagedPositions + VECTOR_FLOATS * staged);
        if constexpr (valueFloats != 0) {
            _copy<valueFloats>(values, offsets, first, end, stagedValues + valueFloats * staged);
        }
        staged += end - first;
    }

    template <unsigned int floats>
    static void _copy(float const* from, unsigned int const* offsets, unsigned int first, unsigned int end,
                      float* to) {
        for (unsigned int k = first; k < end; ++k) {
            unsigned int const particle = offsets != nullptr ? offsets[k] : k;
            std::memcpy(to, from + std::size_t{floats} * particle, floats * sizeof(float));
            to += floats;
        }
    }

    void _write(float const* positions, float const* values, unsigned int const* offsets,
                unsigned int count) {
        static RecordWriter const writer = fastestRecordWriter();
        writer(formula, positions, values, offsets, out, count, streams);
        out += RECORD_FLOATS * count;
    }

    RecordFormula const& formula;
    float* out;  // position of the next record
    bool streams;
    float const* lastPosition = ZEROS;  // of the last particle
    float const* lastValue = ZEROS;     // of the last particle
    unsigned int staged = 0;            // particles in the arrays below
    float stagedPositions[VECTOR_FLOATS * (STAGE + MANY)];
    float stagedValues[VECTOR_FLOATS * (STAGE + MANY)];
};

// Calls `run(slot, count)` for runs of living particles, in the order of iterators, until it returns false.
template <class Run>
bool forLivingRuns(ParticleSystemChunk_v2 const& chunk, Run const& run) {
    if (chunk.isCompacted()) {
        return run(0U, chunk.count());
    }
    Array<ParticleEntry_v2> const& entries = chunk.entries();
    unsigned int k = 0;
    while (k < entries.size()) {
        if (entries[k].key != ParticleEntry_v2::LIVING) {
            ++k;
            continue;
        }
        unsigned int const first = entries[k].slot;
        unsigned int count = 0;
        while (k < entries.size() && entries[k].key == ParticleEntry_v2::LIVING &&
               entries[k].slot == first + count) {
            ++k;
            ++count;
        }
        if (!run(first, count)) {
            return false;
        }
    }
    return true;
}

float const* vectorsOf(ParticleChannelChunkData_v2* data) {
    Vector3<float> const* const vectors = data != nullptr ? data->asVectors() : nullptr;
    return vectors != nullptr ? &vectors->x : ZEROS;
}

float const* floatsOf(ParticleChannelChunkData_v2* data) {
    float const* const floats = data != nullptr ? data->asFloats() : nullptr;
    return floats != nullptr ? floats : ZEROS;
}

/// Successive chunks, and the state of the thinning before the first of them.
struct ChunkRange {
    ParticleSystemChunk_v2 const* first = nullptr;
    ParticleSystemChunk_v2 const* end = nullptr;
    EvenThinning thinning{0, 0};
    bool isLast = true;  // no particle is taken behind it
};

/// A large system, divided into ranges that are written independently. The same for every number of threads.
class ChunkRanges {
public:
    ChunkRanges(ParticleSystem_v2 const& system, EvenThinning thinning) {
        ranges[0].first = system.firstChunk();
        ranges[0].thinning = thinning;
        if (system.size() <= MOST_ON_ONE_THREAD || !thinning.canSkip(system.size())) {
            return;
        }
        unsigned int const perRange = system.size() / MOST + 1;
        unsigned int inRange = 0;
        for (ParticleSystemChunk_v2 const* chunk = system.firstChunk(); chunk != nullptr;
             chunk = chunk->next()) {
            // A range that takes nothing is continued: the last particle is repeated by the range that has
            // it.
            bool const takes = thinning.missing() != ranges[count - 1].thinning.missing();
            if (inRange >= perRange && takes && !thinning.isComplete()) {
                ranges[count - 1].end = chunk;
                ranges[count - 1].isLast = false;
                ranges[count].first = chunk;
                ranges[count].thinning = thinning;
                ++count;
                inRange = 0;
            }
            thinning.skip(chunk->count());
            inRange += chunk->count();
        }
        if (count > 1 && thinning.missing() == ranges[count - 1].thinning.missing()) {
            --count;
            ranges[count - 1].isLast = true;
        }
    }

    unsigned int size() const { return count; }
    ChunkRange const& operator[](std::size_t index) const { return ranges[index]; }

private:
    static constexpr unsigned int MOST = 64;

    unsigned int count = 1;
    ChunkRange ranges[MOST];
};

template <unsigned int valueFloats>
void writeRange(unsigned int channel, RecordFormula const& formula, ChunkRange const& range,
                float* out,  // NOLINT(readability-non-const-parameter): written to
                bool streams) {
    EvenThinning thinning = range.thinning;
    RecordSink<valueFloats> sink(formula, out, streams);
    EvenThinning::Marks marks;
    for (ParticleSystemChunk_v2 const* chunk = range.first; chunk != range.end && !thinning.isComplete();
         chunk = chunk->next()) {
        float const* const positions = vectorsOf(chunk->channelData(0));
        float const* values = ZEROS;
        if constexpr (valueFloats != 0) {
            ParticleChannelChunkData_v2* const data = chunk->channelData(channel);
            values = valueFloats == 1 ? floatsOf(data) : vectorsOf(data);
        }
        forLivingRuns(*chunk, [&](unsigned int slot, unsigned int count) {
            while (count != 0 && !thinning.isComplete()) {
                float const* const from = positions + VECTOR_FLOATS * slot;
                float const* const valuesFrom = values + std::size_t{valueFloats} * slot;
                unsigned int decided = 0;
                if (thinning.takesAll()) {
                    decided = thinning.takeAll(count);
                    sink.put(from, valuesFrom, nullptr, decided, count);
                } else {
                    decided = thinning.decide(count, marks);
                    sink.put(from, valuesFrom, marks.offsets, marks.count, count);
                }
                slot += decided;
                count -= decided;
            }
            return !thinning.isComplete();
        });
    }
    for (unsigned int missing = range.isLast ? thinning.missing() : 0; missing != 0; --missing) {
        sink.repeatLast();
    }
    sink.flush();
    if (streams) {
        finishRecords();
    }
}

template <unsigned int valueFloats>
void writeRecords(ParticleSystem_v2 const& system, unsigned int channel, RecordFormula const& formula,
                  EvenThinning const& thinning,
                  float* out) {  // NOLINT(readability-non-const-parameter): written to
    bool const streams = std::size_t{thinning.target()} * RECORD_FLOATS * sizeof(float) >= STREAMED_BYTES;
    ChunkRanges const ranges(system, thinning);
    forRanges(ranges.size(), 1, [&](std::size_t number, std::size_t /*end*/) {
        ChunkRange const& range = ranges[number];
        std::size_t const before = thinning.missing() - range.thinning.missing();
        std::size_t const behind = range.isLast ? 0 : ranges[number + 1].thinning.missing();
        float* const first = out + RECORD_FLOATS * before;
        takePages(first, RECORD_FLOATS * sizeof(float) * (range.thinning.missing() - behind));
        writeRange<valueFloats>(channel, formula, range, first, streams);
    });
}

}  // namespace

void writeParticleRecords(ParticleSystem_v2 const& system, unsigned int channel, RecordFormula const& formula,
                          EvenThinning const& thinning, float* out) {
    switch (VALUE_FLOATS[static_cast<std::size_t>(formula.source)]) {
    case 0:
        return writeRecords<0>(system, channel, formula, thinning, out);
    case 1:
        return writeRecords<1>(system, channel, formula, thinning, out);
    default:
        return writeRecords<3>(system, channel, formula, thinning, out);
    }
}

}  // namespace vellum
