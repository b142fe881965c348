/**
 * The transforms beside FFTW (single precision, measured plan) and KissFFT (single precision).
 *
 * Errors are relative RMS errors on the same noise against a transform in double precision.
 */
#include <benchmark/benchmark.h>
#include <fftw3.h>
#include <kissfft/kiss_fft.h>
#include <kissfft/kiss_fftr.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "dsplib/cfft_pow2_conjpair_splitrad_c89_neon.h"
#include "medians.h"
#include "models/doubleFft.h"
#include "voxloc/voxloc.h"

namespace voxloc_bench {

namespace {

enum class Direction { Forward, Inverse };

/** Begins on a cache line, which suits every vector width. */
struct Buffer {
    explicit Buffer(int floats)
        : size(static_cast<std::size_t>(floats)),
          data(static_cast<float*>(std::aligned_alloc(64, (4 * size + 63) / 64 * 64)), std::free) {
        std::fill_n(data.get(), size, 0.0f);
    }
    float* get() const { return data.get(); }
    fftwf_complex* fftw() const { return reinterpret_cast<fftwf_complex*>(data.get()); }
    kiss_fft_cpx* kiss() const { return reinterpret_cast<kiss_fft_cpx*>(data.get()); }

    std::size_t size;
    std::unique_ptr<float, void (*)(void*)> data;
};

void fillWithNoise(const Buffer& buffer) {
    std::mt19937 generator(1);
    std::uniform_real_distribution<float> uniform(-1.0f, 1.0f);
    std::generate_n(buffer.get(), buffer.size, [&] { return uniform(generator); });
}

/** One transform of each library on buffers that all three share. */
struct Contest {
    std::string name;
    int points;
    std::function<void()> ours, fftw, kiss;
};

using FftwPlan = std::shared_ptr<fftwf_plan_s>;
using KissState = std::shared_ptr<void>;

FftwPlan owned(fftwf_plan plan) {
    return FftwPlan(plan, fftwf_destroy_plan);
}

FftwPlan complexPlan(int n, Direction direction, const Buffer& in, const Buffer& out) {
    return owned(fftwf_plan_dft_1d(n, in.fftw(), out.fftw(),
                                   direction == Direction::Forward ? FFTW_FORWARD : FFTW_BACKWARD,
                                   FFTW_MEASURE));
}

Contest complexContest(int n, Direction direction) {
    const auto in = std::make_shared<Buffer>(2 * n), out = std::make_shared<Buffer>(2 * n);
    const FftwPlan plan = complexPlan(n, direction, *in, *out);
    const bool inverse = direction == Direction::Inverse;
    const KissState kiss(kiss_fft_alloc(n, inverse, nullptr, nullptr), kiss_fft_free);
    fillWithNoise(*in);
    const auto entry = inverse ? sp_ifftSPxSP : sp_fftSPxSP;
    return {"complex " + std::to_string(n) + (inverse ? " inverse" : " forward"), n,
            [=] { entry(n, in->get(), nullptr, out->get(), nullptr, 2, 0, n); },
            [=] { fftwf_execute(plan.get()); },
            [=] { kiss_fft(static_cast<kiss_fft_cfg>(kiss.get()), in->kiss(), out->kiss()); }};
}

struct RealTables {
    explicit RealTables(int half) : a(2 * half), b(2 * half) {
        voxloc_generateAbTables(a.get(), b.get(), half);
    }
    Buffer a, b;
};

Contest realForward(int n) {
    const auto in = std::make_shared<Buffer>(n), out = std::make_shared<Buffer>(n + 2);
    const auto work = std::make_shared<Buffer>(n + 2);
    const auto tables = std::make_shared<RealTables>(n / 2);
    const FftwPlan plan = owned(fftwf_plan_dft_r2c_1d(n, in->get(), out->fftw(), FFTW_MEASURE));
    const KissState kiss(kiss_fftr_alloc(n, 0, nullptr, nullptr), kiss_fftr_free);
    fillWithNoise(*in);
    return {"real " + std::to_string(n) + " forward", n,
            [=] {
                voxloc_realFft(n, in->get(), nullptr, out->get(), 2, tables->a.get(),
                               tables->b.get(), work->get());
            },
            [=] { fftwf_execute(plan.get()); },
            [=] { kiss_fftr(static_cast<kiss_fftr_cfg>(kiss.get()), in->get(), out->kiss()); }};
}

/**
 * Ours and FFTW's overwrite the spectrum with what it must not be read as again. It is left zero,
 * which it stays: vector units take the same time for every number that is not denormal.
 */
Contest realInverse(int n) {
    const auto spectrum = std::make_shared<Buffer>(n + 2), out = std::make_shared<Buffer>(n);
    const auto tables = std::make_shared<RealTables>(n / 2);
    const FftwPlan plan =
        owned(fftwf_plan_dft_c2r_1d(n, spectrum->fftw(), out->get(), FFTW_MEASURE));
    const KissState kiss(kiss_fftr_alloc(n, 1, nullptr, nullptr), kiss_fftr_free);
    std::fill_n(spectrum->get(), spectrum->size, 0.0f);
    return {
        "real " + std::to_string(n) + " inverse", n,
        [=] {
            voxloc_realIfft(n, spectrum->get(), nullptr, out->get(), 2, tables->a.get(),
                            tables->b.get());
        },
        [=] { fftwf_execute(plan.get()); },
        [=] { kiss_fftri(static_cast<kiss_fftr_cfg>(kiss.get()), spectrum->kiss(), out->get()); }};
}

const char* const Libraries[] = {"ours", "FFTW", "KissFFT"};

std::string nameOf(const Contest& contest, std::size_t library) {
    return contest.name + "/" + Libraries[library];
}

void registerContest(const Contest& contest) {
    const std::function<void()> transforms[] = {contest.ours, contest.fftw, contest.kiss};
    for (std::size_t i = 0; i < 3; ++i) {
        benchmark::RegisterBenchmark(nameOf(contest, i).c_str(),
                                     [run = transforms[i]](benchmark::State& state) {
                                         for ([[maybe_unused]] auto _ : state) {
                                             run();
                                             benchmark::ClobberMemory();
                                         }
                                     });
    }
}

void printTable(const Medians& medians, const std::vector<Contest>& contests) {
    std::printf("%-22s %10s %10s %10s %10s %10s %10s\n", "median ns", "ours", "a point", "FFTW",
                "KissFFT", "x FFTW", "x KissFFT");
    for (const Contest& contest : contests) {
        const auto found = medians.find(nameOf(contest, 0));
        if (found == medians.end()) continue;  // filtered out
        const double ours = found->second.at(ProcessorTime);
        std::printf("%-22s %10.1f %10.3f", contest.name.c_str(), ours, ours / contest.points);
        for (std::size_t peer : {1u, 2u}) {
            printFigure(medians, nameOf(contest, peer), ProcessorTime, 10, 1);
        }
        for (std::size_t peer : {1u, 2u}) {
            std::printf(" %10.2f", medians.at(nameOf(contest, peer)).at(ProcessorTime) / ours);
        }
        std::printf("\n");
    }
}

reference::Spectrum widened(const Buffer& buffer, double scale) {
    reference::Spectrum out(buffer.size / 2);
    for (std::size_t k = 0; k < out.size(); ++k) {
        const float* const element = buffer.get() + 2 * k;
        out[k] = {static_cast<double>(element[0]) * scale, static_cast<double>(element[1]) * scale};
    }
    return out;
}

void printErrors(int n, Direction direction) {
    const Buffer in(2 * n), out(2 * n);
    const FftwPlan plan = complexPlan(n, direction, in, out);
    const bool inverse = direction == Direction::Inverse;
    fillWithNoise(in);
    const reference::Spectrum exact = reference::fastDft(widened(in, 1.0), inverse ? 1 : -1);
    fftwf_execute(plan.get());
    const double theirs = reference::relativeRmsError(widened(out, 1.0), exact);
    const auto entry = inverse ? sp_ifftSPxSP : sp_fftSPxSP;
    entry(n, in.get(), nullptr, out.get(), nullptr, 2, 0, n);
    const double ours = reference::relativeRmsError(widened(out, inverse ? n : 1.0), exact);
    std::printf("complex %d %-12s %10.3g %10.3g %32.2f\n", n, inverse ? "inverse" : "forward", ours,
                theirs, ours / theirs);
}

}  // namespace

}  // namespace voxloc_bench

int main(int argc, char* argv[]) {
    using namespace voxloc_bench;
    std::vector<Contest> contests;
    for (int n = 4; n <= FFT_MAX; n *= 2) {
        contests.push_back(complexContest(n, Direction::Forward));
        contests.push_back(complexContest(n, Direction::Inverse));
    }
    contests.push_back(realForward(2 * FRAME_SAMPLES));
    contests.push_back(realInverse(8 * FRAME_SAMPLES));
    for (const Contest& contest : contests) registerContest(contest);
    const int status =
        runInterleaved(argc, argv, [&](const Medians& medians) { printTable(medians, contests); });

    std::printf("\n%-22s %10s %10s %32s\n", "relative RMS error", "ours", "FFTW", "ours / FFTW");
    for (const int n : {2048, 8192}) {
        for (const Direction direction : {Direction::Forward, Direction::Inverse}) {
            printErrors(n, direction);
        }
    }
    return status;
}
