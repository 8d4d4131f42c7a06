#include "getters/CMSRAID_PDSMInfoGetter.h"

#include <string_view>

#include "base/Trace.h"
#include "getters/Text.h"

namespace {

constexpr size_t SATA_NAME_WIDTH = 40;
constexpr size_t BLANK_AND_DATA_WIDTH = 5;  // what follows "Raw" in a header

constexpr bool IsBlank(char character) {
    return character == ' ' || character == '\t';
}

// Byte by byte: string's own search is slow with so few characters, and a table has many rows.
size_t FindBlank(std::string_view text, size_t begin) {
    while (begin < text.size() && !IsBlank(text[begin])) {
        ++begin;
    }
    return begin < text.size() ? begin : std::string_view::npos;
}

size_t FindText(std::string_view text, size_t begin) {
    while (begin < text.size() && IsBlank(text[begin])) {
        ++begin;
    }
    return begin < text.size() ? begin : std::string_view::npos;
}

// "Raw Data" is one column although it holds a blank.
bool IsRawData(const std::string& piece) {
    return piece == CMSRAID_PDSMInfoGetter::SMART_RAW_DATA_HEAD_NAME;
}

std::string SATAColumn(const std::string& piece) {
    return IsRawData(piece) ? CMSRAID_PDSMInfoGetter::SMART_RAW_DATA_NAME : piece;
}

// The columns of a SATA header. The tool always prints another one behind "Raw Data".
std::vector<std::string> SATAColumns(const std::string& header) {
    std::vector<std::string> columns;
    size_t begin = 0;
    for (size_t end = FindBlank(header, 0); end != std::string::npos;
         end = FindBlank(header, begin)) {
        const std::string piece = Trimmed(header.substr(begin, end - begin));
        columns.push_back(SATAColumn(piece));
        begin = FindText(header, IsRawData(piece) ? end + BLANK_AND_DATA_WIDTH : end);
    }
    columns.push_back(SATAColumn(Trimmed(header.substr(begin))));
    return columns;
}

std::vector<std::string> SATACells(std::string_view line, size_t expected) {
    std::vector<std::string> cells;
    cells.reserve(expected);
    size_t begin = 0;
    for (;;) {
        const bool isName = cells.size() == 1;
        const size_t end = isName ? begin + SATA_NAME_WIDTH : FindBlank(line, begin);
        if (end == std::string::npos) {
            break;
        }
        cells.push_back(Trimmed(line.substr(begin, end - begin)));
        begin = FindText(line, end);
    }
    cells.push_back(Trimmed(line.substr(begin)));
    return cells;
}

struct CSASColumns {
    std::vector<std::string> names;
    std::vector<size_t> starts;
};

CSASColumns SASColumns(const std::string& header) {
    CSASColumns columns;
    size_t begin = FindText(header, 0);
    while (begin != std::string::npos) {
        const size_t end = FindBlank(header, begin);
        columns.starts.push_back(columns.names.empty() ? 0 : begin);
        columns.names.push_back(Trimmed(header.substr(begin, end - begin)));
        begin = FindText(header, end);
    }
    return columns;
}

std::vector<std::string> SASCells(std::string_view line, const std::vector<size_t>& starts,
                                  const std::string& head) {
    std::vector<std::string> cells;
    cells.reserve(starts.size());
    for (size_t i = 0; i < starts.size(); ++i) {
        const size_t width = i + 1 < starts.size() ? starts[i + 1] - starts[i] : std::string::npos;
        const std::string_view text = line.substr(starts[i], width);
        cells.push_back(i == 0 ? Trimmed(head + std::string(text)) : Trimmed(text));
    }
    return cells;
}

}  // namespace

// The base class's name stands in these two pairs of lines; support tools know them so.
CMSRAID_PDSMInfoGetter::CMSRAID_PDSMInfoGetter() {
    const CTraceScope trace("CMSRAID_PDSMInfoGetter::CMSRAID_PDInfoGetter");
}

CMSRAID_PDSMInfoGetter::~CMSRAID_PDSMInfoGetter() {
    const CTraceScope trace("CMSRAID_PDSMInfoGetter::~CMSRAID_PDInfoGetter");
}

