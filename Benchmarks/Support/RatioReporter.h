#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

/// Shows each benchmark beside the bare work, as a ratio.
///
/// "task/bare" and "task/ours" are a pair, with or without a size behind ("task/ours/1000"). What
/// counts is the processor's time, and of repeated runs the quickest: what else the machine does
/// can only make a run slower. A benchmark with UseManualTime() gives that time itself: see CpuTime.h;
/// one with UseRealTime() counts the time that passes.
class RatioReporter : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context &context) override;
    void ReportRuns(const std::vector<Run> &runs) override;
    void Finalize() override;

private:
    struct Pair
    {
        double bare = 0;
        double ours = 0;
    };
    struct Task
    {
        std::string name;
        std::map<long, Pair> nanosecondsBySize;
    };

    Pair &pairOf(const std::string &task, long size);

    std::vector<Task> m_tasks; ///< in the order of their first run
};
