/** The constant tables of the complex FFT. */
#ifndef DSPLIB_CFFT_TABLES_H
#define DSPLIB_CFFT_TABLES_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "cfft_pow2_conjpair_splitrad_c89_neon.h"

namespace cfft {

/**
 * Twiddles e^(+2πik/M) of every combine size. Slot 0 of two floats is not read. For each power of
 * two M from 4 to FFT_MAX the slots M/4 to M/2-1 hold k = 0 to M/4-1: interleaved (cos, sin) up to
 * M = 16; from M = 32 on in blocks (cos k, cos k+1, sin k, sin k+1).
 */
extern const std::array<float, FFT_MAX> w_;

/** e^(+2πik/16), k = 0 to 7, in the same blocks: the twiddles that join two 8-point leaves. */
extern const std::array<float, 16> w_nl;

/**
 * Where a 16-point sub-transform of an 8192-point transform stands in the output buffer, as an
 * element position, by the signed offset of its input modulo 512. Smaller sizes N use the entries
 * shifted right by 13 - log2 N.
 */
extern const std::array<std::uint16_t, 512> index_lut_;

/** The twiddles of combine size M, M = 32 to FFT_MAX, in blocks. */
inline const float* twiddlesOf(int M) {
    return w_.data() + M / 2;
}

}  // namespace cfft

#endif
