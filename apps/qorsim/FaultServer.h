// Faults as a simulated server holds them: files in its tree, which its tools read.
#ifndef QORSIM_FAULTSERVER_H
#define QORSIM_FAULTSERVER_H

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "Fault.h"

namespace qorsim {

// The file of a tool, by its name.
std::string ToolPath(const std::string& tool);

// Makes the faults those of the server that has been laid out under "/opt/tarmica". `texts` are
// what ParseFault accepted. Returns false with `error` set when the server cannot be made so.
bool PlaceFaults(const std::vector<std::string>& texts, std::string& error);

// For a tool: the faults that strike this run of it, which is counted. Safe against other runs at
// the same time. Nothing, with `error` set, when the server's files are damaged.
std::optional<std::vector<CFault>> TakeDueFaults(const std::string& tool,
                                                 const std::vector<std::string>& arguments,
                                                 std::string& error);

// Which of the faults that PlaceFaults() placed struck no run of a tool, and why: a sentence each.
std::vector<std::string> DescribeIdleFaults(const std::vector<std::string>& texts);

// Counts one more in a counter's file, which is created when needed, and returns the count; 0 on
// failure. Safe against other processes that count at the same time.
unsigned long CountOneMore(const std::string& path);

// A server's sign of life: a lock that its keeper, this program, holds as long as it lives, and
// that the kernel takes from it however it ends. A tool that hangs waits for it, so that no tool
// outlives its server.
//
// Takes the lock until this process ends; children do not keep it when they run another program.
bool HoldSignOfLife(const std::string& path, std::string& error);
// Waits for the time, and ends this process at once when the server ends before.
void WaitInServer(const std::string& path, std::chrono::milliseconds time);
// Waits for the server's end, then ends this process.
[[noreturn]] void WaitForServersEnd(const std::string& path);

inline constexpr const char* FAULT_SIGN_OF_LIFE = "/opt/tarmica/krz/faults/alive";

}  // namespace qorsim

#endif  // QORSIM_FAULTSERVER_H
