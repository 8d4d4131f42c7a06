// From a report's text to items: each getter beside reading the lines and making the same items
// with no parsing, and beside scripts that do the extraction. The scripts leave out placeholders
// and renamed items, which is in their favour.
#include <fstream>
#include <memory>

#include "Bench.h"
#include "GetterRun.h"
#include "PackedItems.h"

namespace {

using qorbench::CPackedItems;
using qorbench::EReport;

struct CSize {
    const char* name;
    std::size_t bytes;
    int iterations;
    int repetitions;
    int peerRepetitions;
};

constexpr CSize SIZES[] = {
    {"10kB", 10'000, 200, 15, 5}, {"1MB", 1'000'000, 5, 15, 5}, {"16MB", 16'000'000, 1, 7, 3}};

struct CCase {
    EReport kind;
    std::string path;
    std::unique_ptr<CPackedItems> packed;

    // Made when the first benchmark needs it: the big ones are slow to make.
    void Prepare(std::size_t bytes) {
        if (packed == nullptr) {
            qorbench::WriteFile(path, qorbench::MakeReport(kind, bytes));
            CItemListOwner items;
            QorBenchParse(kind, path.c_str(), &items);
            packed = std::make_unique<CPackedItems>(items);
        }
    }
};

void MakeItemsWithoutParsing(const CCase& input, ItemList& items) {
    std::ifstream stream(input.path);
    const char* place = input.packed->Begin();
    std::size_t left = input.packed->Count();
    for (std::string line; std::getline(stream, line);) {
        if (left > 0) {
            CPackedItems::AddNext(place, items);
            --left;
        }
    }
    for (; left > 0; --left) {
        CPackedItems::AddNext(place, items);
    }
}

void RegisterOwn(const std::string& name, const std::shared_ptr<CCase>& input, const CSize& size) {
    const auto measure = [input, size](benchmark::State& state, auto work) {
        input->Prepare(size.bytes);
        CItemListOwner items;
        qorbench::TimeEach(
            state, qorbench::CpuSeconds, [&] { work(items); }, [&] { QorBenchFree(&items); });
    };
    qorbench::Register(name + "/ours", size.iterations, size.repetitions,
                       [=](benchmark::State& state) {
                           measure(state, [&](ItemList& items) {
                               QorBenchParse(input->kind, input->path.c_str(), &items);
                           });
                       });
    qorbench::Register(
        name + "/floor", size.iterations, size.repetitions, [=](benchmark::State& state) {
            measure(state, [&](ItemList& items) { MakeItemsWithoutParsing(*input, items); });
        });
}

void RegisterPeer(const std::string& name, const std::shared_ptr<CCase>& input, const CSize& size,
                  const std::vector<std::string>& program) {
    qorbench::Register(name + "/peer:" + program[0], 1, size.peerRepetitions,
                       [=](benchmark::State& state) {
                           input->Prepare(size.bytes);
                           std::vector<std::string> arguments = program;
                           arguments.insert(arguments.end(), {NameOf(input->kind), input->path});
                           for (auto iteration : state) {
                               static_cast<void>(iteration);
                               state.SetIterationTime(qorbench::RunProgram(arguments, "/dev/null"));
                           }
                       });
}

}  // namespace

int main(int argc, char** argv) {
    const std::string peers = QORBENCH_PEERS_DIR;
    for (const CSize& size : SIZES) {
        for (const EReport kind : qorbench::ALL_REPORTS) {
            const std::string name = std::string("getter ") + NameOf(kind) + "/" + size.name;
            const auto input = std::make_shared<CCase>();
            input->kind = kind;
            input->path = qorbench::ScratchDir() + "/" + NameOf(kind) + "-" + size.name + ".txt";
            RegisterOwn(name, input, size);
            RegisterPeer(name, input, size, {"gawk", "-b", "-f", peers + "/extract.awk", "--"});
            RegisterPeer(name, input, size, {"perl", peers + "/extract.pl"});
            RegisterPeer(name, input, size, {"python3", peers + "/extract.py"});
        }
    }
    return qorbench::RunAll(argc, argv);
}
