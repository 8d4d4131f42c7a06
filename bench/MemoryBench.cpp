// The memory that a large report takes: the peak of the process while a getter reads it, beside the
// bytes of the items that are left in the end.
#include <malloc.h>

#include <fstream>

#include "Bench.h"
#include "GetterRun.h"

namespace {

constexpr std::size_t REPORT_SIZE = 16'000'000;

// A line of /proc/self/status, in bytes.
double StatusBytes(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (word == name + ":") {
            double kib = 0;
            status >> kib;
            return kib * 1024;
        }
    }
    return 0;
}

double HeapBytes() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

void Measure(benchmark::State& state, qorbench::EReport kind) {
    const std::string path = qorbench::ScratchDir() + "/report.txt";
    qorbench::WriteFile(path, qorbench::MakeReport(kind, REPORT_SIZE));
    malloc_trim(0);
    for (auto iteration : state) {
        static_cast<void>(iteration);
        const double heapBefore = HeapBytes();
        std::ofstream("/proc/self/clear_refs") << "5";  // the peak is what is used now
        const double residentBefore = StatusBytes("VmRSS");
        ItemList items;
        QorBenchParse(kind, path.c_str(), &items);
        state.counters["peak"] = StatusBytes("VmHWM") - residentBefore;
        state.counters["items"] = HeapBytes() - heapBefore;
        state.counters["count"] = static_cast<double>(items.size());
        QorBenchFree(&items);
        state.counters["left"] = HeapBytes() - heapBefore;
        state.SetIterationTime(1);
    }
}

}  // namespace

int main(int argc, char** argv) {
    for (const qorbench::EReport kind : qorbench::ALL_REPORTS) {
        qorbench::Register(std::string("memory/") + NameOf(kind) + " 16MB/ours", 1, 1,
                           [=](benchmark::State& state) { Measure(state, kind); });
    }
    return qorbench::RunAll(argc, argv);
}
