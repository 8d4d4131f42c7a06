#include "ToolGeneration.h"

#include <cstdlib>

namespace qorsim {

CToolGeneration GenerationOf(const std::string& version) {
    const long major = std::strtol(version.c_str(), nullptr, 10);
    return {major >= 4, major >= 4, major >= 7};
}

}  // namespace qorsim
