// The service-processor form: its digits beside those of the same bytes by a table, and beside
// snprintf; and the whole way from an item list to the digits, beside reading the items and that.
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
constexpr std::string_view COUNTED = "### General Information ###";

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

// By blocks that stay in the cache: filling a whole string first would go over it twice. A byte
// costs its own load, that of its two digits and one store: without vectors, nobody can do with
// less.
__attribute__((noinline)) std::string DigitsByTable(std::string_view bytes) {
    std::string digits;
    digits.reserve(2 * bytes.size());
    std::array<svp::CByteDigits, 2048> block;
    while (!bytes.empty()) {
        const std::string_view part = bytes.substr(0, block.size());
        for (std::size_t i = 0; i < part.size(); ++i) {
            block[i] = svp::DIGITS_OF[static_cast<unsigned char>(part[i])];
        }
        digits.append(block.front().data(), 2 * part.size());
        bytes.remove_prefix(part.size());
    }
    return digits;
}

// What nobody can do without who makes digits of a list: of each item the parent, which tells
// whether it counts, and the texts of those that do.
std::string DigitsOfRead(const ItemList& items, std::string_view bytes) {
    std::size_t read = 0;
    for (const CItemDisp* item : items) {
        if (item->ParentName() == COUNTED) {
            read += static_cast<unsigned char>(item->ItemName().back()) + item->ItemValue().size();
        }
    }
    benchmark::DoNotOptimize(read);
    return DigitsByTable(bytes);
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
        RegisterCase("form" + size + "/floor", input,
                     [](CCase& data) { return DigitsByTable(data.bytes); });
        RegisterCase("form from items" + size + "/floor", input,
                     [](CCase& data) { return DigitsOfRead(data.items, data.bytes); });
        for (const std::string measure : {"form", "form from items"}) {
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
