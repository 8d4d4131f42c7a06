// The lines that the getters know, for the mutation of reports.
#ifndef QORFUZZ_REPORTVOCABULARY_H
#define QORFUZZ_REPORTVOCABULARY_H

#include <array>
#include <span>
#include <string_view>
#include <vector>

namespace qorfuzz {

inline constexpr auto COMMON_LINES = std::to_array<std::string_view>({
    "",
    " ",
    "RAID Controller : 0",
    "### General Information ###",
    "### Other Information ###",
    "### ",
    "Error - No RAID controller is found.",
    "key : value",
    ":",
    "key :",
    ": value",
    "no separator",
});
inline constexpr auto CTRL_LINES = std::to_array<std::string_view>({
    "### Firmware/BIOS/Driver Information ###",
    "### Controller Settings Information ###",
    "SubVendor ID : 0x1734",
    "SubDevice ID : 0x11e4",
    "Firmware Package Version : 24.21.0-0148",
    "Firmware Version : 4.680.00-8527",
    "Firmware Build Time : Aug 21 2020, 10:32:15",
    "Consistency Check Rate : 30%",
    "Reconstruction Rate : 30%",
});
inline constexpr auto LD_LINES = std::to_array<std::string_view>({
    "RG0",
    "sRG1 : 2",
    "scRG2 : 3",
    "RG No. : RG0",
    ">LD0 (System, 558.406GB, Optimal)",
    ">LD1 (a, b, c, d)",
    ">LD(",
    "### LD Settings Information ###",
    "###\tLD Settings Information\t###",
    "Access Policy : Read Write",
    "# of PD : 2",
    "Associated CacheCade LD",
    "LD0 (Data, 1.0TB, Optimal)",
    ">>PD0 (NL600MM0069, 558.912GB, ONLINE)",
    ">>PD1",
    "Enclosure No. : 252",
});
inline constexpr auto PD_LINES = std::to_array<std::string_view>({
    "PD0(LD0)",
    "PD1(GHS)",
    "PD2(RLD1)",
    "PD3(DHS RG1)",
    "PD4(DHS sRG1)",
    "PD5()",
    "PD6(LD0",
    "PD7",
    " PD8(LD0)",
    "PD Status : ONLINE",
    "PD Status : REBUILD",
    "Temperature : 31C",
    "Power Status : Active",
    "Interface Type : SATA",
    "Interface Type : SAS",
    "Interface Type : other",
    "### Slot Information ###",
    "### SMART Information ###",
    "Power-On Time : 21904h",
    "ID  Attribute  Current  Worst  Raw Data  Threshold",
    "Attribute  Value  Threshold",
    "--  ---------  -------  -----  --------  ---------",
    "9   Power-On Hours                           99       99     1200      0",
    "[Head 0]",
    "Grown Defects  0  -",
    "RG No. : RG0",
    ">>PD0 (NL600MM0069, 558.912GB, ONLINE)",
});
inline constexpr auto SSD_LINES = std::to_array<std::string_view>({
    "Bus : 5",
    "Bus :",
    "Bus : ::",
    "Product Name : NVX 800GB",
});

// The lines of one report with those of all.
inline std::vector<std::string_view> WithCommonLines(std::span<const std::string_view> lines) {
    std::vector<std::string_view> all(COMMON_LINES.begin(), COMMON_LINES.end());
    all.insert(all.end(), lines.begin(), lines.end());
    return all;
}

}  // namespace qorfuzz

#endif  // QORFUZZ_REPORTVOCABULARY_H
