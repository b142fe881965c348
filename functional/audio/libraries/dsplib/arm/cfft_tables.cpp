#include "cfft_tables.h"

namespace cfft {
namespace {

constexpr double Pi = 3.14159265358979323846;

struct CosSin {
    double cosine, sine;
};

/** Taylor series for 0 <= x <= π/4, where the first term left out is below 2^-60. */
constexpr CosSin cosSin(double x) {
    const double z = x * x;
    double cosine = 1.0, sine = 1.0;
    for (int n = 18; n > 0; n -= 2) {
        cosine = 1.0 - z / ((n - 1) * n) * cosine;
        sine = 1.0 - z / (n * (n + 1)) * sine;
    }
    return {cosine, x * sine};
}

/** cos and sin of 2πk/FFT_MAX for the first eighth of a turn; the rest is symmetry. */
struct Octant {
    std::array<float, FFT_MAX / 8 + 1> cosine, sine;
};

constexpr Octant makeOctant() {
    Octant octant{};
    for (std::size_t k = 0; k < octant.cosine.size(); ++k) {
        const CosSin exact = cosSin(static_cast<double>(k) * (2.0 * Pi / FFT_MAX));
        octant.cosine[k] = static_cast<float>(exact.cosine);
        octant.sine[k] = static_cast<float>(exact.sine);
    }
    return octant;
}

struct Twiddle {
    float cosine, sine;
};

/** e^(+2πik/FFT_MAX) for the first half turn */
constexpr Twiddle twiddle(const Octant& octant, std::size_t k) {
    constexpr std::size_t Eighth = FFT_MAX / 8, Quarter = FFT_MAX / 4, Half = FFT_MAX / 2;
    if (k <= Eighth) return {octant.cosine[k], octant.sine[k]};
    if (k <= Quarter) return {octant.sine[Quarter - k], octant.cosine[Quarter - k]};
    const Twiddle mirrored = twiddle(octant, Half - k);
    return {-mirrored.cosine, mirrored.sine};
}

/** Puts twiddle k into a region of blocks. */
constexpr void putInBlocks(float* region, std::size_t k, Twiddle w) {
    float* const lane = region + 4 * (k / 2) + k % 2;
    lane[0] = w.cosine;
    lane[2] = w.sine;
}

constexpr std::array<float, FFT_MAX> makeTwiddles() {
    const Octant octant = makeOctant();
    std::array<float, FFT_MAX> table{};
    for (std::size_t size = 4; size <= FFT_MAX; size *= 2) {
        float* const region = table.data() + size / 2;
        for (std::size_t k = 0; k < size / 4; ++k) {
            const Twiddle w = twiddle(octant, k * (FFT_MAX / size));
            if (size < 32) {
                region[2 * k] = w.cosine;
                region[2 * k + 1] = w.sine;
            } else {
                putInBlocks(region, k, w);
            }
        }
    }
    return table;
}

constexpr std::array<float, 16> makeLeafTwiddles() {
    const Octant octant = makeOctant();
    std::array<float, 16> table{};
    for (std::size_t k = 0; k < 8; ++k) {
        putInBlocks(table.data(), k, twiddle(octant, k * (FFT_MAX / 16)));
    }
    return table;
}

/**
 * Walks the conjugate-pair tree below one node. The two 8-point children of a 32-point node stand
 * side by side and their offsets are equal modulo 512: they share the entry of one 16-point unit.
 */
constexpr void placeNode(std::array<std::uint16_t, 512>& table, int size, int offset, int stride,
                         int position) {
    if (size == 16 || size == 8) {
        const int unit = position - position % 16;
        table[static_cast<std::size_t>(offset & 511)] = static_cast<std::uint16_t>(unit);
        return;
    }
    placeNode(table, size / 2, offset, 2 * stride, position);
    placeNode(table, size / 4, offset + stride, 4 * stride, position + size / 2);
    placeNode(table, size / 4, offset - stride, 4 * stride, position + 3 * size / 4);
}

constexpr std::array<std::uint16_t, 512> makeLeafPositions() {
    std::array<std::uint16_t, 512> table{};
    placeNode(table, FFT_MAX, 0, 1, 0);
    return table;
}

}  // namespace

// Aligned so that no vector load of up to 16 lanes straddles two cache lines.
alignas(64) constexpr std::array<float, FFT_MAX> w_ = makeTwiddles();
alignas(64) constexpr std::array<float, 16> w_nl = makeLeafTwiddles();
alignas(64) constexpr std::array<std::uint16_t, 512> index_lut_ = makeLeafPositions();

}  // namespace cfft
