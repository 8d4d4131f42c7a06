// What the benchmarks share: clocks, child processes, and the rule for names.
//
// A benchmark is called MEASURE/SIZE/WHO, with WHO one of "ours", "floor" (what no implementation
// can avoid) and "peer:NAME" (what somebody would use instead). bench/report.py divides what has
// the same MEASURE/SIZE by each other. All of one program run interleaved, so that a busy machine
// hits all of them alike.
#ifndef QORBENCH_BENCH_H
#define QORBENCH_BENCH_H

#include <benchmark/benchmark.h>

#include <string>
#include <utility>
#include <vector>

namespace qorbench {

// Processor time of this thread: other programs on the machine do not count.
double CpuSeconds();
// Time on the wall, for what waits for a child.
double WallSeconds();

// Starts a program with standard output in a file and nothing else, and waits for it. The program's
// processor time, or a failure of the whole benchmark.
double RunProgram(const std::vector<std::string>& arguments, const std::string& outFile,
                  int expectedStatus = 0);
// `sh -c command`, likewise.
void RunShell(const std::string& command, const std::string& outFile);

// The same, and what else a request cannot do without: the report is a new file, whose lines are
// read, and which is gone afterwards.
void RunForReport(const std::string& command, const std::string& outFile);

// From now on every program gets the library path that the RAID tool has to be given: the loader of
// each shell goes through it, whoever starts the shell. (Ours adds it once more, which the loader
// notices.)
void UseToolEnvironment();

// Writes a file, or ends the program.
void WriteFile(const std::string& path, const std::string& text);

// An own directory that goes with the program.
const std::string& ScratchDir();

// Times `work` alone; `cleanUp` puts things back between two runs.
template <class Clock, class Work, class CleanUp>
void TimeEach(benchmark::State& state, Clock clock, Work work, CleanUp cleanUp) {
    for (auto iteration : state) {
        static_cast<void>(iteration);
        const double begin = clock();
        work();
        state.SetIterationTime(clock() - begin);
        cleanUp();
    }
}

// What a quarter of the repetitions stay below. On a busy machine that is closer to the thing
// itself than the median, where time on the wall is taken.
double LowerQuartile(const std::vector<double>& values);

// `repetitions` times `iterations` runs of a benchmark that sets its own time.
template <class Work>
void Register(const std::string& name, int iterations, int repetitions, Work work) {
    benchmark::RegisterBenchmark(name.c_str(), std::move(work))
        ->Iterations(iterations)
        ->Repetitions(repetitions)
        ->ReportAggregatesOnly(repetitions > 1)
        ->ComputeStatistics("quartile", LowerQuartile)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
}

// Takes the benchmark library's options off the command line and runs what is registered.
int RunAll(int argc, char** argv);

}  // namespace qorbench

#endif  // QORBENCH_BENCH_H
