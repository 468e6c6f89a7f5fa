#pragma once

#include <benchmark/benchmark.h>

#include <ctime>

/// The processor's time of the calling thread so far, in seconds.
inline double cpuTime()
{
    timespec time;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) + double(time.tv_nsec) * 1e-9;
}

/// One iteration of a benchmark with UseManualTime(): only @p work counts, not what is done
/// before and after it.
template<class Work>
void timeIteration(benchmark::State &state, const Work &work)
{
    const double start = cpuTime();
    work();
    state.SetIterationTime(cpuTime() - start);
}
