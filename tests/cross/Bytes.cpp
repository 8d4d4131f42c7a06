// Writes what every reader of the product makes of the files that it is given: items, documents,
// service-processor forms, numbers. The bytes are the same on every processor, and whether char is
// signed or not. Each file goes to all readers, so that they meet what they do not expect, too.
//
// usage: cross_bytes OUTPUT DIRECTORY...
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <vector>

#include "Fuzz.h"
#include "ItemListInput.h"
#include "Server.h"
#include "base/ItemList.h"
#include "cli/CMSRAID_KRZ.h"
#include "cli/KRZVersion.h"
#include "format/SvpForm.h"
#include "getters/CMSRAID_CtrlInfoGetter.h"
#include "getters/CMSRAID_LDInfoGetter.h"
#include "getters/CMSRAID_PCIeSSDInfoGetter.h"
#include "getters/CMSRAID_PDInfoGetter.h"
#include "getters/CMSRAID_PDSMInfoGetter.h"
#include "plugin/ComLib.h"
#include "plugin/SvpConversion.h"
#include "presence/CMSRAID_MegaStorCLI.h"
#include "presence/CMSRAID_PCICard.h"
#include "xml/MngSrv_QorLibMan.h"

namespace {

namespace fs = std::filesystem;
using namespace qorfuzz;

constexpr const char* DEVICE_LIST = "/opt/tarmica/qor/kam/work/devices.tmp";
constexpr const char* VERSION_FILE = "/opt/tarmica/qor/provider/tmp/version.txt";
constexpr const char* INI_FILE = "/opt/tarmica/devices.ini";
constexpr const char* MEGACLI =
    R"("/opt/tarmica/qor/provider/RAID/tool/MegaCli" -AdpAllInfo -aALL)";
constexpr const char* STORCLI = R"("/opt/tarmica/qor/provider/RAID/tool/storcli" /call show)";
constexpr long MOST_DEVICES = 12;  // each is asked for: a count of millions takes minutes

std::ofstream g_Output;

void Write(const char* what, const std::string& text) {
    g_Output << what << ' ' << text.size() << ' ' << text << '\n';
}

void Write(const char* what, long number) {
    Write(what, std::to_string(number));
}

void WriteDocument(ItemList& items) {
    CMngSrv_QorLibMan manager;
    char* text = nullptr;
    Write("xml result",
          manager.XmlSerialize(CMngSrv_QorLibMan::TYPE_DISPDATA, "bytes", &items, &text));
    Write("xml", text != nullptr ? text : "");
}

void WriteDecodedForm(const std::string& digits) {
    std::string problem;
    const auto entries = qorctl::DecodeSvpForm(digits, problem);
    Write("decoded", entries ? qorctl::FormatSvpForm(*entries, {.utf8 = true}) : problem);
}

void WriteForm(const ItemList& items) {
    CSvpPdInfoForm form;
    CSvpConversion::Convert(&form, items);
    form.SetDataSize();
    std::string digits;
    form.DumpMe(&digits);
    Write("form", digits);
    WriteDecodedForm(digits);
}

void WriteItems(ItemList& items) {
    for (const CItemDisp* item : items) {
        Write("parent", item->ParentName());
        Write("name", item->ItemName());
        Write("value", item->ItemValue());
        Write("flag", item->Enable());
    }
    WriteDocument(items);
    WriteForm(items);
}

// What a getter makes of the tool's reports: its numbers are those of a controller and a drive.
template <typename Getter, typename... Numbers>
void WriteGetter(const char* what, Numbers... numbers) {
    Getter getter;
    CItemListOwner items;
    try {
        Write(what, getter.GetInfo(numbers..., items) ? "items" : "failure");
    } catch (const std::out_of_range&) {
        Write(what, "out of range");
    }
    Write("code", getter.ErrCode());
    Write("detail", getter.ErrDetail());
    WriteItems(items);
}

void WriteCounts() {
    char count = 0;
    Write("counted", CMSRAID_CtrlInfoGetter().GetCtrlNum(&count) ? 1 : 0);
    Write("controllers", static_cast<signed char>(count));
    std::map<long, std::string> groups;
    Write("grouped", CMSRAID_LDInfoGetter().GetPDRGNo(0, groups) ? 1 : 0);
    for (const auto& [drive, group] : groups) {
        Write("drive", drive);
        Write("group", group);
    }
}

void WriteVersion() {
    try {
        const std::string version = CMSRAID_KRZ::GetKRZVersion(VERSION_FILE);
        const CKRZVersion numbers = CKRZVersion::Parse(version).value_or(CKRZVersion{-1, -1});
        Write("version", version);
        Write("major", numbers.major);
        Write("minor", numbers.minor);
    } catch (const std::out_of_range&) {
        Write("version", "out of range");
    }
}

void WriteReport(const std::string& text) {
    LetToolPrint({{"krzcli -v", text},
                  {"krzcli -ctrlinfo -aAll", text},
                  {"krzcli -ctrlinfo -a0", text},
                  {"krzcli -ldpdinfo -a0", text},
                  {"krzcli -pdinfo -a0", text},
                  {"krzcli -pdinfo -pd[252:3] -a0", text},
                  {"krzcli -pssdinfo -aAll", text}});
    constexpr long CONTROLLER = 0;
    constexpr long ENCLOSURE = 252;
    constexpr long SLOT = 3;
    WriteGetter<CMSRAID_CtrlInfoGetter>("controller", CONTROLLER);
    WriteGetter<CMSRAID_LDInfoGetter>("logical drives", CONTROLLER);
    WriteGetter<CMSRAID_PDInfoGetter>("physical drives", CONTROLLER);
    WriteGetter<CMSRAID_PDSMInfoGetter>("one drive", CONTROLLER, ENCLOSURE, SLOT);
    WriteGetter<CMSRAID_PCIeSSDInfoGetter>("SSDs");
    WriteCounts();
    WriteVersion();
}

void WriteUtilityReport(const std::string& text) {
    LetUtilityPrint({MEGACLI, text});
    Write("MegaCli", CMSRAID_MegaStorCLI::IsPresentRAIDPhysDisk({{"VEN_8086", "DEV_0000"}}));
    LetUtilityPrint({STORCLI, text});
    Write("storcli", CMSRAID_MegaStorCLI::IsPresentRAIDPhysDisk({{"VEN_1000", "DEV_005D"}}));
}

void WriteDeviceList(const std::string& text) {
    WriteServerFile(DEVICE_LIST, text);
    std::list<std::string> devices;
    CMSRAID_PCICard::GetPresentPCIList(&devices);
    for (const std::string& device : devices) {
        Write("device", device);
    }
}

void WriteIniFile(const std::string& text) {
    WriteServerFile(INI_FILE, text);
    const long count = GetPrivateProfileIntA("SuportDevice", "SuportDeviceNum", 7, INI_FILE);
    Write("device count", count);
    if (count > MOST_DEVICES) {
        return;
    }
    std::list<DevicePCIID> devices;
    std::string path = INI_FILE;
    CMSRAID_PCICard::GetSupportPCIListFromIniFile(path, &devices);
    for (const DevicePCIID& device : devices) {
        Write("supported", device.vendor + " " + device.device);
    }
}

void WriteItemList(const std::string& text) {
    CItemListOwner items;
    ReadItems(text, items);
    WriteItems(items);
}

void WriteNumbers(const std::string& text) {
    Write("upper case", CStringUtil::StringToUpperCase(text));
    Write("number", CStringUtil::TStringToNumber(text));
    for (const std::string& part : CStringUtil::SplitByDot(text)) {
        Write("part", part);
    }
}

void WriteReaders(const std::string& text) {
    WriteReport(text);
    WriteUtilityReport(text);
    WriteDeviceList(text);
    WriteIniFile(text);
    WriteItemList(text);
    WriteDecodedForm(text);
    WriteNumbers(text);
}

std::vector<fs::path> FilesBelow(const fs::path& directory) {
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(directory)) {
        if (entry.is_regular_file()) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace

int main(int argc, char** argv) {
    LLVMFuzzerInitialize(&argc, &argv);
    Demand(argc > 2, "output and directories are given");
    g_Output.open(argv[1], std::ios::binary | std::ios::trunc);
    for (int i = 2; i < argc; ++i) {
        for (const fs::path& path : FilesBelow(argv[i])) {
            std::ifstream file(path, std::ios::binary);
            Demand(file.is_open(), "the file can be read", path.string());
            Write("FILE", path.string());
            WriteReaders({std::istreambuf_iterator<char>(file), {}});
        }
    }
    g_Output.close();
    return g_Output ? EXIT_SUCCESS : EXIT_FAILURE;
}
