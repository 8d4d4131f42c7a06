#include "RunnerDouble.h"

#include "PrivateServerFixture.h"
#include "cli/ExecForeignModule.h"

using qortest::RunnerDouble;

qortest::CRunnerDouble& qortest::RunnerDouble() {
    static CRunnerDouble instance;
    return instance;
}

// The name that the linker gives to the replacement of the three-argument ExecForeignModule().
extern "C" int
__wrap__Z17ExecForeignModuleRKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEERK11COutputFilePm(
    const std::string& command, const COutputFile& outFile, unsigned long* exitCode);

extern "C" int
__wrap__Z17ExecForeignModuleRKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEERK11COutputFilePm(
    const std::string& command, const COutputFile& outFile, unsigned long* exitCode) {
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
