#include "Commands.h"

#include "VisibleText.h"

namespace qorsim {

int ReportFailure(const std::string& message) {
    Complain("qorsim", message);
    return 1;
}

}  // namespace qorsim
