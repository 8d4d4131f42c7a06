#include "Request.h"

#include <filesystem>

#include "ItemText.h"
#include "PrivateServerTest.h"

namespace fs = std::filesystem;

namespace qortest {
namespace {

constexpr const char* TOOL = "/opt/tarmica/krz/cli/krzcli";
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

void WriteTool() {
    const std::string groups = "RG0\nRG No. : RG0\n\n>>PD5 (252:5)\nSlot : 5\n";
    CQuickTool tool;
    tool.Answer("-v", "Product Version : 7.0\n");
    tool.Answer("-ctrlinfo -aAll", "RAID Controller : 0\n");
    tool.Answer("-ctrlinfo -a0",
                "RAID Controller : 0\n\n### General Information ###\n"
                "Product Name : A controller with a long name\n");
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
    unsigned long status = 0;
    outcome.result = plugin.KRZExecCli("krzcli -v", &status, EXEC_RESULT);
}

}  // namespace

std::string Content(const COutcome& outcome) {
    return ItemText(outcome.items) + outcome.text;
}

std::string Verdict(const COutcome& outcome) {
    return std::to_string(outcome.result) + "/" + outcome.errorCode + "/" + outcome.noticeCode;
}

void LayOutServer(int traceLevels) {
    WriteFile(std::string(INSTALL_DIR) + "/RaidVCFac.ini",
              "[SuportDevice]\nSuportDeviceNum=1\nVendor1=VEN_1000\nDevice1=DEV_005D\n");
    WriteFile(DEVICE_LIST, "02:00.0_1000:005d_0000_02\n03:00.0_1aed:2001_0000_00\n");
    WriteFile("/etc/opt/tarmica/qor/comlib.ini",
              "[Trace]\nSink=file\nLevels=" + std::to_string(traceLevels) +
                  "\nFile=/opt/tarmica/trace.log\n");
    WriteTool();
    WriteUtility();
    // What the list is made of where it is not seen for a moment.
    WriteDevice("0000:02:00.0", "0x1000", "0x005d");
    WriteDevice("0000:03:00.0", "0x1aed", "0x2001");
}

// The tool that is not seen for a moment counts as not installed: 02.
const std::vector<CRequest>& Requests() {
    static const std::vector<CRequest> requests = {
        {"GetStorageInfo",
         Nothing,
         AskStorage,
         {"0/01/", "0/01/01", "0/02/", "0/02/01", "0/02/02", "0/03/", "0/03/01"},
         {"1//", "1//01", "1/02/02"},
         7},
        {"GetPDInfo", Nothing, AskDrive, {"0/01/", "0/02/", "0/03/"}, {"1//"}, 3},
        {"GetCtrlPDInfoBinaryString",
         Nothing,
         AskForm,
         {"0/01/", "0/01/01", "0/02/", "0/02/01", "0/03/", "0/03/01"},
         {"1//", "1//01", "1/02/02"},
         7},
        {"KRZExecCli", Nothing, AskExec, {"1//", "2//", "3//"}, {"0//"}, 1},
        {"GetRAIDInfoWithoutToolAndDeviceList",
         RemoveToolAndDeviceList,
         AskRaid,
         {"0/02/"},
         {"1//", "1/02/02"},
         1},
        {"XmlSerialize", Nothing, AskXml, {}, {"0//"}, 1},
    };
    return requests;
}

}  // namespace qortest
