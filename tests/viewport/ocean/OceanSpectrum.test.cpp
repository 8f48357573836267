#include "viewport/ocean/OceanSpectrum.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

using namespace vellum::viewport;
using testing::HasSubstr;

namespace {

using Complex = std::complex<double>;

constexpr double pi = 3.14159265358979323846;

SeaState smallSea() {
    SeaState state;
    state.size = 32;
    state.patch = 60;
    state.choppiness = 1;
    return state;
}

double variance(std::vector<float> const& values) {
    double const mean =
        std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
    double sum = 0;
    for (float const& value : values) {
        sum += (value - mean) * (value - mean);
    }
    return sum / static_cast<double>(values.size());
}

double largestDifference(std::vector<float> const& a, std::vector<float> const& b) {
    EXPECT_EQ(a.size(), b.size());
    double largest = 0;
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
        largest = std::max(largest, std::abs(static_cast<double>(a[i]) - b[i]));
    }
    return largest;
}

/// The sum over all waves at a place, without a fast transform: the field whose waves are the height's times
/// `factor`.
template <class Factor>
Complex sumOfWaves(OceanSpectrum const& spectrum, double const& time, double const& x, double const& z,
                   Factor const& factor) {
    int const half = static_cast<int>(spectrum.state().size) / 2;
    double const step = 2 * pi / spectrum.state().patch;
    Complex sum = 0;
    for (int row = -half + 1; row < half; ++row) {
        for (int column = -half + 1; column < half; ++column) {
            double const kx = step * column;
            double const kz = step * row;
            double const k = std::max(std::hypot(kx, kz), step);
            sum +=
                spectrum.amplitude(column, row, time) * factor(kx, kz, k) * std::polar(1.0, kx * x + kz * z);
        }
    }
    return sum;
}

}  // namespace

// == The spectrum ==

TEST(OceanSpectrum, oppositeFrequenciesAreConjugateSoThatTheHeightIsReal) {
    OceanSpectrum const spectrum(smallSea());
    double largest = 0;
    for (int row = -15; row <= 15; ++row) {
        for (int column = -15; column <= 15; ++column) {
            Complex const there = spectrum.amplitude(column, row, 3.5);
            Complex const opposite = spectrum.amplitude(-column, -row, 3.5);
            EXPECT_NEAR(std::abs(there - std::conj(opposite)), 0, 1e-12) << column << " " << row;
            largest = std::max(largest, std::abs(there));
        }
    }
    EXPECT_GT(largest, 0.01) << "there are waves";
    EXPECT_EQ(spectrum.amplitude(0, 0, 3.5), Complex(0));
    EXPECT_NEAR(
        sumOfWaves(spectrum, 3.5, 7.1, -4.2, [](double, double, double) { return Complex(1); }).imag(), 0,
        1e-10);
}

TEST(OceanSpectrum, everyFieldIsTheSumOfItsWaves) {
    OceanSpectrum const spectrum(smallSea());
    SeaSurface const surface = spectrum.surface(2.25);
    double const step = 60.0 / 32;
    Complex const i(0, 1);
    for (auto const& [column, row] : {std::pair<int, int>{0, 0}, {5, 0}, {0, 9}, {31, 17}, {12, 30}}) {
        std::size_t const n = static_cast<std::size_t>(column + 32 * row);
        double const x = column * step;
        double const z = row * step;
        auto const sum = [&](auto const& factor) { return sumOfWaves(spectrum, 2.25, x, z, factor).real(); };
        EXPECT_NEAR(surface.height[n], sum([](double, double, double) { return Complex(1); }), 1e-4);
        EXPECT_NEAR(surface.alongX[n], sum([&](double kx, double, double k) { return i * kx / k; }), 1e-4);
        EXPECT_NEAR(surface.alongZ[n], sum([&](double, double kz, double k) { return i * kz / k; }), 1e-4);
        double const xx = 1 + sum([](double kx, double, double k) { return Complex(-kx * kx / k); });
        double const zz = 1 + sum([](double, double kz, double k) { return Complex(-kz * kz / k); });
        double const xz = sum([](double kx, double kz, double k) { return Complex(-kx * kz / k); });
        EXPECT_NEAR(surface.jacobian[n], xx * zz - xz * xz, 1e-3);
    }
}

