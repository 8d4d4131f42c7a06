#include "terminal/TextTable.h"

#include <algorithm>
#include <numeric>
#include <sstream>

namespace qorctl {
namespace {

constexpr std::string_view GAP = "  ";
constexpr size_t ANY_CELL = static_cast<size_t>(-1);

// Widths of the columns; 0: left out.
using CWidths = std::vector<size_t>;

CWidths NaturalWidths(std::span<const CTableColumn> columns, const std::vector<CTableRow>& rows) {
    CWidths widths(columns.size());
    for (const CTableRow& row : rows) {
        for (size_t i = 0; i < columns.size(); ++i) {
            const size_t most = i + 1 < columns.size() ? MAX_CELL : ANY_CELL;
            widths[i] = std::max(widths[i], std::min(CountColumns(row.cells[i]), most));
        }
    }
    for (size_t i = 0; i < columns.size(); ++i) {
        widths[i] = widths[i] == 0 ? 0 : std::max(widths[i], columns[i].title.size());
    }
    return widths;
}

size_t TotalWidth(const CWidths& widths) {
    const size_t shown =
        widths.size() - static_cast<size_t>(std::count(widths.begin(), widths.end(), 0U));
    return std::accumulate(widths.begin(), widths.end(), size_t{0}) +
           (shown == 0 ? 0 : (shown - 1) * GAP.size());
}

// The columns' positions, the least important first; of equal ones the last first.
std::vector<size_t> LeastImportantFirst(std::span<const CTableColumn> columns) {
    std::vector<size_t> order(columns.size());
    std::iota(order.rbegin(), order.rend(), size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](size_t one, size_t other) {
        return columns[one].importance > columns[other].importance;
    });
    return order;
}

void Fit(CWidths& widths, std::span<const CTableColumn> columns, size_t width) {
    const std::vector<size_t> order = LeastImportantFirst(columns);
    for (const size_t i : order) {
        const size_t total = TotalWidth(widths);
        if (total > width && columns[i].smallest > 0 && widths[i] > columns[i].smallest) {
            widths[i] -= std::min(total - width, widths[i] - columns[i].smallest);
        }
    }
    for (const size_t i : order) {
        if (TotalWidth(widths) > width && columns[i].importance > 0) {
            widths[i] = 0;
        }
    }
}

std::string Shortened(const std::string& text, size_t width, const CTextStyle& style) {
    if (CountColumns(text) <= width) {
        return text;
    }
    return std::string(FirstColumns(text, width - 1)).append(Ellipsis(style));
}

class CTableWriter {
public:
    CTableWriter(std::span<const CTableColumn> columns, const CWidths& widths,
                 const CTextStyle& style)
        : m_Columns(columns), m_Widths(widths), m_Style(style) {}

    // `cell(i)` is the text of the column i.
    template <class TCell>
    void AppendLine(TCell cell, std::string_view colour);

    std::string m_Text;

private:
    void AppendCell(std::string& line, size_t column, const std::string& text) const;

    const std::span<const CTableColumn> m_Columns;
    const CWidths& m_Widths;
    const CTextStyle& m_Style;
};

void CTableWriter::AppendCell(std::string& line, size_t column, const std::string& text) const {
    const std::string shown = Shortened(text, m_Widths[column], m_Style);
    const bool isLast = column + 1 == m_Columns.size() && m_Columns[column].align == EAlign::LEFT;
    const size_t blanks = isLast ? 0 : m_Widths[column] - CountColumns(shown);
    if (!line.empty()) {
        line += GAP;
    }
    if (m_Columns[column].align == EAlign::RIGHT) {
        line.append(blanks, ' ').append(shown);
    } else {
        line.append(shown).append(blanks, ' ');
    }
}

template <class TCell>
void CTableWriter::AppendLine(TCell cell, std::string_view colour) {
    std::string line;
    for (size_t i = 0; i < m_Columns.size(); ++i) {
        if (m_Widths[i] > 0) {
            AppendCell(line, i, cell(i));
        }
    }
    line.resize(line.find_last_not_of(' ') + 1);
    if (m_Style.width != ANY_WIDTH) {
        line.resize(FirstColumns(line, m_Style.width).size());
    }
    m_Text += Coloured(line, colour, m_Style) + '\n';
}

// "Not shown: TYPE, HOURS"; nothing when no column with a text was left out.
std::string LeftOutText(std::span<const CTableColumn> columns, const CWidths& natural,
                        const CWidths& widths, const CTextStyle& style) {
    std::string names;
    for (size_t i = 0; i < columns.size(); ++i) {
        if (natural[i] > 0 && widths[i] == 0) {
            names += (names.empty() ? "Not shown: " : ", ") + std::string(columns[i].title);
        }
    }
    std::istringstream lines(WrapText(names, style.width, 0, GAP));
    std::string text;
    for (std::string line; std::getline(lines, line);) {
        text += Coloured(line, DIM, style) + '\n';
    }
    return text;
}

}  // namespace

std::string FormatTextTable(std::span<const CTableColumn> columns,
                            const std::vector<CTableRow>& rows, const CTextStyle& style) {
    if (rows.empty()) {
        return "";
    }
    const CWidths natural = NaturalWidths(columns, rows);
    CWidths widths = natural;
    if (style.width != ANY_WIDTH) {
        Fit(widths, columns, style.width);
    }
    CTableWriter writer(columns, widths, style);
    writer.AppendLine([&](size_t i) { return std::string(columns[i].title); }, BOLD);
    for (const CTableRow& row : rows) {
        writer.AppendLine([&](size_t i) { return row.cells[i]; }, row.colour);
    }
    return writer.m_Text + LeftOutText(columns, natural, widths, style);
}

}  // namespace qorctl
