// Starting a shell command as a child process.
//
// The child is a clone that shares the host's memory until it becomes the command: its cost does
// not grow with that memory, and it takes no lock that a thread of the host may hold. It does what
// is listed here and nothing else, and reports a step that failed through the shared memory. The
// host's signal handlers, environment and working directory are not touched; its signal mask and
// its cancellation state are as they were when the start returns. The calling thread rests
// meanwhile.
//
// The child gets default signal dispositions, an empty signal mask, a process group of its own, an
// empty standard input and no descriptor but 0, 1 and 2.
#ifndef QOR_CLI_CHILDSTART_H
#define QOR_CLI_CHILDSTART_H

#include <sys/types.h>

#include <string>

enum class EErrorOutput { WITH_OUTPUT, DROPPED };

enum class EFileOpening {
    AS_IT_STANDS,  // whatever stands there: created, or emptied
    ANEW           // made anew: what stands there is removed, no link is followed
};

// How one child is to be set up. The texts and the environment stay the caller's; they are read
// until the start returns.
struct CChildSetup {
    const char* directory = nullptr;  // where it runs; null: where the host is
    // The file for standard output, seen from that directory; null: dropped. An open that would
    // wait (for the reader of a named pipe, say) fails.
    const char* output = nullptr;
    EFileOpening opening = EFileOpening::AS_IT_STANDS;
    EErrorOutput errors = EErrorOutput::DROPPED;
    char* const* environment = nullptr;  // ended by a null pointer
};

// In the order in which they are done.
enum class EChildStep {
    NONE,
    PROCESS,    // the process itself
    DIRECTORY,  // to the directory
    OUTPUT,     // opening the output file
    STREAMS,    // standard output and error
    SECLUSION,  // standard input, and closing what is not the child's
    COMMAND     // becoming `sh -c command`
};

// A child; or the step that failed and its error number, and no child. A kernel that gives the
// child a memory of its own (an emulator's) shows a failed step as a child that ends with status 1.
struct CChildStart {
    pid_t child = -1;
    EChildStep failed = EChildStep::NONE;
    int error = 0;
};

// Runs `sh -c command`; `sh` is looked for as the host's PATH says.
CChildStart StartChild(const std::string& command, const CChildSetup& setup);

#endif  // QOR_CLI_CHILDSTART_H
