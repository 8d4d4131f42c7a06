#include "StandIn.h"

namespace qorsim {
namespace {

constexpr int REFUSED = 1;

}  // namespace

CToolAnswer RefuseToken(const std::string& token) {
    return {"Error - Invalid input at or near token " + token + "\n", REFUSED};
}

}  // namespace qorsim
