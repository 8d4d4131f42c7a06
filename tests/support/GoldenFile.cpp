#include "GoldenFile.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "PrivateServerFixture.h"

namespace qortest {

bool AcceptsGolden() {
    const char* accept = std::getenv("QOR_ACCEPT");
    return accept != nullptr && *accept != '\0';
}

void ExpectGoldenFile(const std::filesystem::path& path, const std::string& text) {
    if (AcceptsGolden()) {
        WriteFile(path, text);
    }
    EXPECT_EQ(text, ReadFile(path)) << path;
}

}  // namespace qortest
