#include "Commands.h"

#include <cstdio>

namespace qorsim {

int ReportFailure(const std::string& message) {
    std::fprintf(stderr, "qorsim: %s\n", message.c_str());
    return 1;
}

}  // namespace qorsim