TEST(OceanSpectrum, theVarianceOfTheHeightIsTheSumOfTheSquaredAmplitudes) {
    OceanSpectrum const spectrum(smallSea());
    double sum = 0;
    for (int row = -15; row <= 15; ++row) {
        for (int column = -15; column <= 15; ++column) {
            sum += std::norm(spectrum.amplitude(column, row, 4));
        }
    }
    EXPECT_NEAR(variance(spectrum.surface(4).height), sum, 1e-5 * sum);
}

TEST(OceanSpectrum, theVarianceOverManySeasIsThatOfTheSpectrum) {
    SeaState state = smallSea();
    double mean = 0;
    constexpr unsigned int seas = 200;
    for (state.seed = 1; state.seed <= seas; ++state.seed) {
        mean += variance(OceanSpectrum(state).surface(0).height) / seas;
    }
    double const expected = OceanSpectrum(state).expectedVariance();
    // A sea has some dozens of large waves; 200 of them keep the mean within a few percent.
    EXPECT_NEAR(mean, expected, 0.06 * expected);
}

TEST(OceanSpectrum, theSpectrumHoldsTheEnergyOfAYoungSea) {
    SeaState state;
    state.size = 512;
    state.patch = 400;
    // A spectrum with the peak of JONSWAP holds 1.52 times the energy of one without, alpha g^2 / (5 peak^4).
    double const fetch = 9.81 * state.fetch / (state.windSpeed * state.windSpeed);
    double const alpha = 0.076 * std::pow(fetch, -0.22);
    double const peak = 22 * 9.81 / state.windSpeed * std::pow(fetch, -1.0 / 3);
    double const law = 1.52 * alpha * 9.81 * 9.81 / (5 * std::pow(peak, 4));
    EXPECT_NEAR(OceanSpectrum(state).expectedVariance(), law, 0.06 * law);
}

TEST(OceanSpectrum, eachWaveRunsAtTheSpeedOfDeepWater) {
    OceanSpectrum const spectrum(smallSea());
    double const dt = 0.3;
    for (auto const& [column, row] : {std::pair<int, int>{1, 0}, {3, -2}, {0, 7}, {-11, 5}}) {
        double const k = 2 * pi / 60 * std::hypot(column, row);
        double const frequency = std::sqrt(9.81 * k);
        Complex const before = spectrum.amplitude(column, row, 5 - dt);
        Complex const now = spectrum.amplitude(column, row, 5);
        Complex const after = spectrum.amplitude(column, row, 5 + dt);
        EXPECT_NEAR(std::abs(before + after - 2 * std::cos(frequency * dt) * now), 0, 1e-10);
    }
}

TEST(OceanSpectrum, wavesRunWithTheWind) {
    SeaState state = smallSea();
    state.windDirection = 0;
    OceanSpectrum const spectrum(state);
    // The phase of a wave along +x turns backwards in time, so its crests move to +x.
    for (int column = 1; column < 10; ++column) {
        double const k = 2 * pi / 60 * column;
        Complex const turned = spectrum.amplitude(column, 0, 0) * std::polar(1.0, -std::sqrt(9.81 * k) * 0.5);
        EXPECT_NEAR(std::abs(spectrum.amplitude(column, 0, 0.5) - turned), 0, 1e-12);
        EXPECT_EQ(std::abs(spectrum.amplitude(0, column, 0)), 0) << "none across the wind";
    }
}

// == The surface ==

TEST(OceanSpectrum, thePatchCanBeLaidBesideItself) {
    OceanSpectrum const spectrum(smallSea());
    auto const one = [](double, double, double) { return Complex(1); };
    for (double const place : {0.0, 13.7, 41.1}) {
        double const here = sumOfWaves(spectrum, 1, place, 5, one).real();
        EXPECT_NEAR(sumOfWaves(spectrum, 1, place + 60, 5, one).real(), here, 1e-9);
        EXPECT_NEAR(sumOfWaves(spectrum, 1, place, 5 - 60, one).real(), here, 1e-9);
    }
    // And the samples have no seam: the step across it is like the others.
    SeaState state;
    SeaSurface const surface = OceanSpectrum(state).surface(1);
    double inside = 0;
    double across = 0;
    for (std::size_t row = 0; row < state.size; ++row) {
        float const* const line = surface.height.data() + row * state.size;
        across = std::max(across, std::abs(static_cast<double>(line[state.size - 1]) - line[0]));
        for (std::size_t column = 1; column < state.size; ++column) {
            inside = std::max(inside, std::abs(static_cast<double>(line[column]) - line[column - 1]));
        }
    }
    EXPECT_LE(across, inside);
    EXPECT_GT(inside, 0);
}

