// What a trace that is switched off costs: two builds of the getters in one process, one of them
// without any trace call.
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

#include "Bench.h"
#include "GetterRun.h"

namespace {

constexpr std::size_t REPORT_SIZE = 1'000'000;

struct CBuild {
    decltype(&QorBenchParse) parse;
    decltype(&QorBenchFree) free;

    explicit CBuild(const char* path) {
        void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr) {
            std::fprintf(stderr, "%s\n", dlerror());
            std::exit(1);
        }
        parse = reinterpret_cast<decltype(parse)>(dlsym(library, "QorBenchParse"));
        free = reinterpret_cast<decltype(free)>(dlsym(library, "QorBenchFree"));
    }
};

void RegisterBuild(const std::string& name, const CBuild& build, qorbench::EReport kind,
                   const std::string& path) {
    qorbench::Register(name, 5, 25, [=](benchmark::State& state) {
        ItemList items;
        qorbench::TimeEach(
            state, qorbench::CpuSeconds, [&] { build.parse(kind, path.c_str(), &items); },
            [&] { build.free(&items); });
    });
}

}  // namespace

int main(int argc, char** argv) {
    setenv("QOR_TRACE", "none", 1);
    const CBuild with(QORBENCH_WITH_TRACE);
    const CBuild without(QORBENCH_WITHOUT_TRACE);
    for (const qorbench::EReport kind : qorbench::ALL_REPORTS) {
        const std::string path = qorbench::ScratchDir() + "/" + NameOf(kind) + ".txt";
        qorbench::WriteFile(path, qorbench::MakeReport(kind, REPORT_SIZE));
        const std::string name = std::string("trace off/") + NameOf(kind) + " 1MB";
        RegisterBuild(name + "/ours", with, kind, path);
        RegisterBuild(name + "/floor", without, kind, path);
    }
    return qorbench::RunAll(argc, argv);
}
