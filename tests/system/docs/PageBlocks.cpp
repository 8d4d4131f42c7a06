#include "PageBlocks.h"

#include <algorithm>
#include <array>
#include <regex>
#include <sstream>

namespace qortest {
namespace {

constexpr const char* FENCE = "```";
constexpr const char* INDENT = "    ";
constexpr const char* PROMPT = "$ ";
constexpr const char* ELLIPSIS = "…";
constexpr std::array<const char*, 13> DATA_KINDS = {"cpp",   "cmake",    "json",  "xml", "ini",
                                                    "text",  "report",   "items", "hex", "decoded",
                                                    "jsonl", "terminal", "yaml"};

using CLines = std::vector<std::string>;

CLines LinesOf(const std::string& text) {
    CLines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

bool IsComment(const std::string& line) {
    return line.empty() || line.starts_with("# ");
}

bool LooksLikeCommand(const std::string& line) {
    static const std::regex command("([A-Z_]+=\\S* +)*[a-z.~/][a-z0-9_./+-]*( .*)?");
    return std::regex_match(line, command);
}

bool IsElision(const std::string& line) {
    return line == ELLIPSIS || line == "...";
}

std::string WithoutTime(const std::string& line) {
    static const std::regex time("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}Z");
    return std::regex_replace(line, time, "TIME");
}

bool IsShown(const std::string& shown, const std::string& line) {
    if (shown.ends_with(ELLIPSIS)) {
        return line.starts_with(shown.substr(0, shown.size() - std::string(ELLIPSIS).size()));
    }
    return WithoutTime(shown) == WithoutTime(line);
}

bool ShowsFrom(const CLines& shown, size_t next, const CLines& lines, size_t line) {
    if (next == shown.size()) {
        return line == lines.size();
    }
    if (IsElision(shown[next])) {
        for (size_t behind = line; behind <= lines.size(); ++behind) {
            if (ShowsFrom(shown, next + 1, lines, behind)) {
                return true;
            }
        }
        return false;
    }
    return line < lines.size() && IsShown(shown[next], lines[line]) &&
           ShowsFrom(shown, next + 1, lines, line + 1);
}

// Without the empty lines at its end.
CBlock IndentedBlock(const CLines& lines, size_t& i) {
    CBlock block;
    for (; i < lines.size() && (lines[i].empty() || lines[i].starts_with(INDENT)); ++i) {
        block.lines.push_back(lines[i].empty() ? "" : lines[i].substr(4));
    }
    while (block.lines.back().empty()) {
        block.lines.pop_back();
    }
    return block;
}

CBlock FencedBlock(const CLines& lines, size_t& i) {
    std::istringstream fence(lines[i].substr(3));
    CBlock block;
    fence >> block.kind;
    for (++i; i < lines.size() && lines[i] != FENCE; ++i) {
        block.lines.push_back(lines[i]);
    }
    ++i;
    return block;
}

// Blocks, and the rest of the page.
std::pair<std::vector<CBlock>, std::string> Split(const std::string& page) {
    std::pair<std::vector<CBlock>, std::string> parts;
    const CLines lines = LinesOf(page);
    for (size_t i = 0; i < lines.size();) {
        const bool isBehindGap = i == 0 || lines[i - 1].empty();
        if (lines[i].starts_with(FENCE)) {
            parts.first.push_back(FencedBlock(lines, i));
        } else if (isBehindGap && lines[i].starts_with(INDENT)) {
            parts.first.push_back(IndentedBlock(lines, i));
        } else {
            parts.second += lines[i++] + "\n";
        }
    }
    return parts;
}

CLines JoinedLines(const CLines& lines) {
    CLines joined;
    bool goesOn = false;
    for (const std::string& line : lines) {
        if (goesOn) {
            joined.back().pop_back();
            joined.back() += line.substr(std::min(line.find_first_not_of(' '), line.size()));
        } else {
            joined.push_back(line);
        }
        goesOn = line.ends_with('\\');
    }
    return joined;
}

}  // namespace

std::vector<CBlock> BlocksOf(const std::string& page) {
    return Split(page).first;
}

EBlock KindOf(const CBlock& block) {
    if (block.kind == "console") {
        return EBlock::CONSOLE;
    }
    if (block.kind == "sh" || block.kind == "bash") {
        return EBlock::COMMANDS;
    }
    if (block.kind == "output") {
        return EBlock::OUTPUT;
    }
    if (!block.kind.empty()) {
        const bool isData =
            std::find(DATA_KINDS.begin(), DATA_KINDS.end(), block.kind) != DATA_KINDS.end();
        return isData ? EBlock::DATA : EBlock::UNKNOWN;
    }
    const CLines& lines = block.lines;
    const auto hasPrompt = [](const std::string& line) { return line.starts_with(PROMPT); };
    if (std::any_of(lines.begin(), lines.end(), hasPrompt)) {
        return EBlock::CONSOLE;
    }
    const auto first = std::find_if_not(lines.begin(), lines.end(), IsComment);
    return first != lines.end() && LooksLikeCommand(*first) ? EBlock::COMMANDS : EBlock::DATA;
}

std::vector<CCommand> CommandsOf(const CBlock& block) {
    const bool isConsole = KindOf(block) == EBlock::CONSOLE;
    std::vector<CCommand> commands;
    for (const std::string& line : JoinedLines(block.lines)) {
        if (isConsole && line.starts_with(PROMPT)) {
            commands.push_back({line.substr(2), std::nullopt});
        } else if (isConsole && !commands.empty()) {
            std::optional<CLines>& output = commands.back().output;
            output = output.value_or(CLines());
            output->push_back(line);
        } else if (!IsComment(line)) {
            commands.push_back({line, std::nullopt});
        }
    }
    return commands;
}

std::vector<std::string> InlineTexts(const std::string& page) {
    const std::string text = Split(page).second;
    static const std::regex code("`([^`\n]+)`");
    CLines texts;
    for (std::sregex_iterator match(text.begin(), text.end(), code), end; match != end; ++match) {
        texts.push_back((*match)[1]);
    }
    return texts;
}

bool Shows(const CLines& shown, const CLines& lines) {
    return ShowsFrom(shown, 0, lines, 0);
}

}  // namespace qortest
