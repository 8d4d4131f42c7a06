#include "Request.h"

#include <filesystem>

#include "ItemText.h"
#include "PrivateServerFixture.h"

namespace fs = std::filesystem;

namespace qortest {
namespace {

constexpr const char* UTILITY = "/opt/tarmica/qor/provider/RAID/tool/storcli";

// A tool of one shell without further programs: hundreds of runs a second.
class CQuickTool {
public:
    void Answer(const std::string& arguments, const std::string& report) {
        m_Cases += "'" + arguments + "') printf '%s' '" + report + "' ;;\n";
    }
    void Write(const fs::path& path) const {
        WriteFile(path, "#!/bin/sh\ncase \"$*\" in\n" + m_Cases + "*) exit 97 ;;\nesac\n");
        fs::permissions(path, fs::perms(0755));
    }

private:
    std::string m_Cases;
};

void WriteTool(const std::string& version, const std::string& controller) {
    const std::string groups = "RG0\nRG No. : RG0\n\n>>PD5 (252:5)\nSlot : 5\n";
    CQuickTool tool;
    tool.Answer("-v", version);
    tool.Answer("-ctrlinfo -aAll", "RAID Controller : 0\n");
    tool.Answer("-ctrlinfo -a0", controller);
    tool.Answer("-ldpdinfo -a0", groups);
    const std::string drives =
        "PD5(LD0)\n### General Information ###\nPD Status : ONLINE\n"
        "Product ID : A drive with a long name\n";
    tool.Answer("-pdinfo -nosmart -a0", drives);
    tool.Answer("-pdinfo -a0", drives);  // what a tool of an unknown version is asked
    tool.Answer("-pdinfo -pd[252:5] -a0", Golden("smart/sata.txt"));
    tool.Answer("-pssdinfo -aAll",
                "Bus : 177\n\n### General Information ###\nStatus : Healthy\n"
                "Product Name : A solid state drive\n");
    tool.Write(TOOL);
}

constexpr const char* CONTROLLER_REPORT =
    "RAID Controller : 0\n\n### General Information ###\n"
    "Product Name : A controller with a long name\n";

void WriteUtility() {
    CQuickTool utility;
    utility.Answer("/call show", "Physical Drives = 4\n");
    utility.Write(UTILITY);
}

void WriteDevice(const std::string& name, const std::string& vendor, const std::string& device) {
    const fs::path directory = fs::path(PCI_BUS) / name;
    WriteFile(directory / "vendor", vendor + "\n");
    WriteFile(directory / "device", device + "\n");
    WriteFile(directory / "revision", "0x02\n");
}

void Nothing() {}

void RemoveToolAndDeviceList() {
    fs::remove(TOOL);
    fs::remove_all("/opt/tarmica/qor/kam");
}

// The tool tells of the error with exit status 0, in the first line of its report.
void LetControllerFail() {
    WriteTool(VERSION_REPORT, "Error - The controller does not answer\n");
}

void AskStorage(CMngSrv_QorLibIF& plugin, std::list<CItemDisp*>&, COutcome& outcome) {
    outcome.result = plugin.GetStorageInfo(&outcome.items, &outcome.errorCode, &outcome.noticeCode,
                                           &outcome.errorDetail);
}

void AskRaid(CMngSrv_QorLibIF& plugin, std::list<CItemDisp*>&, COutcome& outcome) {
    outcome.result = plugin.GetRAIDInfo(&outcome.items, &outcome.errorCode, &outcome.noticeCode,
                                        &outcome.errorDetail);
}

void AskDrive(CMngSrv_QorLibIF& plugin, std::list<CItemDisp*>&, COutcome& outcome) {
    outcome.result = plugin.GetPDInfo(0, 252, 5, &outcome.items, &outcome.errorCode,
                                      &outcome.noticeCode, &outcome.errorDetail);
}

void AskForm(CMngSrv_QorLibIF& plugin, std::list<CItemDisp*>&, COutcome& outcome) {
    outcome.result =
        plugin.GetCtrlPDInfoBinaryString(&outcome.text, &outcome.errorCode, &outcome.noticeCode);
}

void AskXml(CMngSrv_QorLibIF& plugin, std::list<CItemDisp*>& items, COutcome& outcome) {
    char* text = nullptr;
    outcome.result = plugin.XmlSerialize(0, "a component", &items, &text);
    outcome.text = text;
}

void AskExec(CMngSrv_QorLibIF& plugin, std::list<CItemDisp*>&, COutcome& outcome) {
    // The blanks make a trace line that does not fit on the stack.
    static const std::string command = "krzcli -v" + std::string(2000, ' ');
    unsigned long status = 0;
    outcome.result = plugin.KRZExecCli(command, &status, EXEC_RESULT);
    outcome.text = std::to_string(status);
}

}  // namespace

std::string Content(const COutcome& outcome) {
    return ItemText(outcome.items) + outcome.text;
}

std::string Verdict(const CRequest& request, const COutcome& outcome) {
    const std::string result = std::to_string(outcome.result);
    return request.texts == ETexts::NONE
               ? result
               : result + "/" + outcome.errorCode + "/" + outcome.noticeCode;
}

void LayOutServer(int traceLevels) {
    WriteFile(fs::path(INSTALL_DIR) / RAID_INI,
              "[SuportDevice]\nSuportDeviceNum=1\nVendor1=VEN_1000\nDevice1=DEV_005D\n");
    WriteFile(fs::path(INSTALL_DIR) / SSD_INI,
              "[SuportDevice]\nSuportDeviceNum=1\nVendor1=VEN_144D\nDevice1=DEV_A821\n");
    WriteFile(DEVICE_LIST, std::string(RAID_CARD) + SSD);
    WriteFile("/etc/opt/tarmica/qor/comlib.ini",
              "[Trace]\nSink=file\nLevels=" + std::to_string(traceLevels) +
                  "\nFile=/opt/tarmica/trace.log\n");
    WriteTool(VERSION_REPORT, CONTROLLER_REPORT);
    WriteUtility();
    // What the list is made of where it is not seen for a moment.
    WriteDevice("0000:02:00.0", "0x1000", "0x005d");
    WriteDevice("0000:03:00.0", "0x144d", "0xa821");
}

void HideVersion() {
    WriteTool("", CONTROLLER_REPORT);
}

// The tool that is not seen for a moment counts as not installed: 02.
const std::vector<CRequest>& Requests() {
    static const std::vector<CRequest> requests = {
        {"GetStorageInfo",
         ETexts::CODES_AND_DETAIL,
         Nothing,
         AskStorage,
         "1//",
         4,
         "",
         {"0/01/", "0/01/01", "0/02/", "0/02/01", "0/02/02", "0/03/", "0/03/01"},
         {"1//", "1//01", "1/02/02"},
         7},
        {"GetPDInfo",
         ETexts::CODES_AND_DETAIL,
         Nothing,
         AskDrive,
         "1//",
         1,
         "",
         {"0/01/", "0/02/", "0/03/"},
         {"1//"},
         3},
        {"GetCtrlPDInfoBinaryString",
         ETexts::CODES,
         Nothing,
         AskForm,
         "1//",
         2,
         "",
         {"0/01/", "0/01/01", "0/02/", "0/02/01", "0/03/", "0/03/01"},
         {"1//", "1//01", "1/02/02"},
         7},
        {"KRZExecCli",
         ETexts::NONE,
         Nothing,
         AskExec,
         "0",
         1,
         VERSION_REPORT,
         {"1", "2", "3"},
         {"0"},
         1},
        {"GetRAIDInfoWithoutToolAndDeviceList",
         ETexts::CODES_AND_DETAIL,
         RemoveToolAndDeviceList,
         AskRaid,
         "0/02/",
         2,
         "",
         {"0/02/"},
         {"1//", "1/02/02"},
         1},
        {"GetRAIDInfoOfFailingController",
         ETexts::CODES_AND_DETAIL,
         LetControllerFail,
         AskRaid,
         "0/01/",
         2,
         "",
         {"0/01/", "0/01/01", "0/02/", "0/02/01", "0/03/", "0/03/01"},
         {"1//", "1/02/02"},
         1},
        {"XmlSerialize", ETexts::NONE, Nothing, AskXml, "0", 1, "", {}, {"0"}, 1},
    };
    return requests;
}

}  // namespace qortest
