/**
 * Numbers too small for the normal format count as zero while an object of this kind lives.
 *
 * After a talker, recursive averages decay into such numbers. The target's vector unit takes them
 * for zero anyway; other units compute with them, slowly on many machines. No result that anyone
 * sees is that small. The caller's mode is put back at the end.
 */
#ifndef VOXLOC_FLUSH_TO_ZERO_H
#define VOXLOC_FLUSH_TO_ZERO_H

#include <cstdint>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace voxloc {

class FlushToZero {
  public:
    FlushToZero() : before_(mode()) { setMode(before_ | FlushBits); }
    ~FlushToZero() { setMode(before_); }
    FlushToZero(const FlushToZero&) = delete;
    FlushToZero& operator=(const FlushToZero&) = delete;

  private:
#if defined(__SSE2__)
    using Mode = unsigned int;
    static constexpr Mode FlushBits = 0x8040;  // results, and operands
    static Mode mode() {
        return _mm_getcsr();
    }
    static void setMode(Mode mode) {
        _mm_setcsr(mode);
    }
#elif defined(__aarch64__)
    using Mode = std::uint64_t;
    static constexpr Mode FlushBits = 1u << 24;  // results and operands
    static Mode mode() {
        Mode mode;
        __asm__ volatile("mrs %0, fpcr" : "=r"(mode));
        return mode;
    }
    static void setMode(Mode mode) {
        __asm__ volatile("msr fpcr, %0" : : "r"(mode));
    }
#elif defined(__arm__) && defined(__ARM_FP)
    using Mode = std::uint32_t;
    static constexpr Mode FlushBits = 1u << 24;  // results and operands, of the scalar unit
    static Mode mode() {
        Mode mode;
        __asm__ volatile("vmrs %0, fpscr" : "=r"(mode));
        return mode;
    }
    static void setMode(Mode mode) {
        __asm__ volatile("vmsr fpscr, %0" : : "r"(mode));
    }
#else
    using Mode = unsigned int;
    static constexpr Mode FlushBits = 0;
    static Mode mode() {
        return 0;
    }
    static void setMode(Mode) {}
#endif

    const Mode before_;
};

}  // namespace voxloc

#endif
