// The server that the code under test sees: private mounts with the fixed paths, our libqor_ComLib,
// and, in place of the external programs, a runner that writes the texts of the input into their
// output files. No process is started.
#ifndef QORFUZZ_SERVER_H
#define QORFUZZ_SERVER_H

#include <string>
#include <vector>

namespace qorfuzz {

// What a program prints for a command.
struct CToolReport {
    std::string command;
    std::string text;
};

// What the RAID tool prints from now on for its commands ("krzcli -v"). It succeeds always. Any
// other command is a finding: what is run may not depend on what was printed.
void LetToolPrint(std::vector<CToolReport> reports);

// The same for the LSI utility that is due.
void LetUtilityPrint(const CToolReport& report);

// Writes a file of the simulated server.
void WriteServerFile(const char* path, const std::string& text);

// Demands at the end of its scope that the code in between left no result file and no descriptor.
class CLeavesNothing {
public:
    CLeavesNothing();
    ~CLeavesNothing();
    CLeavesNothing(const CLeavesNothing&) = delete;  // one scope, one check
    CLeavesNothing& operator=(const CLeavesNothing&) = delete;

private:
    int m_FreeDescriptor;
};

}  // namespace qorfuzz

#endif  // QORFUZZ_SERVER_H
