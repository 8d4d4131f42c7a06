#include <gtest/gtest.h>

#include "PrivateServerFixture.h"
#include "host/PluginLibrary.h"

namespace {

bool IsMapped(const std::string& path) {
    return qortest::ReadFile("/proc/self/maps").find(path) != std::string::npos;
}

TEST(PluginLibraryTest, LibraryIsUnloadedWithItsLastOwner) {
    std::string problem;
    std::optional<qorctl::CPluginLibrary> library =
        qorctl::CPluginLibrary::Load(STAND_IN_PLUGIN, problem);
    ASSERT_TRUE(library) << problem;
    {
        const qorctl::CPluginLibrary owner(std::move(*library));
        library.reset();
        EXPECT_TRUE(IsMapped(STAND_IN_PLUGIN));
    }
    EXPECT_FALSE(IsMapped(STAND_IN_PLUGIN));
}

TEST(PluginLibraryTest, UnfitLibraryIsUnloaded) {
    std::string problem;
    EXPECT_FALSE(qorctl::CPluginLibrary::Load(UNFIT_PLUGIN, problem));
    EXPECT_NE(problem.find("does not export DeleteItemDisp"), std::string::npos) << problem;
    EXPECT_FALSE(IsMapped(UNFIT_PLUGIN));
}

}  // namespace
