#pragma once

#include "foundation/geometry/Vector2.h"
#include "foundation/image/VL_Image.h"
#include "viewport/text/Fault.h"

#include <complex>
#include <optional>
#include <vector>

namespace vellum::viewport {

/// The wind over a sea, and how finely the sea is computed.
struct SeaState {
    static constexpr unsigned int SMALLEST_SIZE = 16;
    static constexpr unsigned int LARGEST_SIZE = 1024;

    unsigned int size = 256;  ///< samples along a side of the patch; a power of two
    double patch = 100;       ///< side of the square patch of sea, meters; the sea repeats beyond it
    double windSpeed = 12;    ///< ten meters above the water, meters per second
    double fetch = 20'000;    ///< the distance over which the wind has blown, meters; more gives longer waves
    double windDirection = 0;  ///< where the wind blows, degrees from +x toward +z
    double choppiness =
        1.3;                ///< sideways motion of water toward the crests: 0 gives round waves, 1 real ones
    unsigned int seed = 1;  ///< the same seed gives the same sea
    double foamLimit = 0.65;  ///< foam arises where the surface is compressed to less than this part
    double foamLife = 2.5;    ///< seconds in which foam fades; 0: foam exists only where it arises

    /// The first value that is out of range or not finite, or nothing.
    std::optional<Fault> firstFault() const;
};

/// The sea at one time. Sample (i, j) of each list, at index i + size * j, belongs to the place
/// x = i * patch / size, z = j * patch / size of the still water.
struct SeaSurface {
    unsigned int size = 0;
    std::vector<float> height;    ///< meters above the still level
    std::vector<float> alongX;    ///< sideways displacement, meters
    std::vector<float> alongZ;    ///< alike, meters
    std::vector<float> jacobian;  ///< its area relative to that at rest; below 0 the surface overlaps itself
};

/// How far from a place highestWater() looks, at least; meters.
constexpr double REACH_OF_HIGHEST_WATER = 1;

/// The highest water about a place, meters above the still level.
/// \param patch side of the surface, meters
/// \param place x and z, meters
double highestWater(SeaSurface const& surface, double patch, Vector2<double> const& place);

/// The mean height of the water over a rectangle of the still water, meters.
/// \param low, high its corners, x and z, meters
double meanWater(SeaSurface const& surface, double patch, Vector2<double> const& low,
                 Vector2<double> const& high);

/// The waves of a patch of deep sea: a random field with the JONSWAP spectrum, spread by the squared cosine
/// of the angle to the wind, after J. Tessendorf, "Simulating Ocean Water". Each pair of frequencies runs at
/// its own speed, so any time can be asked for, and equal seeds give equal seas.
///
///     OceanSpectrum const spectrum(SeaState{});       // a state without faults
///     SeaSurface const surface = spectrum.surface(12.5);
///
/// Plain arithmetic; the transform is FFTW's in single precision. Not for several threads at once.
class OceanSpectrum {
public:
    /// Times are at most this far from 0, seconds: beyond it the phases of waves would lose their precision.
    static constexpr double LONGEST_TIME = 1e6;

    /// \param state without faults.
    explicit OceanSpectrum(SeaState const& state);

    SeaState const& state() const { return seaState; }

    /// The sum of the spectrum over all its frequencies: the expected variance of the height, square meters.
    /// The significant wave height is four times its root.
    double expectedVariance() const { return totalVariance; }

    /// The complex amplitude of the height at a time, meters: the height is the sum of amplitude * exp(i (kx
    /// x + kz z)) over kx, kz = 2 pi / patch * (column, row). Columns and rows run from -size / 2 + 1 to size
    /// / 2 - 1; the mean and the highest frequency, which has no sign, are 0.
    std::complex<double> amplitude(int column, int row, double time) const;

    /// \param time seconds, at most LONGEST_TIME from 0.
    SeaSurface surface(double time) const;

    /// The part of each sample that is covered with foam, 0 to 1, in the order of the surface's lists: the
    /// foam that arises at the time, and earlier foam that has not yet faded.
    std::vector<float> foam(double time) const;

private:
    struct Wave {
        std::complex<double> forward;   // travels along the frequency's own direction
        std::complex<double> backward;  // the conjugate of what travels along the opposite direction
        double frequency;               // radians per second
    };
    enum class Field { HEIGHT, ALONG_X, ALONG_Z, STRAIN_XX, STRAIN_ZZ, STRAIN_XZ };

    std::complex<double> _amplitudeOf(Wave const& wave, double time) const;
    Wave const& _wave(int column, int row) const;
    std::vector<float> _transform(std::vector<std::complex<double>> const& amplitudes, Field field) const;
    std::vector<std::complex<double>> _amplitudes(double time) const;
    std::vector<float> _jacobian(std::vector<std::complex<double>> const& amplitudes) const;

    SeaState seaState;
    std::vector<Wave>
        waves;  // rows of size / 2 + 1 columns from 0 on; negative rows behind the positive ones
    double totalVariance = 0;
};

/// A sea as a displacement map: 32-bit floats, red, green, blue, alpha. Red, green and blue are the
/// displacement along x, y and z mapped from -1..1 to 0..1; alpha is the foam.
///
/// The map's columns run along +z and its rows along -x: so the normals that an ocean effect takes from the
/// map lie as its displacements do. A point of still water at (x, z) has the texture coordinates (z, -x) /
/// patch.
struct OceanMap {
    VL_Image image;         ///< empty when memory is short
    float unit = 1;         ///< the sideways displacement that the map shows as 1, meters
    float heightScale = 1;  ///< the height that the map shows as 1, in units

    /// The units depend on the state of the sea alone, not on the time. They leave room for waves of six
    /// times the usual deviation, so that the components stay within 0..1.
    static OceanMap of(OceanSpectrum const& spectrum, double time);
};

}  // namespace vellum::viewport