TEST(OceanSpectrum, theSameSeedGivesTheSameSeaAndAnotherOneAnother) {
    SeaState state;
    state.size = 64;
    SeaSurface const first = OceanSpectrum(state).surface(7);
    EXPECT_EQ(largestDifference(first.height, OceanSpectrum(state).surface(7).height), 0);
    state.seed = 2;
    EXPECT_GT(largestDifference(first.height, OceanSpectrum(state).surface(7).height), 0.1);
}

TEST(OceanSpectrum, theSeaMoves) {
    OceanSpectrum const spectrum(smallSea());
    std::vector<float> const start = spectrum.surface(0).height;
    EXPECT_LT(largestDifference(start, spectrum.surface(0.001).height), 0.01) << "steadily";
    EXPECT_GT(largestDifference(start, spectrum.surface(1).height), 0.1);
    EXPECT_GT(largestDifference(start, spectrum.surface(-1).height), 0.1);
}

TEST(OceanSpectrum, choppyWavesHaveSharperCrestsThanTroughs) {
    SeaState state;
    state.size = 64;
    SeaSurface const surface = OceanSpectrum(state).surface(0);
    // Where water is high it is pressed together, where it is low drawn apart.
    double product = 0;
    for (std::size_t n = 0; n < surface.height.size(); ++n) {
        product += surface.height[n] * (surface.jacobian[n] - 1.0);
    }
    EXPECT_LT(product, 0);

    state.choppiness = 0;
    SeaSurface const round = OceanSpectrum(state).surface(0);
    EXPECT_EQ(largestDifference(round.height, surface.height), 0);
    EXPECT_THAT(round.alongX, testing::Each(0.0F));
    EXPECT_THAT(round.jacobian, testing::Each(1.0F));
}

// == Foam ==

TEST(OceanSpectrum, foamArisesWhereTheSurfaceIsPressedTogether) {
    SeaState state;
    state.foamLife = 0;
    OceanSpectrum const spectrum(state);
    std::vector<float> const foam = spectrum.foam(3);
    std::vector<float> const jacobian = spectrum.surface(3).jacobian;
    std::size_t covered = 0;
    for (std::size_t n = 0; n < foam.size(); ++n) {
        EXPECT_GE(foam[n], 0);
        EXPECT_LE(foam[n], 1);
        EXPECT_EQ(foam[n] > 0, jacobian[n] < static_cast<float>(state.foamLimit)) << jacobian[n];
        covered += foam[n] > 0 ? 1 : 0;
    }
    EXPECT_GT(covered, foam.size() / 200) << "there is foam";
    EXPECT_LT(covered, foam.size() / 4) << "and mostly water";

    state.foamLimit = -1;
    EXPECT_LT(variance(OceanSpectrum(state).foam(3)), variance(foam));
}

TEST(OceanSpectrum, foamFades) {
    SeaState state;
    state.size = 128;
    state.foamLife = 0;
    std::vector<float> const fresh = OceanSpectrum(state).foam(3);
    std::vector<float> const earlier = OceanSpectrum(state).foam(2.8);
    state.foamLife = 1;
    std::vector<float> const lasting = OceanSpectrum(state).foam(3);
    for (std::size_t n = 0; n < fresh.size(); ++n) {
        EXPECT_GE(lasting[n], fresh[n]);
        EXPECT_GE(lasting[n] + 1e-4F, earlier[n] * 0.8F) << "five steps of 0.2 s, this one a sixth less";
    }
    EXPECT_GT(std::accumulate(lasting.begin(), lasting.end(), 0.0),
              1.2 * std::accumulate(fresh.begin(), fresh.end(), 0.0));
}

// == The map ==