bool CMSRAID_PDSMInfoGetter::GetInfo(long ctrlNo, long enclosure, long slot,
                                     std::list<CItemDisp*>& out) {
    const CTraceScope trace("CMSRAID_PDInfoGetter::GetInfo");
    // Addresses are 32-bit numbers to the tool.
    m_CommandFormat = "krzcli -pdinfo -pd[" + std::to_string(static_cast<int>(enclosure)) + ":" +
                      std::to_string(static_cast<int>(slot)) + "] -a%s";
    return CMSRAID_PDInfoGetter::GetInfo(ctrlNo, out);
}

bool CMSRAID_PDSMInfoGetter::ParseSMARTInfo(std::ifstream& stream, std::string) {
    const CTraceScope trace("CMSRAID_PDSMInfoGetter::ParseSMARTInfo");
    if (stream.fail()) {
        QOR_TRACE(FAILURE, "Invalid Arg.");
        return false;
    }
    return ParseSummary(stream) && ParseTable(stream);
}

bool CMSRAID_PDSMInfoGetter::ParseSummary(std::ifstream& stream) {
    bool temperatureSeen = false;
    bool powerTimeSeen = false;
    const bool result = ParsePairs(stream, [&](const CItemDisp& item) {
        temperatureSeen = temperatureSeen || item.ItemName() == SMART_TEMPERATURE_NAME;
        powerTimeSeen = powerTimeSeen || item.ItemName() == SMART_POWER_TIME_NAME;
    });
    if (!result) {
        QOR_TRACE(FAILURE, "ParseKeyValue is FAILED (ret=%08x).", 0U);
        return false;
    }
    if (!temperatureSeen) {
        AddPlaceholder(SMART_TEMPERATURE_NAME);
    }
    if (!powerTimeSeen) {
        AddPlaceholder(SMART_POWER_TIME_NAME);
    }
    return true;
}

bool CMSRAID_PDSMInfoGetter::ParseTable(std::ifstream& stream) {
    const std::streampos behindSummary = stream.tellg();
    std::string line;
    while (line.empty() && std::getline(stream, line)) {
        Trim(line);
    }
    const bool isSAS = m_IFType == PD_IFTYPE_SAS;
    const bool isSATA = m_IFType == PD_IFTYPE_SATA;
    if (Contains(line, SMART_ATTRIBUTE_NAME)) {
        if (isSAS) {
            return ParseSMARTSAS(stream, line);
        }
        return !isSATA || ParseSMARTSATA(stream, line);
    }
    if (isSAS || isSATA) {
        AddPlaceholder(isSAS ? SMART_DETAIL_SAS_NAME : SMART_DETAIL_SATA_NAME);
    }
    if (!line.empty()) {
        stream.seekg(behindSummary);
    }
    return true;
}

bool CMSRAID_PDSMInfoGetter::ParseSMARTSATA(std::ifstream& stream, std::string header) {
    const CTraceScope trace("CMSRAID_PDSMInfoGetter::ParseSMARTSATA");
    const std::vector<std::string> columns = SATAColumns(header);
    std::string line;
    std::getline(stream, line);  // the rule under the header
    while (std::getline(stream, line)) {
        Trim(line);
        if (!line.empty() &&
            !AddRow(SMART_DETAIL_SATA_NAME, columns, SATACells(line, columns.size()), line)) {
            return false;
        }
    }
    return true;
}

bool CMSRAID_PDSMInfoGetter::ParseSMARTSAS(std::ifstream& stream, std::string header) {
    const CTraceScope trace("CMSRAID_PDSMInfoGetter::ParseSMARTSAS");
    const CSASColumns columns = SASColumns(header);
    std::string head;
    std::string line;
    std::getline(stream, line);  // the rule under the header
    while (std::getline(stream, line)) {
        Trim(line);
        if (line.starts_with(SMART_HEAD_NAME)) {
            head = line;
        } else if (!line.empty() && !AddRow(SMART_DETAIL_SAS_NAME, columns.names,
                                            SASCells(line, columns.starts, head), line)) {
            return false;
        }
    }
    return true;
}

bool CMSRAID_PDSMInfoGetter::AddRow(const char* group, const std::vector<std::string>& columns,
                                    const std::vector<std::string>& cells,
                                    const std::string& line) {
    const std::string parent = group;
    AddItem(m_RaidList, CurTitleName(), parent, "");
    if (cells.size() != columns.size()) {
        QOR_TRACE(FAILURE, "Parse SmartDeital is FAILED.(%s)", line.c_str());
        return false;
    }
    for (size_t i = 0; i < columns.size(); ++i) {
        AddItem(m_RaidList, parent, columns[i], cells[i]);
    }
    return true;
}
