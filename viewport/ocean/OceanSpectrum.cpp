#include "viewport/ocean/OceanSpectrum.h"

#include "foundation/geometry/constants.h"
#include "viewport/ocean/color_blending.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <new>
#include <random>

#include <fftw3.h>

namespace vellum::viewport {

namespace {

using Complex = std::complex<double>;

using constants::d::PI;
constexpr double GRAVITY = 9.81;  // meters per second squared

/// The JONSWAP spectrum of a young sea: variance per angular frequency, meters squared times seconds.
/// After K. Hasselmann and others, "Measurements of wind-wave growth and swell decay during the Joint North
/// Sea Wave Project".
double jonswap(double frequency, SeaState const& state) {
    constexpr double PEAK_ENHANCEMENT = 3.3;
    double const dimensionless = GRAVITY * state.fetch / (state.windSpeed * state.windSpeed);
    // A sea that has had all the way it needs grows no further.
    double const fetch = std::min(dimensionless, 2.2e4);
    double const alpha = 0.076 * std::pow(fetch, -0.22);
    double const peak = 22 * GRAVITY / state.windSpeed * std::pow(fetch, -1.0 / 3);
    double const width = frequency <= peak ? 0.07 : 0.09;
    double const offset = (frequency - peak) / (width * peak);
    double const enhancement = std::pow(PEAK_ENHANCEMENT, std::exp(-0.5 * offset * offset));
    double const ratio = peak / frequency;
    return alpha * GRAVITY * GRAVITY / std::pow(frequency, 5) * std::exp(-1.25 * std::pow(ratio, 4)) *
           enhancement;
}

/// Variance per area of the plane of wave vectors, meters to the fourth.
double density(double kx, double kz, SeaState const& state) {
    double const k = std::hypot(kx, kz);
    double const wind = state.windDirection * PI / 180;
    double const cosine = (kx * std::cos(wind) + kz * std::sin(wind)) / k;
    if (cosine <= 0) {
        return 0;
    }
    double const spread = 2 / PI * cosine * cosine;
    double const frequency = std::sqrt(GRAVITY * k);
    // From frequencies to wave numbers by their derivative, from polar to plane coordinates by k.
    return jonswap(frequency, state) * GRAVITY / (2 * frequency) * spread / k;
}

/// Two independent numbers with the normal distribution. Spelled out, because the library's distribution is
/// free to give other numbers on another system.
Complex normalPair(std::mt19937& random) {
    constexpr double RANGE = 4294967296.0;
    double const radius = std::sqrt(-2 * std::log((random() + 1.0) / RANGE));
    double const angle = 2 * PI * random() / RANGE;
    return std::polar(radius, angle);
}

bool isWithin(double value, double least, double most) {
    return value >= least && value <= most;  // false for what is not a number
}

struct FreeMemory {
    void operator()(void* memory) const { fftwf_free(memory); }
};

template <class T>
std::unique_ptr<T, FreeMemory> transformMemory(std::size_t count) {
    void* const memory = fftwf_malloc(count * sizeof(T));
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return std::unique_ptr<T, FreeMemory>(static_cast<T*>(memory));
}

}  // namespace

// == SeaState ==

std::optional<Fault> SeaState::firstFault() const {
    if (size < SMALLEST_SIZE || size > LARGEST_SIZE || (size & (size - 1)) != 0) {
        return Fault{"", "size: is not a power of two from " + std::to_string(SMALLEST_SIZE) + " to " +
                             std::to_string(LARGEST_SIZE)};
    }
    struct Row {
        char const* name;
        double value;
        double least;
        double most;
        char const* message;
    };
    for (Row const& row :
         {Row{"patch", patch, 1, 10'000, "1 to 10000 meters"},
          Row{"wind", windSpeed, 0.5, 60, "0.5 to 60 meters per second"},
          Row{"fetch", fetch, 10, 10'000'000, "10 to 10000000 meters"},
          Row{"direction", windDirection, -360, 360, "-360 to 360 degrees"},
          Row{"choppiness", choppiness, 0, 2, "0 to 2"}, Row{"foam-limit", foamLimit, -1, 1, "-1 to 1"},
          Row{"foam-life", foamLife, 0, 60, "0 to 60 seconds"}}) {
        if (!isWithin(row.value, row.least, row.most)) {
            return Fault{"", std::string(row.name) + ": is not a number from " + row.message};
        }
    }
    return std::nullopt;
}

// == SeaSurface ==

double highestWater(SeaSurface const& surface, double patch, Vector2<double> const& place) {
    auto const size = static_cast<double>(surface.size);
    // A larger step of the surface is one of its triangles.
    double const reach = std::max(REACH_OF_HIGHEST_WATER, patch / size);
    // The surface repeats itself with the patch.
    auto const distance = [patch](double offset) { return offset - patch * std::round(offset / patch); };
    double highest = std::numeric_limits<double>::lowest();
    for (unsigned int row = 0; row < surface.size; ++row) {
        for (unsigned int column = 0; column < surface.size; ++column) {
            std::size_t const i = static_cast<std::size_t>(row) * surface.size + column;
            double const x =
                distance(patch * column / size + static_cast<double>(surface.alongX[i]) - place.x);
            double const z = distance(patch * row / size + static_cast<double>(surface.alongZ[i]) - place.y);
            auto const height = static_cast<double>(surface.height[i]);
            if (std::hypot(x, z) <= reach) {
                highest = std::max(highest, height);
            }
        }
    }
    return highest;
}

double meanWater(SeaSurface const& surface, double patch, Vector2<double> const& low,
                 Vector2<double> const& high) {
    auto const size = static_cast<double>(surface.size);
    // No smaller than a step of the surface, so that there is always a sample.
    auto const halfOf = [&](double from, double to) {
        return std::clamp(0.5 * (to - from), patch / size, patch / 2);
    };
    double const halfX = halfOf(low.x, high.x);
    double const halfZ = halfOf(low.y, high.y);
    auto const distance = [patch](double offset) { return offset - patch * std::round(offset / patch); };
    double sum = 0;
    double count = 0;
    for (unsigned int row = 0; row < surface.size; ++row) {
        for (unsigned int column = 0; column < surface.size; ++column) {
            double const x = distance(patch * column / size - 0.5 * (low.x + high.x));
            double const z = distance(patch * row / size - 0.5 * (low.y + high.y));
            if (std::abs(x) <= halfX && std::abs(z) <= halfZ) {
                sum += static_cast<double>(
                    surface.height[static_cast<std::size_t>(row) * surface.size + column]);
                ++count;
            }
        }
    }
    return count > 0 ? sum / count : 0;
}

// == OceanSpectrum ==

OceanSpectrum::OceanSpectrum(SeaState const& state) : seaState(state) {
    int const size = static_cast<int>(state.size);
    int const half = size / 2;
    double const step = 2 * PI / state.patch;
    std::mt19937 random(state.seed);

    // Both directions of a frequency have an amplitude of their own; together they make the waves of both.
    std::vector<Complex> amplitudes(static_cast<std::size_t>(size) * static_cast<std::size_t>(size));
    auto const at = [&](int column, int row) {
        return static_cast<std::size_t>((column + size) % size) +
               static_cast<std::size_t>(size) * static_cast<std::size_t>((row + size) % size);
    };
    for (int row = -half + 1; row < half; ++row) {
        for (int column = -half + 1; column < half; ++column) {
            Complex const pair = normalPair(random);
            if (column == 0 && row == 0) {
                continue;
            }
            double const variance = density(column * step, row * step, state) * step * step;
            totalVariance += variance;
            // The height takes an amplitude twice, from this frequency and from the opposite one. Its square
            // has half of the variance then; and each of the two numbers of a pair has the variance 1.
            amplitudes[at(column, row)] = pair * std::sqrt(variance / 4);
        }
    }
    waves.resize(static_cast<std::size_t>(half + 1) * static_cast<std::size_t>(size), Wave{0, 0, 0});
    for (int row = -half + 1; row < half; ++row) {
        for (int column = 0; column < half; ++column) {
            std::size_t const index =
                static_cast<std::size_t>(column) +
                static_cast<std::size_t>(half + 1) * static_cast<std::size_t>((row + size) % size);
            waves[index] = {amplitudes[at(column, row)], std::conj(amplitudes[at(-column, -row)]),
                            std::sqrt(GRAVITY * step * std::hypot(column, row))};
        }
    }
}

OceanSpectrum::Wave const& OceanSpectrum::_wave(int column, int row) const {
    int const size = static_cast<int>(seaState.size);
    return waves[static_cast<std::size_t>(column) +
                 static_cast<std::size_t>(size / 2 + 1) * static_cast<std::size_t>((row + size) % size)];
}

Complex OceanSpectrum::_amplitudeOf(Wave const& wave, double time) const {
    Complex const turn = std::polar(1.0, -wave.frequency * time);
    return wave.forward * turn + wave.backward * std::conj(turn);
}

Complex OceanSpectrum::amplitude(int column, int row, double time) const {
    return column < 0 ? std::conj(_amplitudeOf(_wave(-column, -row), time))
                      : _amplitudeOf(_wave(column, row), time);
}

std::vector<Complex> OceanSpectrum::_amplitudes(double time) const {
    std::vector<Complex> amplitudes(waves.size());
    std::transform(waves.begin(), waves.end(), amplitudes.begin(),
                   [&](Wave const& wave) { return _amplitudeOf(wave, time); });
    return amplitudes;
}

std::vector<float> OceanSpectrum::_transform(std::vector<Complex> const& amplitudes, Field field) const {
    int const size = static_cast<int>(seaState.size);
    int const columns = size / 2 + 1;
    std::size_t const count = static_cast<std::size_t>(size) * static_cast<std::size_t>(size);
    auto const in = transformMemory<fftwf_complex>(amplitudes.size());
    auto const out = transformMemory<float>(count);
    // Estimated, not measured: a measured plan may be another one the next time, and round differently.
    fftwf_plan_s* const plan = fftwf_plan_dft_c2r_2d(size, size, in.get(), out.get(), FFTW_ESTIMATE);

    double const step = 2 * PI / seaState.patch;
    Complex const i(0, 1);
    for (int row = 0; row < size; ++row) {
        for (int column = 0; column < columns; ++column) {
            std::size_t const index = static_cast<std::size_t>(column) +
                                      static_cast<std::size_t>(columns) * static_cast<std::size_t>(row);
            double const kx = step * column;
            double const kz = step * (row <= size / 2 ? row : row - size);
            double const k = std::max(std::hypot(kx, kz), step / 2);
            double const lambda = seaState.choppiness;
            Complex factor = 1;
            switch (field) {
            case Field::HEIGHT:
                break;
            // Water is moved toward the crests: with the height cos(k x) by -sin(k x).
            case Field::ALONG_X:
                factor = lambda * i * kx / k;
                break;
            case Field::ALONG_Z:
                factor = lambda * i * kz / k;
                break;
            case Field::STRAIN_XX:
                factor = -lambda * kx * kx / k;
                break;
            case Field::STRAIN_ZZ:
                factor = -lambda * kz * kz / k;
                break;
            case Field::STRAIN_XZ:
                factor = -lambda * kx * kz / k;
                break;
            }
            Complex const value = amplitudes[index] * factor;
            in.get()[index][0] = static_cast<float>(value.real());
            in.get()[index][1] = static_cast<float>(value.imag());
        }
    }
    fftwf_execute(plan);
    fftwf_destroy_plan(plan);
    return {out.get(), out.get() + count};
}

std::vector<float> OceanSpectrum::_jacobian(std::vector<Complex> const& amplitudes) const {
    std::vector<float> jacobian = _transform(amplitudes, Field::STRAIN_XX);
    std::vector<float> const zz = _transform(amplitudes, Field::STRAIN_ZZ);
    std::vector<float> const xz = _transform(amplitudes, Field::STRAIN_XZ);
    for (std::size_t n = 0; n < jacobian.size(); ++n) {
        jacobian[n] = (1 + jacobian[n]) * (1 + zz[n]) - xz[n] * xz[n];
    }
    return jacobian;
}

SeaSurface OceanSpectrum::surface(double time) const {
    std::vector<Complex> const amplitudes = _amplitudes(time);
    return {seaState.size, _transform(amplitudes, Field::HEIGHT), _transform(amplitudes, Field::ALONG_X),
            _transform(amplitudes, Field::ALONG_Z), _jacobian(amplitudes)};
}

std::vector<float> OceanSpectrum::foam(double time) const {
    constexpr double STEP_SECONDS = 0.2;
    constexpr float SOFTNESS = 0.25F;  // from the first trace of foam to a closed cover
    int const steps = static_cast<int>(seaState.foamLife / STEP_SECONDS);
    auto const limit = static_cast<float>(seaState.foamLimit);
    std::vector<float> cover(static_cast<std::size_t>(seaState.size) * seaState.size, 0.0F);
    for (int step = 0; step <= steps; ++step) {
        // Foam moves with the water that carries it, so it stays at its sample.
        auto const rest = static_cast<float>(1 - step / (steps + 1.0));
        std::vector<float> const jacobian = _jacobian(_amplitudes(time - step * STEP_SECONDS));
        for (std::size_t n = 0; n < cover.size(); ++n) {
            cover[n] = std::max(cover[n], rest * smoothStep(0.0F, SOFTNESS, limit - jacobian[n]));
        }
    }
    return cover;
}

// == OceanMap ==

OceanMap OceanMap::of(OceanSpectrum const& spectrum, double time) {
    OceanMap map;
    unsigned int const size = spectrum.state().size;
    if (!map.image.create(size, size, 4, 32)) {
        return map;
    }
    constexpr double DEVIATIONS_OF_LARGEST_WAVE = 6;
    double const deviation = std::sqrt(spectrum.expectedVariance());
    double const sideways = deviation * spectrum.state().choppiness;
    map.unit = static_cast<float>(sideways > 0 ? DEVIATIONS_OF_LARGEST_WAVE * sideways : 1);
    map.heightScale =
        static_cast<float>(deviation > 0 ? DEVIATIONS_OF_LARGEST_WAVE * deviation : 1) / map.unit;

    SeaSurface const surface = spectrum.surface(time);
    std::vector<float> const foam = spectrum.foam(time);
    float* texel = map.image.getBuffer32();
    for (unsigned int row = 0; row < size; ++row) {
        for (unsigned int column = 0; column < size; ++column, texel += 4) {
            std::size_t const n = (size - row) % size + static_cast<std::size_t>(size) * column;
            texel[0] = 0.5F + 0.5F * surface.alongX[n] / map.unit;
            texel[1] = 0.5F + 0.5F * surface.height[n] / (map.unit * map.heightScale);
            texel[2] = 0.5F + 0.5F * surface.alongZ[n] / map.unit;
            texel[3] = foam[n];
        }
    }
    return map;
}

}  // namespace vellum::viewport
