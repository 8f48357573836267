#include "particle_records.h"

#include "foundation/geometry/ParticleEntry_v2.h"
#include "foundation/geometry/ParticleSystemChunk_v2.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace vellum {

namespace {

constexpr std::size_t POSITION_FLOATS = 3;
constexpr std::size_t RECORD_FLOATS = 6;

// Records that fill more than the cache of a processor are of no use in it.
constexpr std::size_t STREAMED_BYTES = std::size_t{8} << 20;

RecordWriter fastestRecordWriter() {
    if (RecordWriter const writer = avxRecordWriter()) {
        return writer;
    }
    if (RecordWriter const writer = sse2RecordWriter()) {
        return writer;
    }
    return plainRecordWriter();
}

// Takes particles in runs of neighbours and writes their records. Long runs are written straight from the
// channels; short ones are first put together, so that the writer always has many at once.
template <unsigned int valueFloats>
class RecordSink {
public:
    RecordSink(RecordFormula const& formula, float* out, bool const& streams)
        : formula(formula), out(out), streams(streams) {}

    // One particle or more, of `readable` that stand there.
    void put(float const* positions, float const* values, unsigned int const& count,
             unsigned int const& readable) {
        if (count >= LONG_RUN) {
            flush();
            _write(positions, values, count);
        } else {
            _stage(positions, values, count, readable);
        }
        lastPosition = positions + POSITION_FLOATS * (count - 1);
        lastValue = values + valueFloats * (count - 1);
    }

    // Of `count` particles all that are not marked, of `readable` that stand there.
    void putAllBut(float const* positions, float const* values, unsigned int const& count,
                   EvenThinning::Marks const& marks, unsigned int const& readable) {
        unsigned int first = 0;
        for (unsigned int k = 0; k <= marks.count; ++k) {
            unsigned int const end = k < marks.count ? marks.offsets[k] : count;
            if (first < end) {
                put(positions + POSITION_FLOATS * first, values + valueFloats * first, end - first,
                    readable - first);
            }
            first = end + 1;
        }
    }

    // The particles at `number` offsets, ascending.
    void putEach(float const* positions, float const* values, unsigned int const* offsets,
                 unsigned int const& number) {
        unsigned int k = 0;
        while (k < number) {
            unsigned int const end = std::min(number, k + STAGE - staged);
            float* position = stagedPositions + POSITION_FLOATS * staged;
            float* value = stagedValues + valueFloats * staged;
            staged += end - k;
            for (; k < end; ++k) {
                unsigned int const offset = offsets[k];
                std::memcpy(position, positions + POSITION_FLOATS * offset, POSITION_FLOATS * sizeof(float));
                position += POSITION_FLOATS;
                if constexpr (valueFloats != 0) {
                    std::memcpy(value, values + valueFloats * offset, valueFloats * sizeof(float));
                    value += valueFloats;
                }
            }
            if (staged == STAGE) {
                flush();
            }
        }
        if (number != 0) {
            lastPosition = positions + POSITION_FLOATS * offsets[number - 1];
            lastValue = values + valueFloats * offsets[number - 1];
        }
    }

    // The particle that came last, once more.
    void repeatLast() { _stage(lastPosition, lastValue, 1, 1); }

    void flush() {
        if (staged != 0) {
            _write(stagedPositions, stagedValues, staged);
            staged = 0;
        }
    }

private:
    static constexpr unsigned int LONG_RUN = 256;
    static constexpr unsigned int STAGE = 512;  // a multiple of what writers take at once
    static constexpr unsigned int STRIDE = 4;

    void _stage(float const* positions, float const* values, unsigned int count, unsigned int readable) {
        while (count != 0) {
            unsigned int const now = std::min(count, STAGE - staged);
            _copy<POSITION_FLOATS>(positions, stagedPositions + POSITION_FLOATS * staged, now, readable);
            if constexpr (valueFloats != 0) {
                _copy<valueFloats>(values, stagedValues + valueFloats * staged, now, readable);
            }
            positions += POSITION_FLOATS * now;
            values += valueFloats * now;
            count -= now;
            readable -= now;
            staged += now;
            if (staged == STAGE) {
                flush();
            }
        }
    }

    // Four at a time, also beyond the last one where that may be read: what is too much is written over next.
    template <unsigned int floats>
    static void _copy(float const* from, float* to, unsigned int const& count, unsigned int const& readable) {
        if (count + STRIDE > readable) {
            std::memcpy(to, from, floats * count * sizeof(float));
            return;
        }
        for (unsigned int k = 0; k < count; k += STRIDE) {
            std::memcpy(to + floats * k, from + floats * k, floats * STRIDE * sizeof(float));
        }
    }

    void _write(float const* positions, float const* values, unsigned int const& count) {
        static RecordWriter const writer = fastestRecordWriter();
        writer(formula, positions, values, out, count, streams);
        out += RECORD_FLOATS * count;
    }

    RecordFormula const& formula;
    float* out;  // where the next record goes
    bool streams;
    float const* lastPosition = nullptr;  // of the particle that was put last
    float const* lastValue = nullptr;     // alike
    unsigned int staged = 0;              // particles below
    float stagedPositions[POSITION_FLOATS * (STAGE + STRIDE)];
    float stagedValues[3 * (STAGE + STRIDE)];
};

// Calls `run(slot, count)` for neighbours that live, in the order of iterators, until it answers false.
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

// What stands for the values of a chunk that has none.
constexpr float ZEROS[3 * ParticleSystemChunk_v2::CAPACITY] = {};

float const* vectorsOf(ParticleChannelChunkData_v2* data) {
    Vector3<float> const* const vectors = data != nullptr ? data->asVectors() : nullptr;
    return vectors != nullptr ? &vectors->x : ZEROS;
}

float const* floatsOf(ParticleChannelChunkData_v2* data) {
    float const* const floats = data != nullptr ? data->asFloats() : nullptr;
    return floats != nullptr ? floats : ZEROS;
}

template <unsigned int valueFloats>
void writeRecords(ParticleSystem_v2 const& system, unsigned int const& channel, RecordFormula const& formula,
                  EvenThinning thinning, float* out) {
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
                unsigned int const decided = thinning.decide(count, marks);
                float const* const from = positions + POSITION_FLOATS * slot;
                float const* const valuesFrom = values + std::size_t{valueFloats} * slot;
                if (thinning.marksSkipped()) {
                    sink.putAllBut(from, valuesFrom, decided, marks, count);
                } else {
                    sink.putEach(from, valuesFrom, marks.offsets, marks.count);
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

void writeParticleRecords(ParticleSystem_v2 const& system, unsigned int const& channel,
                          RecordFormula const& formula, EvenThinning const& thinning, float* out) {
    switch (valuesPerParticle(formula.source)) {
    case 0:
        return writeRecords<0>(system, channel, formula, thinning, out);
    case 1:
        return writeRecords<1>(system, channel, formula, thinning, out);
    default:
        return writeRecords<3>(system, channel, formula, thinning, out);
    }
}

}  // namespace vellum
