#include "ReportWriter.h"

#include <array>
#include <random>

namespace qorbench {
namespace {

constexpr std::uint_fast32_t SEED = 20231117;

class CWriter {
public:
    std::string& Text() { return m_Text; }
    void Line(const std::string& line) { m_Text.append(line).append("\n"); }
    void Pair(const char* key, const std::string& value) {
        m_Text.append(key).append(" : ").append(value).append("\n");
    }
    std::string Number(unsigned below) { return std::to_string(m_Random() % below); }
    // `count` digits or capital letters.
    std::string Serial(std::size_t count) {
        static constexpr std::array<char, 33> LETTERS = {"0123456789ABCDEFGHJKLMNPRSTUVWXY"};
        std::string serial;
        while (serial.size() < count) {
            serial += LETTERS[m_Random() % 32];
        }
        return serial;
    }

private:
    std::string m_Text;
    std::mt19937 m_Random{SEED};
};

void AddController(CWriter& out, unsigned number) {
    out.Line("RAID Controller : " + std::to_string(number));
    out.Line("\n### General Information ###");
    out.Pair("Product Name", "TRC 3108-8i 2GB");
    out.Pair("Serial Number", out.Serial(10));
    out.Pair("PCI Bus/Dev/Func", out.Number(256) + "/0/0");
    out.Pair("Vendor ID", "0x1000");
    out.Pair("Device ID", "0x005d");
    out.Pair("SubVendor ID", "0x1000");
    out.Pair("SubDevice ID", "0x9361");
    out.Pair("SAS Address", out.Serial(16));
    out.Pair("Memory Size", "2048MB");
    out.Pair("# of PD", out.Number(255));
    out.Line("\n### Firmware/BIOS/Driver Information ###");
    out.Pair("Firmware Package Version", "24.21.0-" + out.Number(1000));
    out.Pair("Firmware Version", "4.680.00-" + out.Number(10000));
    out.Pair("BIOS Version", "7.16.00.0_0x07100501");
    out.Line("\n### Controller Settings Information ###");
    out.Pair("Rebuild Rate", out.Number(100) + "%");
    out.Pair("Consistency Check Rate", out.Number(100) + "%");
    out.Pair("Patrol Read Mode", "Auto");
    out.Pair("Alarm Control", "Disabled");
    out.Line("\n### BBU Information ###");
    out.Pair("BBU Type", "Supercapacitor");
    out.Pair("Temperature", out.Number(60) + "C");
    out.Line("");
}

void AddListedDrive(CWriter& out, unsigned number) {
    out.Line(">>PD" + std::to_string(number) + " (NL" + out.Serial(10) + ", 1.091TB, ONLINE)");
    out.Pair("Enclosure No.", "0");
    out.Pair("Slot No.", std::to_string(number));
    out.Line("");
}

void AddGroup(CWriter& out, unsigned number) {
    constexpr unsigned DRIVES = 6;
    const std::string name = std::to_string(number);
    out.Line("RG" + name);
    out.Pair("RG No.", "RG" + name);
    out.Pair("RAID Level", "RAID 6");
    out.Pair("Total Size", out.Number(200) + ".072TB");
    out.Pair("# of LD", "1");
    out.Line("\n>LD" + name + " (archive, cold, 120.000TB, Optimal)");
    out.Line("### General Information ###");
    out.Pair("LD Type", "RAID");
    out.Pair("Stripe Size", "64KB");
    out.Pair("# of PD", std::to_string(DRIVES));
    out.Line("\n### LD Settings Information ###");
    out.Pair("Default Access Policy", "Read Write");
    out.Pair("Default Read Policy", "Read Ahead");
    out.Pair("Default Write Policy", "Write Back");
    out.Pair("Disk Cache Policy", "Disabled");
    out.Line("");
    for (unsigned i = 0; i < DRIVES; ++i) {
        AddListedDrive(out, number * DRIVES + i);
    }
}

void AddDrive(CWriter& out, unsigned number) {
    out.Line("PD" + std::to_string(number) + (number % 7 == 0 ? "(GHS)" : "(N/A)"));
    out.Line("### General Information ###");
    out.Pair("Raw Capacity", "1.091TB");
    out.Pair("Interface Type", "SAS");
    out.Pair("Media Type", "HDD");
    out.Pair("Product ID", "NL1200MM0129");
    out.Pair("Serial Number", out.Serial(10));
    out.Pair("Vendor ID", "NORDLYS");
    out.Pair("WWN", out.Serial(16));
    out.Pair("PD Status", number % 50 == 0 ? "FAILED" : "ONLINE");
    out.Pair("Media Error Count", out.Number(3));
    out.Pair("Other Error Count", out.Number(20));
    out.Pair("Predictive Failure Count", "0");
    out.Pair("Drive Speed", "12.0Gb/s");
    out.Pair("Revision Level", "N102");
    out.Pair("Temperature", out.Number(60) + "C");
    out.Pair("Power Status", "Active");
    out.Line("\n### Slot Information ###");
    out.Pair("Slot No.", std::to_string(number % 24));
    out.Line("");
}

std::string Padded(std::string text, std::size_t width) {
    text.resize(width, ' ');
    return text;
}

void AddSmartRow(CWriter& out, unsigned number) {
    if (number == 0) {
        out.Line("PD5(LD1)\n### General Information ###");
        out.Pair("Raw Capacity", "1.819TB");
        out.Pair("Interface Type", "SATA");
        out.Line("\n### SMART Information ###");
        out.Pair("Power-On Time", "14630h");
        out.Line("\n" + Padded("ID", 4) + Padded("Attribute", 41) + Padded("Current", 9) +
                 Padded("Worst", 7) + Padded("Raw Data", 16) + "Threshold");
        out.Line(
            "--- ---------------------------------------- -------  -----  --------------- "
            "---------");
    }
    out.Line(Padded(std::to_string(number % 256), 4) +
             Padded("Read Error Rate " + out.Serial(6), 41) + Padded(out.Number(253), 9) +
             Padded(out.Number(253), 7) + Padded(out.Number(1000000), 16) + out.Number(100));
}

void AddSsd(CWriter& out, unsigned number) {
    out.Line("Bus : " + std::to_string(number % 256));
    out.Line("\n### General Information ###");
    out.Pair("Product Name", "Cobalt CB2-1205");
    out.Pair("Serial Number", out.Serial(10));
    out.Pair("Vendor ID", "0x1aed");
    out.Pair("Device ID", "0x2001");
    out.Pair("Firmware Version", "v7.1." + out.Number(30));
    out.Pair("Capacity", "1205GB");
    out.Pair("Status", "Healthy");
    out.Line("\n### Health Information ###");
    out.Pair("Temperature", out.Number(80) + "C");
    out.Pair("Percentage Used", out.Number(100) + "%");
    out.Line("");
}

struct CKind {
    const char* name;
    void (*addBlock)(CWriter& out, unsigned number);
};

// In the order of EReport.
constexpr std::array<CKind, 5> KINDS = {{{"ctrl", AddController},
                                         {"ld", AddGroup},
                                         {"pd", AddDrive},
                                         {"smart", AddSmartRow},
                                         {"pssd", AddSsd}}};

const CKind& KindOf(EReport kind) {
    return KINDS[static_cast<std::size_t>(kind)];
}

}  // namespace

const char* NameOf(EReport kind) {
    return KindOf(kind).name;
}

std::string MakeReport(EReport kind, std::size_t size) {
    CWriter out;
    for (unsigned number = 0; out.Text().size() < size; ++number) {
        KindOf(kind).addBlock(out, number);
    }
    return std::move(out.Text());
}

}  // namespace qorbench
