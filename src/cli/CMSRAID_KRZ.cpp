#include "cli/CMSRAID_KRZ.h"

#include "base/ServerPaths.h"
#include "base/Trace.h"
#include "cli/ExecForeignModule.h"
#include "cli/ProductVersion.h"
#include "cli/ResultFile.h"

namespace {

constexpr const char* VERSION_COMMAND = "krzcli -v";
constexpr const char* ERROR_HEAD = "Error - ";
constexpr const char* INVALID_INPUT_HEAD = "Error - Invalid input at or near token";
constexpr int RETRY_COUNT = 2;
constexpr unsigned long RETRY_PAUSE_MS = 1000;

// Runs the tool until an attempt succeeds, fails for good or was the last one.
unsigned int RunAttempts(const std::string& command, const COutputFile& rsltFile, int retry,
                         unsigned long& exitStatus) {
    for (int attempt = 0;; ++attempt) {
        const int run = ExecForeignModule(KRZ_CLI_DIRECTORY + command, rsltFile, &exitStatus);
        if (run == EXEC_OK && exitStatus == 0) {
            return KRZ_OK;
        }
        if (FirstLineBeginsWith(rsltFile.Path(), INVALID_INPUT_HEAD)) {
            QOR_TRACE(FAILURE, "Failed to execute krzcli command.(%s)", command.c_str());
            return KRZ_TOOL_ERROR;
        }
        if (run < 0) {
            QOR_TRACE(FAILURE, "krzcli command timeout.(%s)", command.c_str());
            return KRZ_TIMEOUT;
        }
        if (attempt >= retry) {
            QOR_TRACE(FAILURE, "Failed to execute krzcli command.(%s,cliRtn=%d)", command.c_str(),
                      static_cast<int>(exitStatus));
            return run == EXEC_OK ? KRZ_TOOL_ERROR : KRZ_RUN_FAILED;
        }
        Sleep(RETRY_PAUSE_MS);
    }
}

unsigned int JudgeSuccess(const std::string& command, const COutputFile& rsltFile) {
    if (FirstLineBeginsWith(rsltFile.Path(), ERROR_HEAD)) {
        QOR_TRACE(FAILURE, "KRZ CLI has an error(%s).", command.c_str());
        return KRZ_TOOL_ERROR;
    }
    return KRZ_OK;
}

}  // namespace

bool CMSRAID_KRZ::IsKRZInstalled() {
    return CFileUtility::IsFileExist(KRZ_CLI_PATH);
}

unsigned int CMSRAID_KRZ::ExecCli(const std::string& command, unsigned long* cliRtn,
                                  const COutputFile& rsltFile) {
    return _ExecCli(command, cliRtn, rsltFile, RETRY_COUNT);
}

unsigned int CMSRAID_KRZ::ExecCliNoRetry(const std::string& command, unsigned long* cliRtn,
                                         const COutputFile& rsltFile) {
    return _ExecCli(command, cliRtn, rsltFile, 0);
}

unsigned int CMSRAID_KRZ::_ExecCli(const std::string& command, unsigned long* cliRtn,
                                   const COutputFile& rsltFile, int retry) {
    *cliRtn = EXIT_CODE_UNKNOWN;
    if (!IsKRZInstalled()) {
        QOR_TRACE(FAILURE, "KRZ is not installed.");
        return KRZ_NOT_INSTALLED;
    }
    QOR_TRACE(RESULT, "execute krzcli command.(%s)", command.c_str());
    unsigned long exitStatus = 0;
    const unsigned int result = RunAttempts(command, rsltFile, retry, exitStatus);
    *cliRtn = exitStatus;
    return result == KRZ_OK ? JudgeSuccess(command, rsltFile) : result;
}

std::string CMSRAID_KRZ::GetKRZVersion(const std::string& rsltFile) {
    const CResultFile file(rsltFile);
    unsigned long cliRtn = 0;
    if (ExecCli(VERSION_COMMAND, &cliRtn, file) != KRZ_OK) {
        return "";
    }
    if (IsTooLarge(rsltFile)) {
        TraceTooLarge(rsltFile);
        return "";
    }
    CResultStream report(rsltFile);
    return ReadProductVersion(report);
}
