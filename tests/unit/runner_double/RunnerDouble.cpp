#include "RunnerDouble.h"

#include "PrivateServerFixture.h"
#include "cli/ExecForeignModule.h"

using qortest::RunnerDouble;

qortest::CRunnerDouble& qortest::RunnerDouble() {
    static CRunnerDouble instance;
    return instance;
}

// In place of the plug-in's runners.
int ExecForeignModule(const std::string& command, const COutputFile& outFile,
                      unsigned long* exitCode) {
    RunnerDouble().commands.push_back(command);
    if (RunnerDouble().runs.empty()) {
        ADD_FAILURE() << "nothing is due for " << command;
        return EXEC_FAILED;
    }
    const qortest::CRun run = RunnerDouble().runs.front();
    RunnerDouble().runs.pop_front();
    qortest::WriteFile(outFile.Path(), run.out);
    *exitCode = run.exitCode;
    return run.result;
}

// No request here is one that asks an LSI utility.
unsigned int ExecForeignModule(const std::string& command, const COutputFile&, const std::string&,
                               unsigned long*, unsigned long) {
    ADD_FAILURE() << "nothing is due for " << command;
    return EXEC_FAILED;
}
