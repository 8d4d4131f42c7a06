#include "Row.h"

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <string_view>

namespace qortest {
namespace {

constexpr size_t OPERATIONS = 3;  // the first lines of a row; verbs follow
constexpr const char* BETWEEN = ": ";

// The messages of the verbs, each once, in the order in which they come; numbers from 1.
class CMessages {
public:
    size_t Number(const std::string& message) {
        const auto known = std::find(m_Messages.begin(), m_Messages.end(), message);
        if (known == m_Messages.end()) {
            m_Messages.push_back(message);
            return m_Messages.size();
        }
        return static_cast<size_t>(known - m_Messages.begin()) + 1;
    }
    const std::vector<std::string>& All() const { return m_Messages; }

private:
    std::vector<std::string> m_Messages;
};

std::string Head(const CRow& row, size_t first, size_t last) {
    std::string names = "| Fault |";
    std::string rule = "|---|";
    for (size_t i = first; i < last; ++i) {
        names += " `" + row[i].first + "` |";
        rule += "---|";
    }
    return names + "\n" + rule + "\n";
}

std::string FaultCell(const std::string& fault) {
    return "| " + (fault == "none" ? fault : "`" + fault + "`") + " |";
}

// "1: message" becomes "1 (3)".
std::string VerbCell(const std::string& answer, CMessages& messages) {
    const size_t end = answer.find(BETWEEN);
    if (end == std::string::npos) {
        return answer;
    }
    return answer.substr(0, end) + " (" + std::to_string(messages.Number(answer.substr(end + 2))) +
           ")";
}

}  // namespace

std::string FormatRow(const CRow& row) {
    std::string text;
    for (const auto& [question, answer] : row) {
        text += question + BETWEEN + answer + "\n";
    }
    return text;
}

CRow ParseRow(const std::string& text) {
    CRow row;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const size_t end = std::min(line.find(BETWEEN), line.size());
        row.emplace_back(line.substr(0, end), line.substr(std::min(end + 2, line.size())));
    }
    return row;
}

std::string FormatTables(const std::vector<std::pair<std::string, CRow>>& rows) {
    const CRow& first = rows.front().second;
    std::string operations = Head(first, 0, OPERATIONS);
    std::string verbs = Head(first, OPERATIONS, first.size());
    CMessages messages;
    for (const auto& [fault, row] : rows) {
        operations += FaultCell(fault);
        verbs += FaultCell(fault);
        for (size_t i = 0; i < row.size(); ++i) {
            if (i < OPERATIONS) {
                operations += " " + row[i].second + " |";
            } else {
                verbs += " " + VerbCell(row[i].second, messages) + " |";
            }
        }
        operations += "\n";
        verbs += "\n";
    }
    std::string text = "### Operations\n\n" + operations + "\n### Verbs\n\n" + verbs + "\n";
    for (size_t i = 0; i < messages.All().size(); ++i) {
        text += std::to_string(i + 1) + ". " + messages.All()[i] + "\n";
    }
    return text;
}

namespace {

// What the exception says of itself is the C++ library's affair.
std::string WithoutReason(const std::string& text) {
    constexpr std::string_view HEAD = "an exception: ";
    const size_t head = text.find(HEAD);
    const size_t end = text.rfind("; ");
    if (head == std::string::npos || end == std::string::npos) {
        return text;
    }
    return text.substr(0, head + HEAD.size()) + "…" + text.substr(end);
}

}  // namespace

std::string CellText(const std::string& text) {
    std::string cell;
    for (const char c : text) {
        if (c == '|') {
            cell += "\\|";
        } else if (c >= ' ' && c <= '~') {
            cell += c;
        } else {
            char hex[8] = {};
            std::snprintf(hex, sizeof hex, "\\x%02x",
                          static_cast<unsigned int>(static_cast<unsigned char>(c)));
            cell += hex;
        }
    }
    return WithoutReason(cell);
}

}  // namespace qortest
