/**
 * The split passes between a real transform and the complex transform of half its size. The
 * transforms themselves are in voxloc.h. No state; tables are handed in.
 */
#ifndef VOXLOC_REAL_FFT_H
#define VOXLOC_REAL_FFT_H

namespace voxloc {

/** 6-bit bit reversals, handed to the library with each transform. */
extern const unsigned char BitReverseTable[64];

/**
 * Forward split: turns a complex spectrum x of n points into the n+1 bins of the real spectrum out.
 * x has room for n+1 points: element n is written. x and out do not overlap.
 */
void splitFft(int n, float* x, const float* aTable, const float* bTable, float* out);

/** Inverse split: turns n+1 bins x into n complex points out. x and out do not overlap. */
void splitIfft(int n, const float* x, const float* aTable, const float* bTable, float* out);

}  // namespace voxloc

#endif
