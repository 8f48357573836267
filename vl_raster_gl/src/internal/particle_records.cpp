#include "internal/particle_records.h"

#include "foundation/geometry/ParticleEntry_v2.h"
#include "foundation/geometry/ParticleSystemChunk_v2.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vellum {

namespace {

// Records that fill more than the cache of a processor are of no use in it.
constexpr std::size_t STREAMED_BYTES = std::size_t{8} << 20;

// What stands for the values of a chunk that has none.
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

// Takes particles and writes their records. Many at once are written straight from the channels; few are first put
// together, so that the writer always has many.
template <unsigned int valueFloats>
class RecordSink {
public:
    RecordSink(RecordFormula const& formula, float* out, bool streams)
        : formula(formula), out(out), streams(streams) {}

    // `count` particles: those at the offsets, ascending, or without offsets the first ones of a run of neighbors
    // that is `readable` long.
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
            // Up to the end of a line what was put together, whole lines from the channels, and the rest again.
            k = (LINE_RECORDS - _beyondLine(staged)) % LINE_RECORDS;
            _stage(positions, values, offsets, 0, k);
            flush();
            unsigned int end = count - (count - k) % LINE_RECORDS;
            // Behind the last one of the run nothing may be read.
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

    // The particle that came last, once more.
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
    static constexpr unsigned int LINE_RECORDS = 8;  // fill lines of the cache, 64 bytes each, to the end

    // The first of the neighbors from number k on; offsets are counted from where they were.
    template <unsigned int floats>
    static float const* _first(float const* from, unsigned int const* offsets, unsigned int k) {
        return offsets != nullptr ? from : from + std::size_t{floats} * k;
    }

    // Of so many records, those behind the last end of a line that is the end of a record, too.
    unsigned int _beyondLine(unsigned int count) const {
        // In units of 8 bytes, of which a line has 8 and a record 3: three times 3 is 1 more than a line.
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
    float* out;  // where the next record goes
    bool streams;
    float const* lastPosition = ZEROS;  // of the particle that was put last
    float const* lastValue = ZEROS;     // alike
    unsigned int staged = 0;            // particles below
    float stagedPositions[VECTOR_FLOATS * (STAGE + MANY)];
    float stagedValues[VECTOR_FLOATS * (STAGE + MANY)];
};

// Calls `run(slot, count)` for neighbors that live, in the order of iterators, until it answers false.
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

template <unsigned int valueFloats>
void writeRecords(ParticleSystem_v2 const& system, unsigned int channel, RecordFormula const& formula,
                  EvenThinning thinning, float* out) {  // NOLINT(readability-non-const-parameter): written to
    bool const streams = std::size_t{thinning.target()} * RECORD_FLOATS * sizeof(float) >= STREAMED_BYTES;
    RecordSink<valueFloats> sink(formula, out, streams);
    EvenThinning::Marks marks;
    for (ParticleSystemChunk_v2 const* chunk = system.firstChunk();
         chunk != nullptr && !thinning.isComplete(); chunk = chunk->next()) {
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
    for (unsigned int missing = thinning.missing(); missing != 0; --missing) {
        sink.repeatLast();
    }
    sink.flush();
    if (streams) {
        finishRecords();
    }
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
