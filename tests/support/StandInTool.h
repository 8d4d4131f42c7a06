// A scripted stand-in for an external program (the RAID tool, an LSI utility).
//
//     CStandInTool tool;                                   // at /opt/tarmica/krz/cli/krzcli
//     tool.Play("-v", {.out = "Product Version : 7.0\n"});
//     tool.Play("-ctrlinfo -aAll", {.out = report});
//     ... call the code under test ...
//                                                          // ~CStandInTool checks the play
//
// The program checks what it is asked: a command line that differs from the step that is due, or a
// call after the last step, is recorded, printed on its standard error and ends it with status 97.
// The destructor fails the test for any such call and for any step that was not played.
#ifndef QORTEST_STANDINTOOL_H
#define QORTEST_STANDINTOOL_H

#include <string>
#include <vector>

namespace qortest {

struct CToolStep {
    std::string out = {};  // written to standard output
    std::string err = {};  // then written to standard error
    int status = 0;        // exit status
    std::string run = {};  // shell text run before any output: "kill -9 $$", "sleep 1" ...
};

class CStandInTool {
public:
    explicit CStandInTool(const std::string& path = "/opt/tarmica/krz/cli/krzcli");
    ~CStandInTool();
    CStandInTool(const CStandInTool&) = delete;  // one program, one script
    CStandInTool& operator=(const CStandInTool&) = delete;

    // Appends the next step: the arguments that are due and what the program does then.
    void Play(const std::string& arguments, const CToolStep& step);

    // The argument texts of all calls so far, in order.
    std::vector<std::string> Calls() const;

private:
    std::string m_Path;
    std::string m_StepDir;
    int m_StepCount = 0;
};

}  // namespace qortest

#endif  // QORTEST_STANDINTOOL_H
