/**
 * Kernels: functions written once on the vector layer and compiled for every width at which the
 * program may come to run.
 *
 * A header declares a kernel in its own namespace,
 *
 *     SP_SIMD_KERNEL(scale, void(const float* in, float factor, float* out, int count));
 *
 * a unit that is listed under KERNELS in the build defines it,
 *
 *     void SP_SIMD_HERE::scale(const float* in, float factor, float* out, int count) {...}
 *
 * and everyone calls scale(in, factor, out, count). Where one width serves the whole program, as on
 * ARM, that is a plain call of a plain function. A program for the x86-64 baseline compiles the
 * unit for each width and takes the one that sp_simd_lanes() tells; a kernel that calls another one
 * stays at its own width.
 *
 * A unit with kernels defines nothing else that the linker could see, and uses no function template
 * of the standard library that is not sure to be inlined: the linker keeps one copy of such a
 * function for the whole program, and it may be one that the machine cannot run.
 */
#ifndef DSPLIB_SIMD_SIMD_KERNEL_H
#define DSPLIB_SIMD_SIMD_KERNEL_H

#include "simd.h"

namespace simd {

/** A function's type as one name, by which a function can be declared. */
template <class Signature>
using Function = Signature;

}  // namespace simd

#ifdef SP_SIMD_SEVERAL_WIDTHS

#include "dsplib/sp_simd.h"

namespace simd {

template <class Signature, Signature AtFour, Signature AtEight, Signature AtSixteen>
struct Kernel;

/** A kernel of a program that chooses its width when it runs. */
template <class Result, class... Arguments, Result (*AtFour)(Arguments...),
          Result (*AtEight)(Arguments...), Result (*AtSixteen)(Arguments...)>
struct Kernel<Result (*)(Arguments...), AtFour, AtEight, AtSixteen> {
    Result operator()(Arguments... arguments) const {
        switch (sp_simd_lanes()) {
            case 16:
                return AtSixteen(arguments...);
            case 8:
                return AtEight(arguments...);
            default:
                return AtFour(arguments...);
        }
    }
};

}  // namespace simd

// clang-format off
#define SP_SIMD_KERNEL(name, ...)                                                        \
    namespace at4 { simd::Function<__VA_ARGS__> name; }                                  \
    namespace at8 { simd::Function<__VA_ARGS__> name; }                                  \
    namespace at16 { simd::Function<__VA_ARGS__> name; }                                 \
    constexpr simd::Kernel<simd::Function<__VA_ARGS__>*, at4::name, at8::name, at16::name> name
// clang-format on

#if SP_SIMD_WIDEST >= 16
#define SP_SIMD_HERE at16
#elif SP_SIMD_WIDEST >= 8
#define SP_SIMD_HERE at8
#else
#define SP_SIMD_HERE at4
#endif

#else

// clang-format off
#define SP_SIMD_KERNEL(name, ...)                                  \
    inline namespace here { simd::Function<__VA_ARGS__> name; }    \
    using here::name
// clang-format on
#define SP_SIMD_HERE here

#endif

#endif
