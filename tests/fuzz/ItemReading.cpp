#include "ItemReading.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <map>
#include <set>
#include <string_view>
#include <utility>

namespace qorfuzz {
namespace {

using qorctl::EHealth;
using CValue = std::optional<std::string>;
using CNumber = std::optional<long long>;

constexpr size_t LONGEST_VALUE = 200;
constexpr double TOO_LARGE = 9223372036854775808.0;
constexpr std::string_view GENERAL = "General Information";

// The items as a tree; the first node stands above all.
struct CNode {
    const CItemDisp* item = nullptr;
    std::vector<size_t> children;
};

using CNodes = std::vector<CNode>;

// A key below a title, or a name that stands above keys.
struct CLine {
    std::string section;
    std::string name;
    CValue value;
    bool isGroup = false;
    std::vector<std::pair<std::string, CValue>> keys;
};

using CDevice = std::vector<CLine>;

CNodes TreeOf(const ItemList& items) {
    CNodes nodes(1);
    std::vector<size_t> open;  // the innermost last
    for (const CItemDisp* item : items) {
        nodes.push_back({item, {}});
        const auto parent = std::find_if(open.rbegin(), open.rend(), [&](size_t node) {
            return nodes[node].item->ItemName() == item->ParentName();
        });
        size_t above = 0;
        if (item->ParentName().empty()) {
            open.clear();
        } else if (parent != open.rend()) {
            above = *parent;
            open.erase(parent.base(), open.end());
        }
        nodes[above].children.push_back(nodes.size() - 1);
        open.push_back(nodes.size() - 1);
    }
    return nodes;
}

bool IsTitle(const CItemDisp& item) {
    return item.ItemName().substr(0, 4) == "### ";
}

std::string TitleOf(const CItemDisp& item) {
    const std::string title = item.ItemName().substr(4);
    return title.ends_with(" ###") ? title.substr(0, title.size() - 4) : title;
}

CValue ValueOf(const CItemDisp& item) {
    return item.Enable() == "FALSE" && item.ItemValue().empty() ? CValue() : item.ItemValue();
}

void CollectKeys(const CNodes& nodes, size_t top, CLine& line) {
    std::vector<size_t> next(nodes[top].children.rbegin(), nodes[top].children.rend());
    while (!next.empty()) {
        const CNode& node = nodes[next.back()];
        next.pop_back();
        line.keys.emplace_back(node.item->ItemName(), ValueOf(*node.item));
        next.insert(next.end(), node.children.rbegin(), node.children.rend());
    }
}

CLine LineOf(const CNodes& nodes, size_t index, const std::string& section) {
    const CNode& node = nodes[index];
    CLine line{section, node.item->ItemName(), ValueOf(*node.item), !node.children.empty(), {}};
    if (line.isGroup) {
        line.value.reset();
        if (!node.item->ItemValue().empty()) {
            line.keys.emplace_back("", node.item->ItemValue());
        }
        CollectKeys(nodes, index, line);
    }
    return line;
}

CDevice DeviceOf(const CNodes& nodes, size_t root) {
    CDevice device;
    for (const size_t child : nodes[root].children) {
        const CItemDisp& item = *nodes[child].item;
        if (!IsTitle(item)) {
            device.push_back(LineOf(nodes, child, ""));
            continue;
        }
        for (const size_t line : nodes[child].children) {
            device.push_back(LineOf(nodes, line, TitleOf(item)));
        }
    }
    return device;
}

// What it says; nothing where it says nothing.
CValue Told(const CValue& value) {
    static const std::set<std::string> NOTHING = {"", "-", "N/A", "n/a"};
    return value && NOTHING.contains(*value) ? CValue() : value;
}

CValue Find(const CDevice& device, std::string_view section, std::string_view name) {
    const auto line = std::find_if(device.begin(), device.end(), [&](const CLine& each) {
        return each.section == section && each.name == name;
    });
    return line == device.end() ? CValue() : Told(line->value);
}

CValue FindKey(const CLine& line, std::string_view name) {
    const auto key = std::find_if(line.keys.begin(), line.keys.end(),
                                  [&](const auto& each) { return each.first == name; });
    return key == line.keys.end() ? CValue() : Told(key->second);
}

std::string WithoutBlanks(const std::string& text) {
    const size_t first = text.find_first_not_of(" \t");
    return first == std::string::npos
               ? ""
               : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

CNumber CountIn(const std::string& text) {
    const std::string digits = WithoutBlanks(text);
    errno = 0;
    const long long number = std::strtoll(digits.c_str(), nullptr, 10);
    const bool isNumber =
        !digits.empty() && digits.find_first_not_of("0123456789") == std::string::npos;
    return isNumber && errno == 0 ? CNumber(number) : CNumber();
}

// A number and one of the units.
CNumber MeasureIn(const std::string& text, const std::set<std::string>& units) {
    const std::string whole = WithoutBlanks(text);
    const size_t sign = whole.starts_with('-') ? 1 : 0;
    const size_t point = std::min(whole.find_first_not_of("0123456789", sign), whole.size());
    if (point == sign) {
        return std::nullopt;
    }
    const bool hasPoint = point < whole.size() && whole[point] == '.';
    const size_t end =
        hasPoint ? std::min(whole.find_first_not_of("0123456789", point + 1), whole.size()) : point;
    errno = 0;
    const double number = std::round(std::strtod(whole.substr(0, end).c_str(), nullptr));
    const bool isNumber = errno == 0 && units.contains(WithoutBlanks(whole.substr(end))) &&
                          number < TOO_LARGE && number >= -TOO_LARGE;
    return isNumber ? CNumber(static_cast<long long>(number)) : CNumber();
}

CNumber CelsiusIn(const std::string& text) {
    const std::string whole = WithoutBlanks(text);
    const bool isTwice = whole.ends_with(')') && whole.find('(') != std::string::npos;
    return MeasureIn(isTwice ? whole.substr(0, whole.find('(')) : whole, {"C",
                                                                          "\xC2\xB0"
                                                                          "C",
                                                                          "degrees C"});
}

CNumber PercentIn(const std::string& text) {
    const CNumber number = MeasureIn(text, {"%"});
    return number && *number >= 0 ? number : CNumber();
}

using CStates = std::map<std::string, EHealth>;

EHealth StateHealth(const CValue& state, const CStates& states) {
    const auto known = state ? states.find(*state) : states.end();
    return known == states.end() ? EHealth::UNKNOWN : known->second;
}

EHealth MeasureHealth(const CValue& text, CNumber (*read)(const std::string&), long long warning,
                      long long critical) {
    if (!text) {
        return EHealth::OK;
    }
    const CNumber number = read(*text);
    if (!number) {
        return EHealth::UNKNOWN;
    }
    return *number > critical  ? EHealth::CRITICAL
           : *number > warning ? EHealth::WARNING
                               : EHealth::OK;
}

EHealth BatteryHealth(const CDevice& controller) {
    static const CStates STATES = {
        {"Normal", EHealth::OK},        {"Optimal", EHealth::OK},
        {"Charging", EHealth::WARNING}, {"Discharging", EHealth::WARNING},
        {"Learning", EHealth::WARNING}, {"Degraded", EHealth::WARNING},
        {"Failed", EHealth::WARNING},   {"Low", EHealth::WARNING},
        {"Missing", EHealth::WARNING},  {"Replace", EHealth::WARNING}};
    const CValue status = Find(controller, "BBU Information", "BBU Status");
    const bool isPresent = Find(controller, "BBU Information", "BBU") == "Present";
    return status || isPresent ? StateHealth(status, STATES) : EHealth::OK;
}

EHealth LogicalDriveHealth(const CValue& state) {
    static const CStates STATES = {{"Optimal", EHealth::OK},
                                   {"Partially Degraded", EHealth::WARNING},
                                   {"Degraded", EHealth::CRITICAL},
                                   {"Offline", EHealth::CRITICAL}};
    return StateHealth(state, STATES);
}

EHealth DriveHealth(const CDevice& drive) {
    static const CStates STATES = {
        {"ONLINE", EHealth::OK},        {"HOT SPARE", EHealth::OK},
        {"Unconfig GOOD", EHealth::OK}, {"JBOD", EHealth::OK},
        {"REBUILD", EHealth::WARNING},  {"COPYBACK", EHealth::WARNING},
        {"Foreign", EHealth::WARNING},  {"Unconfig BAD", EHealth::WARNING},
        {"OFFLINE", EHealth::CRITICAL}, {"FAILED", EHealth::CRITICAL}};
    static const std::set<std::string> WITHOUT_DATA = {"GHS", "DHS", "None"};
    const CValue state = Find(drive, GENERAL, "PD Status(Detail)");
    const CValue use = Find(drive, GENERAL, "LD No.");
    return state == "OFFLINE" && use && WITHOUT_DATA.contains(*use) ? EHealth::WARNING
                                                                    : StateHealth(state, STATES);
}

// Reads one list.
class CReader {
public:
    void Read(const CNodes& nodes);

    CItemReading m_Reading;

private:
    void ReadRoot(const CItemDisp& root, const CDevice& device);
    void ReadController(const CDevice& device);
    void ReadGroup(const CDevice& device);
    void ReadDrive(const CDevice& device);
    void ReadSsd(const CDevice& device);
    void Judge(EHealth health) { m_Reading.states.push_back(health); }
    void JudgeCounts();

    CNumber m_Controller;
    std::map<CNumber, long long> m_LogicalDrives;  // by controller
    std::map<CNumber, long long> m_Drives;
    std::vector<std::pair<CNumber, CNumber>> m_StatedLogicalDrives;  // controller and number
    std::vector<std::pair<CNumber, CNumber>> m_StatedDrives;
};

CNumber CountOf(const CValue& text) {
    return text ? CountIn(*text) : CNumber();
}

void CReader::ReadController(const CDevice& device) {
    m_Controller = CountOf(Find(device, GENERAL, "Controller No."));
    m_StatedLogicalDrives.emplace_back(m_Controller, CountOf(Find(device, GENERAL, "# of LD")));
    m_StatedDrives.emplace_back(m_Controller, CountOf(Find(device, GENERAL, "# of PD")));
    Judge(BatteryHealth(device));
}

void CReader::ReadGroup(const CDevice& device) {
    for (const CLine& line : device) {
        if (line.isGroup && line.name == "LD List") {
            m_Reading.logicalDrives.push_back(FindKey(line, "State"));
            ++m_LogicalDrives[m_Controller];
            Judge(LogicalDriveHealth(m_Reading.logicalDrives.back()));
        }
    }
}

void CReader::ReadDrive(const CDevice& device) {
    ++m_Drives[m_Controller];
    Judge(DriveHealth(device));
    Judge(MeasureHealth(Find(device, GENERAL, "Temperature"), CelsiusIn, 50, 60));
    m_Reading.smartRows +=
        static_cast<size_t>(std::count_if(device.begin(), device.end(), [](const CLine& line) {
            return line.isGroup && line.name.starts_with("SMART Detail(");
        }));
    for (const char* name :
         {"Media Error Count", "Other Error Count", "Predictive Failure Count"}) {
        if (const CValue text = Find(device, GENERAL, name); text) {
            const CNumber number = CountIn(*text);
            Judge(!number ? EHealth::UNKNOWN : *number > 0 ? EHealth::WARNING : EHealth::OK);
        }
    }
}

void CReader::ReadSsd(const CDevice& device) {
    static const CStates STATES = {{"Healthy", EHealth::OK},
                                   {"Warning", EHealth::WARNING},
                                   {"Critical", EHealth::CRITICAL},
                                   {"Failed", EHealth::CRITICAL}};
    static constexpr std::string_view HEALTH = "Health Information";
    Judge(StateHealth(Find(device, GENERAL, "Status"), STATES));
    Judge(MeasureHealth(Find(device, HEALTH, "Temperature"), CelsiusIn, 70, 80));
    Judge(MeasureHealth(Find(device, HEALTH, "Percentage Used"), PercentIn, 80, 100));
}

void CReader::ReadRoot(const CItemDisp& root, const CDevice& device) {
    static const std::map<std::string, std::pair<ERoot, void (CReader::*)(const CDevice&)>> ROOTS =
        {{"Controller Information", {ERoot::CONTROLLER, &CReader::ReadController}},
         {"Logical Drive Information", {ERoot::GROUP, &CReader::ReadGroup}},
         {"Physical Drive Information", {ERoot::DRIVE, &CReader::ReadDrive}},
         {"PCIe SSD Information", {ERoot::SSD, &CReader::ReadSsd}}};
    const auto known = ROOTS.find(root.ItemName());
    if (known == ROOTS.end()) {
        ++m_Reading.roots[static_cast<size_t>(ERoot::OTHER)];
        return;
    }
    ++m_Reading.roots[static_cast<size_t>(known->second.first)];
    (this->*known->second.second)(device);
}

void CReader::JudgeCounts() {
    for (const auto& [stated, found] : {std::pair(&m_StatedLogicalDrives, &m_LogicalDrives),
                                        std::pair(&m_StatedDrives, &m_Drives)}) {
        for (const auto& [controller, number] : *stated) {
            Judge(number.value_or(0) > (*found)[controller] ? EHealth::UNKNOWN : EHealth::OK);
        }
    }
}

void CReader::Read(const CNodes& nodes) {
    for (const size_t root : nodes.front().children) {
        const CDevice device = DeviceOf(nodes, root);
        ReadRoot(*nodes[root].item, device);
        for (const CLine& line : device) {
            if (!line.isGroup) {
                m_Reading.values.push_back(line.value);
            }
            for (const auto& key : line.keys) {
                m_Reading.values.push_back(key.second);
            }
        }
    }
    JudgeCounts();
}

bool IsAscii(const std::string& text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}  // namespace

EHealth CItemReading::Worst() const {
    for (const EHealth health : {EHealth::CRITICAL, EHealth::UNKNOWN, EHealth::WARNING}) {
        if (std::find(states.begin(), states.end(), health) != states.end()) {
            return health;
        }
    }
    return EHealth::OK;
}

CItemReading ReadOnceMore(const ItemList& items) {
    CReader reader;
    reader.Read(TreeOf(items));
    CItemReading& reading = reader.m_Reading;
    reading.items = items.size();
    reading.isAscii = std::all_of(items.begin(), items.end(), [](const CItemDisp* item) {
        return IsAscii(item->ItemName()) && IsAscii(item->ItemValue());
    });
    reading.isShort = std::all_of(items.begin(), items.end(), [](const CItemDisp* item) {
        return item->ItemValue().size() <= LONGEST_VALUE &&
               item->ItemName().size() <= LONGEST_VALUE;
    });
    return std::move(reading);
}

}  // namespace qorfuzz
