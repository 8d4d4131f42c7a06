// What the doctor says of the socket of the system's log.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "PrivateServerFixture.h"
#include "doctor/Checks.h"

namespace {

namespace fs = std::filesystem;
using qorctl::doctor::EVerdict;
using qorctl::doctor::JudgeSyslog;

class DoctorSyslogTest : public qortest::CPrivateServerFixture {};

TEST_F(DoctorSyslogTest, SyslogNeedsAListener) {
    const std::string path = "/opt/tarmica/log";
    EXPECT_EQ(JudgeSyslog(path).verdict, EVerdict::WARN);
    for (const int type : {SOCK_DGRAM, SOCK_STREAM}) {
        fs::remove(path);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof(address.sun_path) - 1);
        const int listener = socket(AF_UNIX, type | SOCK_CLOEXEC, 0);
        ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
        if (type == SOCK_STREAM) {
            ASSERT_EQ(listen(listener, 1), 0);
        }
        EXPECT_EQ(JudgeSyslog(path).verdict, EVerdict::OK);
        close(listener);
    }
}

}  // namespace
