// The server that the code under test sees: private mounts with the fixed paths, our libqor_ComLib,
// and, in place of the external programs, a runner that writes the texts of the input into their
// output files. No process is started.
#ifndef QORFUZZ_SERVER_H
#define QORFUZZ_SERVER_H

#include <string>
#include <vector>

namespace qorfuzz {

// What the tool prints for a command ("krzcli -v"); an empty command stands for any.
struct CToolReport {
    std::string command;
    std::string text;
};

// What the RAID tool prints from now on. It succeeds always; it prints nothing for a command that
// is not there.
void LetToolPrint(std::vector<CToolReport> reports);

// What the LSI utilities print from now on.
void LetUtilityPrint(const std::string& text);

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
