/**
 * The entry points of the FIR engine, and the stream filters' view of history and new samples.
 *
 * A frame of the tracker uses sp_fir_gen alone; stream filters and decimation are for the public
 * interface.
 */
#include "sp_fir_neon.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstring>

#include "assertion/assertion.h"
#include "sp_fir_neon_internal.h"
#include "sp_fir_neon_kernels.h"

namespace sp_fir {
namespace {

constexpr char SourcePath[] = "functional/audio/libraries/dsplib/arm/sp_fir_neon";

/** Samples of history and new ones laid end to end for the block filters: 8 KiB of stack. */
constexpr int StageLength = 2048;

/** A single output is not worth the copy of its history. */
constexpr int FewestStagedOutputs = 2;

/** Outputs of the widest block kernel; leading outputs are rounded up to whole blocks. */
constexpr int WidestBlock = 64;

void zeroFill(float* y, int count) {
    std::fill_n(y, count, 0.0f);
}

void copySamples(float* to, const float* from, int count) {
    if (count > 0) std::memcpy(to, from, static_cast<std::size_t>(count) * sizeof(float));
}

/** The samples from sample `at` on that lie in a row in memory. */
struct Run {
    const float* samples;
    int length;
};

Run runAt(const Window& window, int at) {
    if (at < window.oldEnd) return {window.old + at, window.oldEnd - at};
    if (at < window.recentEnd) return {window.recent + (at - window.oldEnd), window.recentEnd - at};
    return {window.fresh + (at - window.recentEnd), window.freshEnd - at};
}

/** Copies samples first ... first+count-1, as far as the window has them. Returns how many. */
int copyWindow(float* to, const Window& window, int first, int count) {
    int copied = 0;
    while (copied < count && first + copied < window.freshEnd) {
        const Run run = runAt(window, first + copied);
        const int length = std::min(run.length, count - copied);
        copySamples(to + copied, run.samples, length);
        copied += length;
    }
    return copied;
}

/**
 * Hands the window of Outputs successive outputs, the first at sample `first`, to
 * addTaps(samples, tap, taps) piece by piece: whole groups of four taps from where the samples lie,
 * and the groups at a seam, two at a time, from the overlap buffer.
 */
template <int Outputs, class AddTaps>
void walkWindow(const Window& window, int first, int nh, AddTaps addTapsOf) {
    constexpr int OverlapLength = Outputs == 1 ? 8 : 12;
    static_assert(OverlapLength >= 8 + Outputs - 1, "two groups of taps for every output");
    alignas(16) float overlap[OverlapLength];
    for (int tap = 0; tap < nh;) {
        const int left = nh - tap;
        const Run run = runAt(window, first + tap);
        int taps = std::min(run.length - (Outputs - 1), left);
        if (taps < left) taps -= taps % 4;
        if (taps > 0) {
            addTapsOf(run.samples, tap, taps);
        } else {
            taps = std::min(8, left);
            init_overlap(overlap, OverlapLength, window, first + tap);
            addTapsOf(overlap, tap, taps);
        }
        tap += taps;
    }
}

void fourOutputs(const Window& window, const float* h, float* y, int nh, int first) {
    SumsOfOutputs<1> sums = emptySums<1>();
    walkWindow<4>(window, first, nh, [&](const float* samples, int tap, int taps) {
        addTaps(sums, samples, h + tap, taps);
    });
    storeOutputs(y, sums);
}

void oneOutput(const Window& window, const float* h, float* y, int nh, int first) {
    SumsInLanes<1> sums = emptyLanes<1>();
    walkWindow<1>(window, first, nh, [&](const float* samples, int tap, int taps) {
        addTaps(sums, samples, 0, h + tap, taps);
    });
    storeOutputs(y, sums);
}

/** Fewer outputs than this are not worth a whole block of sums. */
constexpr int FewestSummedOutputs = 32;

/**
 * Up to SummedOutputs outputs of a filter that no stage can hold: as many taps as it can, and then
 * the next. Outputs behind the last are made of zeros and left out.
 */
void summedOutputs(const Window& window, const float* h, float* y, int nh, int first, int count) {
    constexpr int MostTaps = (StageLength - SummedOutputs) / 4 * 4;
    alignas(64) float stage[StageLength];
    alignas(64) float sums[4][SummedOutputs];
    std::fill_n(sums[0], 4 * SummedOutputs, -0.0f);
    for (int tap = 0; tap < nh; tap += MostTaps) {
        const int taps = std::min(MostTaps, nh - tap), length = taps + SummedOutputs - 1;
        const int copied = copyWindow(stage, window, first + tap, length);
        zeroFill(stage + copied, length - copied);
        sp_fir_add_taps(stage, h + tap, sums[0], taps);
    }
    for (int i = 0; i < count; ++i) {
        y[i] = (sums[0][i] + sums[1][i]) + (sums[2][i] + sums[3][i]);
    }
}

/** Whether a stage has room for eight decimated outputs, and enough taps of them to pay. */
bool isSpanStaged(int step) {
    constexpr int EnoughTaps = 256;
    return step <= (StageLength - EnoughTaps) / 7;
}

/** Eight decimated outputs of such a filter in the same way. */
void eightOutputs(const Window& window, const float* h, float* y, int nh, int first, int step) {
    const int span = 7 * step, mostTaps = (StageLength - span) / 4 * 4;
    alignas(64) float stage[StageLength];
    SumsInLanes<8> sums = emptyLanes<8>();
    for (int tap = 0; tap < nh; tap += mostTaps) {
        const int taps = std::min(mostTaps, nh - tap);
        copyWindow(stage, window, first + tap, span + taps);
        addTaps(sums, stage, step, h + tap, taps);
    }
    storeOutputs(y, sums);
}

/** Outputs a stage can hold, in whole blocks where there are that many. */
int outputsPerStage(int nh, int step) {
    if (nh > StageLength) return 0;
    const int most = (step == 1 ? StageLength - nh : (StageLength - nh) / step) + 1;
    return most > WidestBlock ? most - most % WidestBlock : most;
}

/**
 * The outputs of filterWindow() that are not staged: filters too long for the stage, and what is
 * left over.
 */
void filterInPlace(const Window& window, const float* h, float* y, int nh, int first, int count,
                   int step) {
    int m = 0;
    if (step == 1) {
        while (count - m >= FewestSummedOutputs) {
            const int outputs = std::min(SummedOutputs, count - m);
            summedOutputs(window, h, y + m, nh, first + m, outputs);
            m += outputs;
        }
        for (; count - m >= 4; m += 4) fourOutputs(window, h, y + m, nh, first + m);
    } else if (isSpanStaged(step)) {
        for (; count - m >= 8; m += 8) eightOutputs(window, h, y + m, nh, first + m * step, step);
    }
    for (; m < count; ++m) oneOutput(window, h, y + m, nh, first + m * step);
}

/**
 * Computes `count` outputs whose windows begin at samples first, first+step, ... The window is laid
 * end to end for the block filters where that is worth it: in whole blocks, or all that there are.
 */
void filterWindow(const Window& window, const float* h, float* y, int nh, int first, int count,
                  int step) {
    const int perStage = outputsPerStage(nh, step);
    const int worthIt = step == 1 ? WidestBlock : 8;
    int m = 0;
    while (count - m >= FewestStagedOutputs && perStage >= std::min(worthIt, count - m)) {
        alignas(64) float stage[StageLength];
        const int outputs = std::min(perStage, count - m);
        const int span = (outputs - 1) * step + 1;
        copyWindow(stage, window, first + m * step, span + nh - 1);
        if (step == 1) {
            sp_fir_gen_(stage, h, y + m, nh, outputs);
        } else {
            sp_fir_gen_downsample_(stage, h, y + m, nh, span, step);
        }
        m += outputs;
    }
    filterInPlace(window, h, y + m, nh, first + m * step, count - m, step);
}

/** pos modulo nh, taken non-negative. */
int normalised(int pos, int nh) {
    if (pos >= 0 && pos < nh) return pos;  // nearly always, and a division costs as much as a tap
    const int remainder = pos % nh;
    return remainder < 0 ? remainder + nh : remainder;
}

/** How many of begin, begin+step, begin+2·step, ... are below n. */
int dueBelow(int n, int begin, int step) {
    return begin < n ? (n - 1 - begin) / step + 1 : 0;
}

/** count rounded up to blocks; at most half of INT_MAX goes in. */
int wholeBlocks(int count) {
    return (count + WidestBlock - 1) / WidestBlock * WidestBlock;
}

/** The outputs at samples begin, begin+step, ... of a block of n. */
void decimateBlock(const float* x, const float* h, const float* dl, int pos, float* y, int nh,
                   int n, int begin, int step) {
    const int due = dueBelow(n, begin, step);
    const int leading = std::min(due, dueBelow(nh - 1, begin, step));
    filterWindow(windowOf(x, dl, pos, nh, n), h, y, nh, begin, leading, step);
    if (leading == due) return;
    const int k = begin + leading * step;
    sp_fir_gen_downsample_(x + 1 - nh + k, h, y + leading, nh, n - k, step);
}

/**
 * A line in order is kept in order while the move is short (at most 2048 samples) or pays (a block
 * of about half the taps, nh rounded down to a multiple of 8); otherwise it becomes circular. The
 * bound and the rounding are deliberate: they decide where pos goes.
 */
bool isShifted(int pos, int nh, int n) {
    return pos == 0 && nh <= 2048 && 4 * (nh / 8) <= n;
}

/** From so many taps on a line takes a single sample in circles, wherever its position is. */
constexpr int FewestTapsInCircles = 8;

/**
 * The stream filter for one sample and at least FewestTapsInCircles taps, without a copy of the
 * window. The sample takes the place of the oldest in the line, which no output needs any more:
 * from pos on the line then is the window, with one seam where the array ends.
 */
int filterOneSample(float x, const float* h, float* dl, int pos, float* y, int nh) {
    dl[pos > 0 ? pos - 1 : nh - 1] = x;
    const int untilEnd = nh - pos, split = untilEnd % 4;
    // The group of four across the seam, asked for long before it is needed.
    alignas(16) float seam[8];
    simd::store4(seam, simd::load4(dl + nh - 4));
    simd::store4(seam + 4, simd::load4(dl));
    const int seamTap = split > 0 ? untilEnd - split : -1;
    const int lastBefore = untilEnd - 4;
    // One loop over all groups, whose length no change of the position makes hard to foresee.
    const auto samplesAt = [=, &seam](int tap) {
        const float* const samples = dl + (pos + tap - (tap <= lastBefore ? 0 : nh));
        return tap == seamTap ? seam + 4 - split : samples;
    };
    SumsInLanes<1> sums = emptyLanes<1>();
    int tap = 0;
    for (; nh - tap >= 4; tap += 4) addTaps(sums, samplesAt(tap), 0, h + tap, 4);
    addTaps(sums, samplesAt(tap), 0, h + tap, nh - tap);
    storeOutputs(y, sums);
    return pos + 1 == nh ? 0 : pos + 1;
}

/** The same for few taps: the whole window is copied. */
void filterOneOfFewTaps(float x, const float* h, const float* dl, int pos, float* y, int nh) {
    alignas(16) float window[FewestTapsInCircles] = {};
    for (int j = 0, at = pos; j < nh - 1; ++j) {
        window[j] = dl[at];
        at = at + 1 < nh ? at + 1 : 0;
    }
    window[nh - 1] = x;
    SumsInLanes<1> sums = emptyLanes<1>();
    addTaps(sums, window, 0, h, nh);
    storeOutputs(y, sums);
}

}  // namespace

Window windowOf(const float* x, const float* dl, int pos, int nh, int n) {
    const int oldCount = std::min(nh - pos, nh - 1);
    return {dl + pos, dl, x, oldCount, nh - 1, nh - 1 + n};
}

void init_overlap(float* overlap, int len, const Window& window, int first) {
    PLATFORM_ASSERT(len == 8 || len == 12);
    const int copied = copyWindow(overlap, window, first, len);
    std::fill(overlap + copied, overlap + len, 0.0f);
}

int update_delay_line(const float* x, float* dl, int pos, int nh, int n) {
    if (n >= nh) {
        copySamples(dl, x + n - nh + 1, nh - 1);
        dl[nh - 1] = x[n - nh];
        return 0;
    }
    if (isShifted(pos, nh, n)) {
        const int kept = nh - 1 - n;
        const float beforeKept = dl[n - 1];
        std::memmove(dl, dl + n, static_cast<std::size_t>(kept) * sizeof(float));
        copySamples(dl + kept, x, n);
        dl[nh - 1] = beforeKept;
        return 0;
    }
    const int last = pos + n - 1;  // below 2·nh: no division
    const int end = last < nh ? last : last - nh;
    const int head = std::min(n, end);
    const int tail = n - head;
    copySamples(dl + nh - tail, x, tail);
    copySamples(dl + end - head, x + tail, head);
    return end + 1 == nh ? 0 : end + 1;
}

}  // namespace sp_fir

