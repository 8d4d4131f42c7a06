// What a program prints is text: no part of it reaches a shell, and all of it reaches the host as
// it stands.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>

#include "ItemText.h"
#include "LoadedPluginFixture.h"
#include "Process.h"
#include "RepeatingTool.h"

namespace {

namespace fs = std::filesystem;
using qortest::CAnswer;
using qortest::CLoadedPlugin;

constexpr const char* MARKER = "/opt/tarmica/marker";
constexpr const char* REPORTS = "/opt/tarmica/reports/";
constexpr const char* UTILITY = "/opt/tarmica/qor/provider/RAID/tool/storcli";

// Each makes the marker where a shell meets it in one of the three contexts.
constexpr std::array<const char*, 8> TEXTS = {
    "$(touch /opt/tarmica/marker)",      "`touch /opt/tarmica/marker`",
    "; touch /opt/tarmica/marker ;",     "| touch /opt/tarmica/marker",
    "&& touch /opt/tarmica/marker",      "> /opt/tarmica/marker",
    "' ; touch /opt/tarmica/marker ; '", "\" ; touch /opt/tarmica/marker ; \"",
};
constexpr std::array<const char*, 3> CONTEXTS = {"true @", "true '@'", "true \"@\""};

// What is printed for which arguments. "@" stands for the text; one line is a command as it stands,
// which a shell meets behind the line feed.
constexpr std::array<std::pair<const char*, const char*>, 7> REPORT_TEXTS = {{
    {"-v", "@\ntouch /opt/tarmica/marker\nProduct Version : 7.0@\n"},
    {"-ctrlinfo -aAll", "RAID Controller : 0@\n@\ntouch /opt/tarmica/marker\n"},
    {"-ctrlinfo -a0", R"(RAID Controller : @

### General Information ###
@
touch /opt/tarmica/marker
Product Name : @
@ : @

### @ ###
Key : @

### Firmware/BIOS/Driver Information ###
Firmware Version : @
)"},
    {"-ldpdinfo -a0", R"(RG0 @
RG No. : RG0 @
RAID Level : @

>LD0 (@, @, @)
### General Information ###
@
touch /opt/tarmica/marker
LD Type : @
@ : @

### LD Settings Information ###
Default Access Policy : @

>>PD0 (@)
Slot No. : @
)"},
    {"-pdinfo -nosmart -a0", R"(RAID Controller : @

PD0(LD0)
### General Information ###
@
touch /opt/tarmica/marker
Interface Type : @
PD Status : @
Power Status : @
@ : @

### Slot Information ###
Slot No. : @

PD1(DHS RG0 @)
### General Information ###
Product ID : @
)"},
    {"-pdinfo -pd[252:5] -a0", R"(PD0(LD0)
### General Information ###
Interface Type : SATA
Product ID : @

### SMART Information ###
Temperature : @
@
touch /opt/tarmica/marker

ID  Attribute                                Current  Threshold
--- ---------------------------------------- -------  ---------
1   @                                        100      16
)"},
    {"-pssdinfo -aAll", R"(Bus : @

### General Information ###
@
touch /opt/tarmica/marker
Product Name : @
@ : @

### @ ###
Key : @
)"},
}};

constexpr long PLACES_IN_ITEMS = 38;

std::string Filled(std::string form, const std::string& text) {
    for (size_t at = form.find('@'); at != std::string::npos;
         at = form.find('@', at + text.size())) {
        form.replace(at, 1, text);
    }
    return form;
}

class ShellSyntax : public qortest::CLoadedPluginFixture {
protected:
    void SetUp() override {
        CLoadedPluginFixture::SetUp();
        qortest::WriteFile(qortest::DEVICE_LIST,
                           "02:00.0_1000:005d_0000_02\n03:00.0_1aed:2001_0000_00\n");
    }

    static void WriteReports(const std::string& text) {
        for (const auto& [arguments, form] : REPORT_TEXTS) {
            qortest::WriteFile(REPORTS + std::string(arguments), Filled(form, text));
        }
    }

    static void ExpectAMarkerFromAShell(const std::string& text) {
        for (const char* context : CONTEXTS) {
            qortest::RunProgram({"sh", "-c", Filled(context, text)});
        }
        EXPECT_TRUE(fs::remove(MARKER)) << text << " is harmless";
    }

    static void ExpectNoMarker(const std::string& text) {
        EXPECT_FALSE(fs::remove(MARKER)) << text << " reached a shell";
    }

    // The items of everything that can be asked for.
    static std::string ItemsOf(const CLoadedPlugin& plugin) {
        std::string text;
        for (CAnswer answer : {GetStorageInfo(plugin), GetPDInfo(plugin)}) {
            EXPECT_EQ(answer.result, 1);
            text += qortest::ItemText(answer.items);
            plugin->FreeItemList(&answer.items);
        }
        return text;
    }

    static void ExpectFailure(const CLoadedPlugin& plugin, const std::string& errorCode,
                              const std::string& errorDetail) {
        const CAnswer answer = GetRAIDInfo(plugin);
        EXPECT_EQ(answer.result, 0);
        EXPECT_EQ(answer.errorCode, errorCode);
        EXPECT_EQ(answer.errorDetail, errorDetail);
    }
};

TEST_F(ShellSyntax, InReportsIsNeverRunAndReachesTheHostAsItStands) {
    const CLoadedPlugin plugin;
    qortest::WriteRepeatingTool();
    WriteReports("@");
    const std::string items = ItemsOf(plugin);
    EXPECT_EQ(std::count(items.begin(), items.end(), '@'), PLACES_IN_ITEMS) << items;
    for (const std::string text : TEXTS) {
        ExpectAMarkerFromAShell(text);
        WriteReports(text);
        EXPECT_EQ(ItemsOf(plugin), Filled(items, text));
        qortest::WriteFile(REPORTS + std::string("-ctrlinfo -aAll"), "Error - " + text + "\n");
        ExpectFailure(plugin, "01", "krzcli -ctrlinfo -aAll");
        ExpectNoMarker(text);
    }
}

TEST_F(ShellSyntax, InUtilityOutputIsNeverRun) {
    const CLoadedPlugin plugin;
    for (const std::string text : TEXTS) {
        qortest::WriteFile(REPORTS + std::string("disks"),
                           Filled("@\ntouch /opt/tarmica/marker\nPhysical Drives = 4@\n", text));
        qortest::WriteFile(UTILITY, "#!/bin/sh\nexec cat /opt/tarmica/reports/disks\n");
        fs::permissions(UTILITY, fs::perms::owner_all);
        ExpectFailure(plugin, "02", "none");
        ExpectNoMarker(text);
    }
}

}  // namespace