TEST(OceanMap, holdsTheSurfaceAsAnOceanEffectReadsIt) {
    SeaState state;
    state.size = 64;
    OceanSpectrum const spectrum(state);
    OceanMap const map = OceanMap::of(spectrum, 2);
    ASSERT_EQ(map.image.width(), 64U);
    ASSERT_EQ(map.image.height(), 64U);
    ASSERT_EQ(map.image.bitdepth(), 32);
    ASSERT_EQ(map.image.pixdepth(), 128);
    SeaSurface const surface = spectrum.surface(2);
    std::vector<float> const foam = spectrum.foam(2);
    for (unsigned int row = 0; row < 64; ++row) {
        for (unsigned int column = 0; column < 64; ++column) {
            float const* const texel = map.image.getBuffer32() + std::size_t{4} * (column + 64 * row);
            // Columns along +z, rows along -x.
            std::size_t const n = (64 - row) % 64 + std::size_t{64} * column;
            EXPECT_NEAR((texel[0] - 0.5F) * 2 * map.unit, surface.alongX[n], 1e-5);
            EXPECT_NEAR((texel[1] - 0.5F) * 2 * map.heightScale * map.unit, surface.height[n], 1e-5);
            EXPECT_NEAR((texel[2] - 0.5F) * 2 * map.unit, surface.alongZ[n], 1e-5);
            EXPECT_EQ(texel[3], foam[n]);
            for (int channel = 0; channel < 4; ++channel) {
                EXPECT_GE(texel[channel], 0);
                EXPECT_LE(texel[channel], 1);
            }
        }
    }
}

TEST(OceanMap, unitsStayTheSameWhileTheSeaMoves) {
    OceanSpectrum const spectrum(smallSea());
    OceanMap const first = OceanMap::of(spectrum, 0);
    OceanMap const later = OceanMap::of(spectrum, 10);
    EXPECT_EQ(first.unit, later.unit);
    EXPECT_EQ(first.heightScale, later.heightScale);
    SeaState flat = smallSea();
    flat.choppiness = 0;
    OceanMap const round = OceanMap::of(OceanSpectrum(flat), 0);
    EXPECT_EQ(round.unit, 1) << "meters, where nothing is moved sideways";
    EXPECT_NEAR(round.unit * round.heightScale, first.unit * first.heightScale, 1e-5);
}

// == Bad parameters ==

TEST(SeaState, whatMakesNoSenseIsNamed) {
    EXPECT_FALSE(SeaState{}.firstFault().has_value());
    for (unsigned int const size : {0U, 1U, 15U, 100U, 257U, 2048U, 4294967295U}) {
        SeaState state;
        state.size = size;
        EXPECT_THAT(state.firstFault().value_or(Fault()).message, HasSubstr("size")) << size;
    }
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinite = std::numeric_limits<double>::infinity();
    struct Row {
        char const* name;
        double SeaState::*member;
    };
    for (Row const& row :
         {Row{"patch", &SeaState::patch}, Row{"wind", &SeaState::windSpeed}, Row{"fetch", &SeaState::fetch},
          Row{"direction", &SeaState::windDirection}, Row{"choppiness", &SeaState::choppiness},
          Row{"foam-limit", &SeaState::foamLimit}, Row{"foam-life", &SeaState::foamLife}}) {
        for (double const value : {nan, infinite, -infinite, -1e9}) {
            SeaState state;
            state.*row.member = value;
            EXPECT_THAT(state.firstFault().value_or(Fault()).message, HasSubstr(row.name)) << value;
        }
    }
    for (double SeaState::*const member : {&SeaState::patch, &SeaState::windSpeed, &SeaState::fetch}) {
        SeaState state;
        state.*member = 0;
        EXPECT_TRUE(state.firstFault().has_value());
    }
}

TEST(SeaState, theEndsOfTheRangesGiveNumbers) {
    for (double const wind : {0.5, 60.0}) {
        for (double const patch : {1.0, 10'000.0}) {
            SeaState state;
            state.size = SeaState::SMALLEST_SIZE;
            state.windSpeed = wind;
            state.patch = patch;
            for (double const fetch : {10.0, 1e7}) {
                state.fetch = fetch;
                ASSERT_FALSE(state.firstFault().has_value());
                OceanMap const map = OceanMap::of(OceanSpectrum(state), OceanSpectrum::LONGEST_TIME);
                ASSERT_EQ(map.image.width(), 16U);
                EXPECT_GT(map.unit, 0);
                EXPECT_GT(map.heightScale, 0);
                for (int i = 0; i < 16 * 16 * 4; ++i) {
                    EXPECT_TRUE(std::isfinite(map.image.getBuffer32()[i]))
                        << wind << " " << patch << " " << fetch;
                }
            }
        }
    }
}
