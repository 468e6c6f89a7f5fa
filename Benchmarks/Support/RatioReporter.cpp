#include "RatioReporter.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

void print(const std::string &task, long size, double bare, double ours)
{
    std::printf("%-24s %9ld %14.1f", task.c_str(), size, bare);
    if (ours > 0)
        std::printf(" %14.1f", ours);
    if (bare > 0 && ours > 0)
        std::printf(" %8.2f", ours / bare);
    std::printf("\n");
}

} // namespace

bool RatioReporter::ReportContext(const Context &)
{
    std::printf("%-24s %9s %14s %14s %8s\n", "", "elements", "bare ns/elem.", "ours ns/elem.", "ratio");
    return true;
}

void RatioReporter::ReportRuns(const std::vector<Run> &runs)
{
    for (const Run &run : runs) {
        const std::string &function = run.run_name.function_name;
        const size_t slash = function.find('/');
        const std::string variant = function.substr(slash + 1);
        const long size = std::max(std::atol(run.run_name.args.c_str()), 1L);
        if (run.run_type != Run::RT_Iteration || run.error_occurred || slash == std::string::npos)
            continue;
        Pair &pair = pairOf(function.substr(0, slash), size);
        double &best = variant == "bare" ? pair.bare : pair.ours;
        const std::string &kind = run.run_name.time_type;
        const bool isGiven = kind == "manual_time" || kind == "real_time";
        const double seconds = isGiven ? run.real_accumulated_time : run.cpu_accumulated_time;
        const double nanoseconds = seconds * 1e9 / double(run.iterations) / double(size);
        best = best > 0 ? std::min(best, nanoseconds) : nanoseconds;
    }
}

void RatioReporter::Finalize()
{
    for (const Task &task : m_tasks) {
        for (const auto &[size, pair] : task.nanosecondsBySize)
            print(task.name, size, pair.bare, pair.ours);
    }
}

RatioReporter::Pair &RatioReporter::pairOf(const std::string &task, long size)
{
    auto known = std::find_if(m_tasks.begin(), m_tasks.end(), [&task](const Task &t) { return t.name == task; });
    if (known == m_tasks.end())
        known = m_tasks.insert(m_tasks.end(), {task, {}});
    return known->nanosecondsBySize[size];
}
