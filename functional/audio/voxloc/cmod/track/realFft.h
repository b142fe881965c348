/** A table of the real transforms. They themselves are in voxlocParts.h. */
#ifndef VOXLOC_REAL_FFT_H
#define VOXLOC_REAL_FFT_H

namespace voxloc {

/** 6-bit bit reversals, handed to the library with each transform. */
extern const unsigned char BitReverseTable[64];

}  // namespace voxloc

#endif
