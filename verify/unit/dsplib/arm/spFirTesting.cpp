#include "spFirTesting.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "models/firReference.h"

namespace firtest {
namespace {

/** What fills memory that a call is still to write */
constexpr float Untouched = -12345.5f;

/** Noise cut from one long stretch, whose making would take longer than most calls. */
std::vector<float> cutNoise(std::size_t count, unsigned seed) {
    static const std::vector<float> stretch = noise(65536, 11u);
    std::vector<float> cut(count);
    for (std::size_t i = 0; i < count; ++i) cut[i] = stretch[(seed * 7919u + i) % stretch.size()];
    return cut;
}

/** Where an update of a valid line moves the position: only lines in order may be shifted. */
int positionAfter(int nh, int pos, int n) {
    const bool shifts = pos == 0 && nh <= 2048 && 4 * (nh / 8) <= n;
    return n >= nh || shifts ? 0 : (pos + n) % nh;
}

int phaseAfter(const Call& c) {
    const bool carried = c.filter == Filter::DecimatingStream && c.step > 1 && c.n > 0;
    return carried ? wrapped(c.begin - c.n, c.step) : c.begin;
}

/** The last `count` values that a circular array holds, read up to the slot before `pos`. */
std::vector<float> heldBy(const GuardedFloats& line, int pos) {
    const int nh = static_cast<int>(line.size());
    std::vector<float> held;
    for (int k = 0; k < nh; ++k) held.push_back(line[sizeOf(wrapped(pos - 1 + k, nh))]);
    return held;
}

testing::AssertionResult failure(const Call& c) {
    return testing::AssertionFailure()
           << "filter " << static_cast<int>(c.filter) << ", taps " << c.nh << ", n " << c.n
           << ", step " << c.step << ", begin " << c.begin << ", pos " << c.pos << ", offset "
           << c.offset << ", NaN at " << c.poisoned << ", seed " << c.seed << ": ";
}

bool isDirectSum(float y, const float* x, const float* h, int nh) {
    const reference::FirOutput expected = reference::firOutput(x, h, nh);
    if (std::isnan(expected.value)) return std::isnan(y);
    return std::abs(static_cast<double>(y) - expected.value) <= expected.limit;
}

}  // namespace

int run(const Call& c, const float* x, const float* h, float* line, float* y, int* begin) {
    switch (c.filter) {
        case Filter::Block:
            sp_fir_gen(x, h, y, c.nh, c.n);
            return c.pos;
        case Filter::DecimatingBlock:
            sp_fir_gen_downsample(x, h, y, c.nh, c.n, c.step);
            return c.pos;
        case Filter::Stream:
            return sp_fir_filter(x, h, line, c.pos, y, c.nh, c.n);
        default:
            return sp_fir_filter_downsample(x, h, line, c.pos, y, c.nh, c.n, begin, c.step);
    }
}

testing::AssertionResult isCorrect(const Call& c) {
    const bool stream = isStream(c.filter), works = c.nh > 0 && c.n > 0;
    const int taps = std::max(c.nh, 0);
    const int due = c.n > 0 ? dueOutputs(c.n, c.begin, c.step) : 0;
    const auto offset = [&c](int array) { return sizeOf((c.offset + array) % 4); };
    GuardedFloats x(cutNoise(sizeOf(works && !stream ? c.n + taps - 1 : c.n), c.seed), offset(0));
    const GuardedFloats h(cutNoise(sizeOf(taps), c.seed + 1), offset(1));
    GuardedFloats line(cutNoise(stream ? sizeOf(taps) : 0, c.seed + 2), offset(2));
    GuardedFloats y(sizeOf(due), offset(3), Untouched);
    if (c.poisoned >= 0) x[sizeOf(c.poisoned)] = NaN;

    std::vector<float> samples;  // the oldest of them in the slot before the position, so unused
    if (stream && works) {
        line[sizeOf(wrapped(c.pos - 1, taps))] = NaN;
        samples = heldBy(line, c.pos);
    }
    samples.insert(samples.end(), x.data(), x.data() + x.size());

    int begin = c.begin;
    const int pos = works ? run(c, x.data(), h.data(), line.data(), y.data(), &begin)
                          : run(c, nullptr, nullptr, nullptr, y.data(), &begin);

    const float* const windows = samples.data() + (stream && works ? 1 : 0) + c.begin;
    for (int m = 0; m < due; ++m) {
        const float* const window = windows + std::ptrdiff_t{m} * c.step;
        if (!isDirectSum(y[sizeOf(m)], window, h.data(), taps)) {
            return failure(c) << "output " << m << " is " << y[sizeOf(m)];
        }
    }
    if (!y.intact() || !line.intact()) return failure(c) << "wrote beside its arrays";
    if (begin != phaseAfter(c)) return failure(c) << "phase " << begin << " after it";
    if (!stream || !works) {
        if (pos != c.pos) return failure(c) << "position " << pos << " after it";
        return testing::AssertionSuccess();
    }
    if (pos != positionAfter(taps, wrapped(c.pos, taps), c.n)) {
        return failure(c) << "position " << pos << " after it";
    }
    const std::vector<float> newest(samples.end() - taps, samples.end());
    if (firstDifference(heldBy(line, pos), newest) != -1) return failure(c) << "line spoilt";
    return testing::AssertionSuccess();
}

bool sameValue(float a, float b) {
    return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}

int firstDifference(const std::vector<float>& a, const std::vector<float>& b) {
    const auto found = std::mismatch(a.begin(), a.end(), b.begin(), b.end(), sameValue);
    return found.first == a.end() && found.second == b.end()
               ? -1
               : static_cast<int>(found.first - a.begin());
}

}  // namespace firtest
