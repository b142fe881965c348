/**
 * The floating-point mode of the tracker; the caller's is put back at the end of a scope, and with
 * it what the caller's unit remembers of exceptions.
 *
 * A host program may have let floating-point exceptions end it. The tracker divides zero by zero in
 * silence and asks for arcsines that do not exist, on purpose: while one of these objects lives, no
 * exception traps.
 */
#ifndef VOXLOC_FLUSH_TO_ZERO_H
#define VOXLOC_FLUSH_TO_ZERO_H

#include <cstdint>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace voxloc {

/** No exception traps while an object of this kind lives. */
class NoTraps {
  public:
    NoTraps() : NoTraps(0) {}
    ~NoTraps() { setMode(before_); }
    NoTraps(const NoTraps&) = delete;
    NoTraps& operator=(const NoTraps&) = delete;

  protected:
#if defined(__SSE2__)
    using Mode = unsigned int;
    static constexpr Mode FlushBits = 0x8040;  // results, and operands
    static constexpr Mode MaskBits = 0x1F80;   // set: the exception does not trap
    static constexpr Mode TrapBits = 0;
    static Mode mode() {
        return _mm_getcsr();
    }
    static void setMode(Mode mode) {
        _mm_setcsr(mode);
    }
#elif defined(__aarch64__)
    using Mode = std::uint64_t;
    static constexpr Mode FlushBits = 1u << 24;  // results and operands
    static constexpr Mode MaskBits = 0;
    static constexpr Mode TrapBits = 0x9F00;  // set: the exception traps, where the unit can
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
    static constexpr Mode MaskBits = 0;
    static constexpr Mode TrapBits = 0x9F00;  // set: the exception traps, where the unit can
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
    static constexpr Mode MaskBits = 0;
    static constexpr Mode TrapBits = 0;
    static Mode mode() {
        return 0;
    }
    static void setMode(Mode) {}
#endif

    explicit NoTraps(Mode more) : before_(mode()) {
        setMode((before_ & ~TrapBits) | MaskBits | more);
    }

  private:
    const Mode before_;
};

/**
 * Moreover, numbers too small for the normal format count as zero.
 *
 * After a talker, recursive averages decay into such numbers. The target's vector unit takes them
 * for zero anyway; other units compute with them, slowly on many machines. No result that anyone
 * sees is that small.
 */
class FlushToZero : public NoTraps {
  public:
    FlushToZero() : NoTraps(FlushBits) {}
};

}  // namespace voxloc

#endif
