/** A call of any of the four filters, held in every respect to what it should do. */
#ifndef VERIFY_UNIT_SP_FIR_TESTING_H
#define VERIFY_UNIT_SP_FIR_TESTING_H

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <vector>

#include "dsplib/sp_fir_neon.h"
#include "kit/guardedFloats.h"
#include "kit/noise.h"

namespace firtest {

using reference::GuardedFloats;
using reference::noise;

/** The suites count down where instructions cost ten times as much; the kinds of case stay. */
#if defined(__SANITIZE_ADDRESS__) || defined(__arm__) || defined(__aarch64__)
constexpr bool SlowMachine = true;
#else
constexpr bool SlowMachine = false;
#endif

constexpr float NaN = std::numeric_limits<float>::quiet_NaN();
constexpr int Least = std::numeric_limits<int>::min();
constexpr int Huge = std::numeric_limits<int>::max();

enum class Filter { Block, Stream, DecimatingBlock, DecimatingStream };
constexpr Filter EveryFilter[] = {Filter::Block, Filter::Stream, Filter::DecimatingBlock,
                                  Filter::DecimatingStream};

struct Call {
    Filter filter;
    int nh, n;
    int step = 1;
    int begin = 0;
    int pos = 0;
    int offset = 0;      ///< floats from an aligned address; h and y have others
    int poisoned = -1;   ///< the sample of x that is NaN, if any
    unsigned seed = 11;  ///< of the data
};

inline std::size_t sizeOf(int count) {
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

inline bool isStream(Filter filter) {
    return filter == Filter::Stream || filter == Filter::DecimatingStream;
}

/** `value` modulo `bound` > 0, taken non-negative. */
inline int wrapped(int value, int bound) {
    return (value % bound + bound) % bound;
}

/** Outputs at the samples begin, begin+step, ... below n. */
inline int dueOutputs(int n, int begin, int step) {
    return begin < n ? (n - 1 - begin) / step + 1 : 0;
}

/** Makes the call; returns the new position, c.pos of a block filter. */
int run(const Call& c, const float* x, const float* h, float* line, float* y, int* begin);

/**
 * Makes the call on noise, between guards, and looks at everything: each output is the direct sum
 * of its window (NaN where that has one), nothing is written beside, the line ends with the newest
 * samples, position and phase are as they should be. Pointers that must not be used are null.
 */
testing::AssertionResult isCorrect(const Call& c);

/** Whether both are NaN or both have the same bits. */
bool sameValue(float a, float b);

/** The first index at which two equally long vectors differ in any bit; or -1. */
int firstDifference(const std::vector<float>& a, const std::vector<float>& b);

}  // namespace firtest

#endif
