/** The calling thread's CPU time: what other load on the machine takes away does not count. */
#ifndef VOXLOC_BENCH_CPU_TIME_H
#define VOXLOC_BENCH_CPU_TIME_H

#include <time.h>

namespace voxloc_bench {

inline double cpuMicroseconds() {
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

/** Adds the CPU time of its scope (microseconds) to a sum. */
class CpuTime {
  public:
    explicit CpuTime(double& total) : sum(total), start(cpuMicroseconds()) {}
    ~CpuTime() { sum += cpuMicroseconds() - start; }
    CpuTime(const CpuTime&) = delete;
    CpuTime& operator=(const CpuTime&) = delete;

  private:
    double& sum;
    double start;
};

}  // namespace voxloc_bench

#endif
