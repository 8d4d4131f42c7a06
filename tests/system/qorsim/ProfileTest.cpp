// Host profiles: what is accepted, and how a mistake is reported.
#include <gmock/gmock.h>

#include <filesystem>

#include "SimFixture.h"

namespace fs = std::filesystem;

namespace qortest {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::StartsWith;

class CProfileTest : public CSimFixture {
protected:
    // Demands that a host is refused with exactly this reason.
    static void ExpectRefused(const std::string& path, const std::string& reason) {
        const CEnd end = RunOn(path, {"true"});
        EXPECT_EQ(end.status, 125);
        EXPECT_EQ(end.out, "");
        EXPECT_EQ(end.err, "qorsim: " + path + ": " + reason + "\n");
    }

    std::string WriteText(const std::string& text) const {
        const fs::path path = Folder() / "host.json";
        WriteFile(path, text);
        return path;
    }
};

TEST_F(CProfileTest, ShippedHostsAreAccepted) {
    for (const std::string& name : ShippedHosts()) {
        const CEnd end = RunOn(name, {"true"});
        EXPECT_EQ(end.status, 0) << end.err;
    }
}

TEST_F(CProfileTest, ProfileNestedTooDeepIsRefused) {
    ExpectRefused(WriteText(std::string(100000, '[')), "must not be nested deeper than 64 levels");
}

TEST_F(CProfileTest, ToolVersionIsEnough) {
    EXPECT_EQ(RunOn(WriteText(R"({"tool": {"version": "1.0"}})"), {"true"}).status, 0);
}

TEST_F(CProfileTest, SyntaxErrorIsReportedWithItsPlace) {
    const std::string text = "{\n  \"tool\": {,}\n}\n";
    EXPECT_THAT(JsonProblem(text), StartsWith("parse error at line 2, column 12: "));
    ExpectRefused(WriteText(text), JsonProblem(text));
}

TEST_F(CProfileTest, EmptyFileIsReported) {
    EXPECT_THAT(JsonProblem(""), StartsWith("parse error at line 1, column 1: "));
    ExpectRefused(WriteText(""), JsonProblem(""));
}

struct CMistake {
    const char* pointer;  // of the value that is set in the small host's profile
    json value;
    const char* reason;
};

TEST_F(CProfileTest, EveryMistakeIsReportedWithPlaceAndReason) {
    const CMistake mistakes[] = {
        {"", json::array(), "/: must be an object, is array"},
        {"/controler", 1,
         "/: unknown key \"controler\" (known: $schema, description, extends, patch, "
         "events, tool, pciDevices, driveModels, controllers, pcieSsds)"},
        {"/tool", "7.0", "/tool: must be an object, is string"},
        {"/tool/version", 7.0, "/tool/version: must be a string, is number"},
        {"/tool/version", "7\n0", "/tool/version: must not hold control characters"},
        {"/tool/version", std::string(1001, '7'),
         "/tool/version: must not be longer than 1000 bytes"},
        {"/description", 7, "/description: must be a string, is number"},
        {"/tool/additions", json::array({{{"report", "version"}}}),
         "/tool/additions/0/report: must be one of ctrlinfo, ldpdinfo, pdinfo, pssdinfo, is "
         "\"version\""},
        {"/tool/additions",
         json::array({{{"report", "pdinfo"}, {"section", "New"}, {"keys", {{"Key", 1}}}}}),
         "/tool/additions/0/keys/Key: must be a string, is number"},
        {"/tool/missing", "krzcli", "/tool/missing: must be an array, is string"},
        {"/tool/missing",
         {"krzcli", "megacli"},
         "/tool/missing/1: must be one of krzcli, MegaCli, storcli, is \"megacli\""},
        {"/pciDevices/1/vendor", "1AED",
         "/pciDevices/1/vendor: must have the form of 4 lower-case hexadecimal digits, is "
         "\"1AED\""},
        {"/pciDevices/1/address", "0000:03:00.0",
         "/pciDevices/1/address: must have the form BB:DD.F in lower-case hexadecimal digits, is "
         "\"0000:03:00.0\""},
        {"/pciDevices/1/revision", "2",
         "/pciDevices/1/revision: must have the form of 2 lower-case hexadecimal digits, is "
         "\"2\""},
        {"/driveModels", json::array(), "/driveModels: must be an object, is array"},
        {"/driveModels/a~1b~0c",
         {{"interface", "SAS"}},
         "/driveModels/a~1b~0c: \"media\" is missing"},
        {"/driveModels/sas-600/interface", "NVMe",
         "/driveModels/sas-600/interface: must be one of SAS, SATA, is \"NVMe\""},
        {"/driveModels/sas-600/smart/0/id", 1,
         "/driveModels/sas-600/smart/0: unknown key \"id\" (known: head, name, value, threshold)"},
        {"/driveModels/sas-600/smart/2/head", "Read",
         "/driveModels/sas-600/smart/2/head: must have the form [Head...], is \"Read\""},
        {"/driveModels/sata-2000/smart/0/id", 256,
         "/driveModels/sata-2000/smart/0/id: must be 1 to 255, is 256"},
        {"/driveModels/sata-2000/smart/0/name", "a name that is one character too long for",
         "/driveModels/sata-2000/smart/0/name: must have the form of 1 to 40 characters, is \"a "
         "name that is one character too long for\""},
        {"/driveModels/sata-2000/smart/0/value", "",
         "/driveModels/sata-2000/smart/0/value: must have the form of 1 to 15 characters that are "
         "no blanks, is \"\""},
        {"/driveModels/sata-2000/smart/0/threshold", "1 2",
         "/driveModels/sata-2000/smart/0/threshold: must have the form of 1 to 15 characters that "
         "are no blanks, is \"1 2\""},
        {"/controllers", json::object(), "/controllers: must be an array, is object"},
        {"/controllers/0/pci", "04:00.0",
         "/controllers/0/pci: \"pciDevices\" has no device at 04:00.0"},
        {"/controllers/0/sasAddress", "5003",
         "/controllers/0/sasAddress: must have the form of 16 lower-case hexadecimal digits, is "
         "\"5003\""},
        {"/controllers/0/memory", -1, "/controllers/0/memory: must be 0 to 4294967295, is -1"},
        {"/controllers/0/memory", 1.5, "/controllers/0/memory: must be a whole number, is number"},
        {"/controllers/0/ports", 18446744073709551615U,
         "/controllers/0/ports: must be 1 to 64, is 18446744073709551615"},
        {"/controllers/0/rates/rebuild", 101,
         "/controllers/0/rates/rebuild: must be 0 to 100, is 101"},
        {"/controllers/0/battery/charge", true,
         "/controllers/0/battery/charge: must be a whole number, is boolean"},
        {"/controllers/0/groups/0/name", "xRG0",
         "/controllers/0/groups/0/name: must have the form RGn, sRGn or scRGn, is \"xRG0\""},
        {"/controllers/0/groups/0/drives/1", 9,
         "/controllers/0/groups/0/drives/1: the controller has no drive 9"},
        {"/controllers/0/groups/1/lds/0/capacity", "4,0TB",
         "/controllers/0/groups/1/lds/0/capacity: must have the form of a text without commas, is "
         "\"4,0TB\""},
        {"/controllers/0/groups/1/lds/1/no", 0,
         "/controllers/0/groups/1/lds/1: the LD number occurs twice"},
        {"/controllers/0/groups/1/lds/1/cachedLds",
         {3},
         "/controllers/0: LD2 caches LD3, which the controller has not"},
        {"/controllers/0/drives/3/no", 2, "/controllers/0/drives/3: the drive number occurs twice"},
        {"/controllers/0/drives/3/slot", 2, "/controllers/0/drives/3: the slot occurs twice"},
        {"/controllers/0/drives/0/use", "LD",
         "/controllers/0/drives/0/use: must have the form LDn, GHS, DHS RGn, DHS sRGn, RLDn or "
         "Unassigned, is \"LD\""},
        {"/controllers/0/drives/0/model", "sas-900",
         "/controllers/0/drives/0/model: \"driveModels\" has no model \"sas-900\""},
        {"/controllers/0/drives/0/temperature", "31C",
         "/controllers/0/drives/0/temperature: must be a whole number, is string"},
        {"/controllers/0/drives/0/progress", 101,
         "/controllers/0/drives/0/progress: must be 0 to 100, is 101"},
        {"/controllers/0/drives/0/smart",
         {{"Humidity", "3"}},
         "/controllers/0/drives/0/smart: the drive's model has no SMART row \"Humidity\""},
        {"/pcieSsds",
         {{{"pci", "82:00.0"}}},
         "/pcieSsds/0/pci: \"pciDevices\" has no device at 82:00.0"},
    };
    for (const CMistake& mistake : mistakes) {
        json profile = ShippedProfile("small");
        profile[json::json_pointer(mistake.pointer)] = mistake.value;
        ExpectRefused(WriteProfile(profile), mistake.reason);
    }
}

// The objects that the schema describes and a place of each in the small host's profile.
TEST_F(CProfileTest, SchemaAndProgramKnowTheSameKeys) {
    const std::pair<const char*, const char*> places[] = {
        {"", ""},
        {"/$defs/tool", "/tool"},
        {"/$defs/addition", "/tool/additions/0"},
        {"/$defs/event", "/events/0"},
        {"/$defs/pciDevice", "/pciDevices/0"},
        {"/$defs/driveModel", "/driveModels/sas-600"},
        {"/$defs/sataRow", "/driveModels/sata-2000/smart/0"},
        {"/$defs/sasRow", "/driveModels/sas-600/smart/0"},
        {"/$defs/controller", "/controllers/0"},
        {"/$defs/firmware", "/controllers/0/firmware"},
        {"/$defs/rates", "/controllers/0/rates"},
        {"/$defs/battery", "/controllers/0/battery"},
        {"/$defs/group", "/controllers/0/groups/0"},
        {"/$defs/logicalDrive", "/controllers/0/groups/0/lds/0"},
        {"/$defs/drive", "/controllers/0/drives/0"},
        {"/$defs/pcieSsd", "/pcieSsds/0"},
    };
    const json schema = ShippedProfile("host.schema");
    for (const auto& [definition, place] : places) {
        json profile = ShippedProfile("small");
        profile[json::json_pointer(std::string(place) + "/nonsense")] = 1;
        const std::string message = RunOn(WriteProfile(profile), {"true"}).err;
        const size_t begin = message.find("(known: ");
        ASSERT_NE(begin, std::string::npos) << message;
        std::string known = ", " + message.substr(begin + 8);
        known.replace(known.find(")\n"), 2, ", ");
        size_t count = 0;
        for (const auto& [key, value] :
             schema.at(json::json_pointer(std::string(definition) + "/properties")).items()) {
            EXPECT_THAT(known, HasSubstr(", " + key + ", ")) << definition;
            ++count;
        }
        EXPECT_EQ(std::count(known.begin(), known.end(), ','), static_cast<long>(count) + 1)
            << definition << " lacks some of " << known;
    }
}

// What the schema calls required is missed, at the place where it is missing.
TEST_F(CProfileTest, RequiredKeysAreMissed) {
    const json schema = ShippedProfile("host.schema");
    const std::pair<const char*, const char*> places[] = {
        {"tool", "/tool"},
        {"pciDevice", "/pciDevices/1"},
        {"driveModel", "/driveModels/sas-600"},
        {"controller", "/controllers/0"},
        {"drive", "/controllers/0/drives/0"},
        {"group", "/controllers/0/groups/0"},
        {"logicalDrive", "/controllers/0/groups/0/lds/0"},
    };
    for (const auto& [definition, place] : places) {
        for (const json& key : schema["$defs"][definition]["required"]) {
            json profile = ShippedProfile("small");
            profile[json::json_pointer(place)].erase(key.get<std::string>());
            ExpectRefused(WriteProfile(profile),
                          place + (": \"" + key.get<std::string>()) + "\" is missing");
        }
    }
}

}  // namespace
}  // namespace qortest
