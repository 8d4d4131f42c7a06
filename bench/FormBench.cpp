// The service-processor form: its digits beside those of the same bytes by a table, and beside
// snprintf; and the whole way from an item list to the digits.
#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <string_view>

#include "Bench.h"
#include "ItemTrees.h"
#include "plugin/SvpConversion.h"
#include "svp/CSvpCommon.h"
#include "svp/CSvpPdInfoForm.h"

namespace {

constexpr unsigned DRIVES = 255;

std::string FormOf(const ItemList& items, CSvpPdInfoForm& form) {
    CSvpConversion::Convert(&form, items);
    form.SetDataSize();
    std::string digits;
    form.DumpMe(&digits);
    return digits;
}

struct CCase {
    unsigned controllers = 0;
    CItemListOwner items;
    CSvpPdInfoForm form;
    std::string bytes;

    void Prepare() {
        if (items.empty()) {
            qorbench::AddServer(items, controllers, DRIVES);
            const std::string digits = FormOf(items, form);
            for (std::size_t i = 0; i < digits.size(); i += 2) {
                bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
            }
        }
    }
};

// By blocks that stay in the cache: filling a whole string first would go over it twice.
std::string DigitsByTable(std::string_view bytes) {
    std::string digits;
    digits.reserve(2 * bytes.size());
    std::array<char, 4096> block;
    while (!bytes.empty()) {
        char* place = block.data();
        for (const char character : bytes.substr(0, block.size() / 2)) {
            place = CSvpCommon::WriteByte(place, static_cast<unsigned char>(character));
        }
        digits.append(block.data(), place);
        bytes.remove_prefix(std::min(block.size() / 2, bytes.size()));
    }
    return digits;
}

std::string DigitsByPrintf(const std::string& bytes) {
    std::string digits;
    digits.reserve(2 * bytes.size());
    for (const char character : bytes) {
        std::array<char, 3> pair = {};
        std::snprintf(pair.data(), pair.size(), "%02x", static_cast<unsigned char>(character));
        digits.append(pair.data(), 2);
    }
    return digits;
}

template <class Work>
void RegisterCase(const std::string& name, const std::shared_ptr<CCase>& input, Work work) {
    const int iterations = input->controllers == 1 ? 20 : 2;
    qorbench::Register(name, iterations, 11, [=](benchmark::State& state) {
        input->Prepare();
        qorbench::TimeEach(
            state, qorbench::CpuSeconds, [&] { benchmark::DoNotOptimize(work(*input).size()); },
            [] {});
    });
}

}  // namespace

int main(int argc, char** argv) {
    for (const unsigned controllers : {1U, 8U, 127U}) {
        const std::string size = "/" + std::to_string(controllers) + " controllers";
        const auto input = std::make_shared<CCase>();
        input->controllers = controllers;
        RegisterCase("form" + size + "/ours", input, [](CCase& data) {
            std::string digits;
            data.form.DumpMe(&digits);
            return digits;
        });
        for (const std::string measure : {"form", "form from items"}) {
            RegisterCase(measure + size + "/floor", input,
                         [](CCase& data) { return DigitsByTable(data.bytes); });
            RegisterCase(measure + size + "/peer:snprintf", input,
                         [](CCase& data) { return DigitsByPrintf(data.bytes); });
        }
        RegisterCase("form from items" + size + "/ours", input, [](CCase& data) {
            CSvpPdInfoForm form;
            return FormOf(data.items, form);
        });
    }
    return qorbench::RunAll(argc, argv);
}
