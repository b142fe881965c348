/**
 * The transforms beside FFTW (single precision, measured plan) and KissFFT (single precision).
 *
 * All three run in one process, their repetitions interleaved; the table at the end shows medians
 * of processor time and the ratios of speed. Errors are relative RMS errors on the same noise
 * against a transform in double precision. Flags of Google Benchmark are taken and come after the
 * defaults set here.
 */
#include <benchmark/benchmark.h>
#include <fftw3.h>
#include <kissfft/kiss_fft.h>
#include <kissfft/kiss_fftr.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "dsplib/cfft_pow2_conjpair_splitrad_c89_neon.h"
#include "models/doubleFft.h"
#include "voxloc/voxloc.h"

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
    return {"complex " + std::to_string(n) + (inverse ? " inverse" : " forward"),
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
    return {"real " + std::to_string(n) + " forward",
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
        "real " + std::to_string(n) + " inverse",
        [=] {
            voxloc_realIfft(n, spectrum->get(), nullptr, out->get(), 2, tables->a.get(),
                            tables->b.get());
        },
        [=] { fftwf_execute(plan.get()); },
        [=] { kiss_fftri(static_cast<kiss_fftr_cfg>(kiss.get()), spectrum->kiss(), out->get()); }};
}

const char* const Libraries[] = {"ours", "FFTW", "KissFFT"};

void registerContest(const Contest& contest) {
    const std::function<void()> transforms[] = {contest.ours, contest.fftw, contest.kiss};
    for (std::size_t i = 0; i < 3; ++i) {
        const std::string name = contest.name + "/" + Libraries[i];
        benchmark::RegisterBenchmark(name.c_str(), [run = transforms[i]](benchmark::State& state) {
            for ([[maybe_unused]] auto _ : state) {
                run();
                benchmark::ClobberMemory();
            }
        });
    }
}

/** Keeps the median processor time of each benchmark in place of printing its runs. */
class Medians : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context& context) override {
        PrintBasicContext(&GetErrorStream(), context);
        return true;
    }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median") {
                nanoseconds_[run.run_name.function_name] = run.GetAdjustedCPUTime();
            }
        }
    }

    void printTable(const std::vector<Contest>& contests) const {
        std::printf("%-22s %10s %10s %10s %10s %10s\n", "median ns", "ours", "FFTW", "KissFFT",
                    "x FFTW", "x KissFFT");
        for (const Contest& contest : contests) {
            const double ours = of(contest, 0), fftw = of(contest, 1), kiss = of(contest, 2);
            if (!(ours > 0.0)) continue;  // filtered out
            std::printf("%-22s %10.0f %10.0f %10.0f %10.2f %10.2f\n", contest.name.c_str(), ours,
                        fftw, kiss, fftw / ours, kiss / ours);
        }
    }

  private:
    double of(const Contest& contest, std::size_t library) const {
        const auto found = nanoseconds_.find(contest.name + "/" + Libraries[library]);
        return found == nanoseconds_.end() ? 0.0 : found->second;
    }

    std::map<std::string, double> nanoseconds_;
};

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

int main(int argc, char* argv[]) {
    std::vector<std::string> arguments = {argv[0], "--benchmark_enable_random_interleaving=true",
                                          "--benchmark_repetitions=15",
                                          "--benchmark_min_time=0.01"};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    int count = static_cast<int>(pointers.size());
    benchmark::Initialize(&count, pointers.data());
    if (benchmark::ReportUnrecognizedArguments(count, pointers.data())) return 1;

    std::vector<Contest> contests;
    for (int n = 64; n <= FFT_MAX; n *= 2) {
        contests.push_back(complexContest(n, Direction::Forward));
        contests.push_back(complexContest(n, Direction::Inverse));
    }
    contests.push_back(realForward(4096));
    contests.push_back(realInverse(16384));
    for (const Contest& contest : contests) registerContest(contest);

    Medians medians;
    benchmark::RunSpecifiedBenchmarks(&medians);
    medians.printTable(contests);

    std::printf("\n%-22s %10s %10s %32s\n", "relative RMS error", "ours", "FFTW", "ours / FFTW");
    for (const int n : {2048, 8192}) {
        for (const Direction direction : {Direction::Forward, Direction::Inverse}) {
            printErrors(n, direction);
        }
    }
    return 0;
}
