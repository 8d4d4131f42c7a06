#include "Depth.h"

#include <string_view>

#include "Fuzz.h"
#include "MemoryFiles.h"
#include "TraceProperties.h"

namespace qorfuzz {
namespace {

EDepth& CurrentDepth() {
    static EDepth depth = EDepth::WHOLE;
    return depth;
}

bool& AllBothWays() {
    static bool both = false;
    return both;
}

void Set(EDepth depth) {
    if (depth != CurrentDepth()) {
        CurrentDepth() = depth;
        UseMemoryFiles(depth == EDepth::QUICK);
        LookAtTrace(depth == EDepth::WHOLE);
    }
}

EDepth DepthOf(const std::string& input) {
    return std::hash<std::string_view>()(input) % SAMPLE == 0 ? EDepth::WHOLE : EDepth::QUICK;
}

}  // namespace

EDepth Depth() {
    return CurrentDepth();
}

void LookAtAllBothWays() {
    AllBothWays() = true;
}

void FuzzInput(const uint8_t* data, size_t size, void (*target)(const std::string& input)) {
    const std::string input = InputText(data, size);
    if (!AllBothWays()) {
        Set(DepthOf(input));
        target(input);
        return;
    }
    for (const EDepth depth : {EDepth::QUICK, EDepth::WHOLE}) {
        Set(depth);
        target(input);
    }
}

}  // namespace qorfuzz
