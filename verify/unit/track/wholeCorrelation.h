/** The correlation of a pair by the whole chain: whitening, real inverse transform. */
#ifndef VERIFY_TRACK_WHOLE_CORRELATION_H
#define VERIFY_TRACK_WHOLE_CORRELATION_H

#include <cmath>
#include <vector>

#include "track/grids.h"
#include "voxloc/voxloc.h"

/** The split tables of the upsampled transform. */
struct UpsampledTables {
    std::vector<float> a = std::vector<float>(voxloc::CorrelationLags);
    std::vector<float> b = std::vector<float>(voxloc::CorrelationLags);
    UpsampledTables() { voxloc_generateAbTables(a.data(), b.data(), voxloc::CorrelationLags / 2); }
};

inline const UpsampledTables& upsampledTables() {
    static const UpsampledTables tables;
    return tables;
}

/** Each bin of [begin, end) is divided by its magnitude, bin by bin; all others count as zero. */
inline std::vector<float> wholeCorrelation(const float* bins, int begin, int end) {
    std::vector<float> spectrum(voxloc::CorrelationBufferFloats);
    for (int k = begin; k < end; ++k) {
        const auto i = static_cast<std::size_t>(2 * k);
        const float power = bins[i] * bins[i] + bins[i + 1] * bins[i + 1];
        if (!(power > 1e-14f)) continue;
        spectrum[i] = bins[i] / std::sqrt(power);
        spectrum[i + 1] = bins[i + 1] / std::sqrt(power);
    }
    std::vector<float> scratch(voxloc::CorrelationBufferFloats);
    voxloc_realIfft(voxloc::CorrelationLags, spectrum.data(), nullptr, scratch.data(), 2,
                    upsampledTables().a.data(), upsampledTables().b.data());
    return spectrum;
}

/** Room for the last bit where a split pass may use fused multiply-add and the other one may not.
 */
#ifdef __FMA__
constexpr float WholeTolerance = 1e-6f;  // of correlations up to 0.36: 3000 whitened values summed
#else
constexpr float WholeTolerance = 0.0f;
#endif

#endif
