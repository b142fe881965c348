// The filters in any shape, from any position and phase, on samples of any bits: block filters, and
// streams cut into blocks, against direct sums in double precision. Arrays have exactly their
// sizes.

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "dsplib/sp_fir_neon.h"
#include "fuzz.h"
#include "models/firReference.h"

namespace {

using Floats = std::vector<float>;

constexpr int MostTaps = 2100, MostSamples = 2200;  // about the stage that streams are laid out in

/** Mostly a few, sometimes many, sometimes none or less. */
int count(InputReader& input, int most) {
    const int kind = input.below(16);
    if (kind == 0) return std::min(input.number(), most);
    return kind == 1 ? input.below(most) + 1 : input.below(80) + 1;
}

std::size_t sizeOf(int count) {
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

double absoluteSum(const float* x, const float* h, int taps) {
    double sum = 0.0;
    for (int j = 0; j < taps; ++j) {
        sum += std::abs(static_cast<double>(x[j]) * static_cast<double>(h[j]));
    }
    return sum;
}

/** An output, its window and the taps. */
void checkOutput(float y, const float* x, const float* h, int taps) {
    const double sum = absoluteSum(x, h, taps);
    if (std::isnan(sum)) return demand(std::isnan(y), "an output of what is no number");
    if (sum > 0.99 * static_cast<double>(std::numeric_limits<float>::max())) return;
    const reference::FirOutput expected = reference::firOutput(x, h, taps);
    const double tiny = taps * 0x1p-149;  // products may lose all but a digit there
    demand(std::abs(static_cast<double>(y) - expected.value) <= expected.limit + tiny,
           "an output is the sum of its window");
}

void filterBlock(InputReader& input) {
    const int taps = count(input, MostTaps), outputs = count(input, MostSamples);
    const int step = input.below(4) == 0 ? 1 + std::abs(input.number()) % 3000 : 1;
    const bool isEmpty = taps <= 0 || outputs <= 0;
    const Floats h = input.floats(sizeOf(taps), 64);
    const Floats x = input.floats(isEmpty ? 0 : sizeOf(outputs + taps - 1), 1024);
    Floats y(outputs > 0 ? sizeOf((outputs - 1) / step + 1) : 0);
    if (step == 1) {
        sp_fir_gen(x.data(), h.data(), y.data(), taps, outputs);
    } else {
        sp_fir_gen_downsample(x.data(), h.data(), y.data(), taps, outputs, step);
    }
    for (std::size_t m = 0; m < y.size(); ++m) {
        if (isEmpty) {
            demand(y[m] == 0.0f, "an output without taps");
        } else {
            checkOutput(y[m], x.data() + m * static_cast<std::size_t>(step), h.data(), taps);
        }
    }
}

/** A stream, of which all samples are kept behind nh-1 zeros. */
struct Stream {
    int taps, step, position, phase;
    Floats h, line, samples;
    std::size_t due;  // the place in `samples` of the next output's window

    Stream(InputReader& input)
        : taps(input.below(8) == 0 ? input.below(MostTaps) + 1 : input.below(70) + 1),
          step(input.below(3) == 0 ? input.below(90) + 1 : 1),
          position(input.number()),
          phase(input.below(step)),
          h(input.floats(sizeOf(taps), 64)),
          line(sizeOf(taps)),
          samples(sizeOf(taps - 1)),
          due(sizeOf(phase)) {}

    void checkLine() const {
        demand(position >= 0 && position < taps, "a position");
        for (int k = 0; k < taps - 1; ++k) {
            const float kept = line[sizeOf((position + k) % taps)];
            const float sample = samples[samples.size() - sizeOf(taps - 1 - k)];
            demand(std::memcmp(&kept, &sample, sizeof kept) == 0, "the line keeps the newest");
        }
    }

    void filter(InputReader& input) {
        const int n = count(input, MostSamples);
        const Floats x = input.floats(sizeOf(n), 512);
        samples.insert(samples.end(), x.begin(), x.end());
        const std::size_t windows = samples.size() - sizeOf(taps - 1);
        const auto stride = sizeOf(step);
        Floats y(due < windows ? (windows - 1 - due) / stride + 1 : 0);
        if (input.below(2) == 0 && position >= 0 && position < 1000) {
            position += taps * input.below(1000);  // the same, modulo the taps
        }
        const int before = position;
        if (step == 1) {
            position = sp_fir_filter(x.data(), h.data(), line.data(), position, y.data(), taps, n);
        } else {
            position = sp_fir_filter_downsample(x.data(), h.data(), line.data(), position, y.data(),
                                                taps, n, &phase, step);
        }
        for (const float output : y) {
            checkOutput(output, samples.data() + due, h.data(), taps);
            due += stride;
        }
        if (n <= 0) return demand(position == before, "no samples move nothing");
        demand(due == windows + sizeOf(step == 1 ? 0 : phase), "the phase goes on");
        checkLine();
    }
};

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputReader input(data, size);
    if (input.below(2) == 0) {
        filterBlock(input);
        return 0;
    }
    Stream stream(input);
    for (int block = 0; block < 6 && !input.isEmpty(); ++block) stream.filter(input);
    return 0;
}
