// The shipped file: loading, unloading.
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "ComLibFixture.h"

namespace {

using qortest::ReadFile;
using IniReader = int (*)(const char*, const char*, int, const char*);
using FileRemover = int (*)(const char*);

class LibraryTest : public qortest::CComLibFixture {
protected:
    template <typename Function>
    static Function Find(void* library, const char* name) {
        return reinterpret_cast<Function>(dlsym(library, name));
    }

    static bool IsMapped() {
        return ReadFile("/proc/self/maps").find("libqor_ComLib.so") != std::string::npos;
    }
};

TEST_F(LibraryTest, IsLoadedAndUnloadedAThousandTimesWithNothingLeft) {
    const std::string ini = Scratch() / "test.ini";
    qortest::WriteFile(ini, "[S]\nK=1\n");
    for (int i = 0; i < 1000; ++i) {
        void* library = dlopen(QOR_COMLIB_FILE, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr) << dlerror();
        // Traces (to a file), reads the configuration and fills the cache of ini files.
        EXPECT_EQ(Find<FileRemover>(library, "DeleteFileA")("/nonexistent"), 0);
        EXPECT_EQ(Find<IniReader>(library, "GetPrivateProfileIntA")("S", "K", 0, ini.c_str()), 1);
        ASSERT_EQ(dlclose(library), 0);
    }
    EXPECT_FALSE(IsMapped());
    EXPECT_EQ(TakeTraces().size(), 1000U);
}

TEST_F(LibraryTest, HostForksAfterItIsUnloaded) {
    void* library = dlopen(QOR_COMLIB_FILE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    ASSERT_EQ(dlclose(library), 0);
    ASSERT_FALSE(IsMapped());
    const pid_t child = fork();
    if (child == 0) {
        _exit(0);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

}  // namespace
