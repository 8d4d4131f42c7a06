// The code blocks of a page of the documentation, and the commands in them.
//
// A block is fenced ("```KIND") or indented by four blanks. Its kind is told by the fence or, where
// that says nothing, by what stands in it:
//
//     console   lines "$ COMMAND", each followed by what it prints; also without a word on the
//               fence where a line begins with "$ "
//     sh, bash  commands only; also without a word where the first line begins with what looks like
//               a program: lower-case letters, digits and "./+-_", assignments before it aside
//     output    what the last command above it prints
//     others    data, of the kinds that DATA_KINDS names; also without a word in all other cases
#ifndef QORTEST_PAGEBLOCKS_H
#define QORTEST_PAGEBLOCKS_H

#include <optional>
#include <string>
#include <vector>

namespace qortest {

enum class EBlock { COMMANDS, CONSOLE, OUTPUT, DATA, UNKNOWN };

struct CBlock {
    std::string kind;  // the first word of the fence
    std::vector<std::string> lines;
};

struct CCommand {
    std::string text;
    std::optional<std::vector<std::string>> output;  // nothing: not shown
};

std::vector<CBlock> BlocksOf(const std::string& page);
EBlock KindOf(const CBlock& block);
// The commands of a block, in their order; lines that end with a backslash are joined.
std::vector<CCommand> CommandsOf(const CBlock& block);
// The texts in single backticks outside of blocks.
std::vector<std::string> InlineTexts(const std::string& page);

// True if `lines` is what `shown` shows. A line "…" or "..." stands for any number of lines, a "…"
// at the end of a line for the rest of it; times of the day are not compared.
bool Shows(const std::vector<std::string>& shown, const std::vector<std::string>& lines);

}  // namespace qortest

#endif  // QORTEST_PAGEBLOCKS_H