void sp_fir_gen(const float* x, const float* h, float* y, int nh, int ny) {
    using namespace sp_fir;
    if (ny <= 0) return;
    if (nh <= 0) {
        zeroFill(y, ny);
        return;
    }
    sp_fir_gen_(x, h, y, nh, ny);
}

void sp_fir_gen_downsample(const float* x, const float* h, float* y, int nh, int n, int step) {
    using namespace sp_fir;
    if (n <= 0) return;
    PLATFORM_ASSERT(step > 0);
    if (step == 1) {
        sp_fir_gen(x, h, y, nh, n);
        return;
    }
    if (nh <= 0) {
        zeroFill(y, (n - 1) / step + 1);
        return;
    }
    sp_fir_gen_downsample_(x, h, y, nh, n, step);
}

int sp_fir_filter(const float* x, const float* h, float* dl, int pos, float* y, int nh, int n) {
    using namespace sp_fir;
    if (n <= 0) return pos;
    if (nh <= 0) {
        zeroFill(y, n);
        return pos;
    }
    PLATFORM_ASSERT(n <= INT_MAX - (nh - 1));
    pos = normalised(pos, nh);
    if (n == 1 && nh >= FewestTapsInCircles) return filterOneSample(x[0], h, dl, pos, y, nh);
    if (n == 1) {
        filterOneOfFewTaps(x[0], h, dl, pos, y, nh);
        return update_delay_line(x, dl, pos, nh, 1);
    }
    const int leading = n < nh ? n : std::min(n, wholeBlocks(nh - 1));
    if (leading > 0) filterWindow(windowOf(x, dl, pos, nh, n), h, y, nh, 0, leading, 1);
    if (leading < n) sp_fir_gen_(x + leading + 1 - nh, h, y + leading, nh, n - leading);
    return update_delay_line(x, dl, pos, nh, n);
}

int sp_fir_filter_downsample(const float* x, const float* h, float* dl, int pos, float* y, int nh,
                             int n, int* beginAddress, int step) {
    using namespace sp_fir;
    if (n <= 0) return pos;
    const int begin = beginAddress != nullptr ? *beginAddress : 0;
    PLATFORM_ASSERT(step > 0);
    PLATFORM_ASSERT(begin >= 0 && begin < step);
    if (step == 1) return sp_fir_filter(x, h, dl, pos, y, nh, n);
    if (nh <= 0) {
        zeroFill(y, dueBelow(n, begin, step));
    } else {
        PLATFORM_ASSERT(n <= INT_MAX - (nh - 1));
        pos = normalised(pos, nh);
        decimateBlock(x, h, dl, pos, y, nh, n, begin, step);
        pos = update_delay_line(x, dl, pos, nh, n);
    }
    if (beginAddress != nullptr) *beginAddress = normalised(begin - n, step);
    return pos;
}
