// The configuration file and QOR_TRACE: where the trace goes, and the install path. The first line
// of the input is QOR_TRACE, the rest is the file.
#include <strings.h>

#include <climits>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "Depth.h"
#include "Fuzz.h"
#include "Server.h"
#include "comlib/CIniFile.h"
#include "comlib/CTraceSettings.h"
#include "plugin/ComLib.h"

namespace {

using namespace qorfuzz;
using comlib::CTraceSettings;
using comlib::ETraceSink;
using CValue = std::optional<std::string>;

constexpr const char* VARIABLE = "QOR_TRACE";

CValue SinkNamed(const std::string& text, ETraceSink& sink) {
    static constexpr std::pair<const char*, ETraceSink> NAMES[] = {{"syslog", ETraceSink::SYSLOG},
                                                                   {"file", ETraceSink::FILE},
                                                                   {"stderr", ETraceSink::STDERR},
                                                                   {"none", ETraceSink::NONE}};
    for (const auto& [name, value] : NAMES) {
        if (strcasecmp(name, text.c_str()) == 0 && text.size() == std::string_view(name).size()) {
            sink = value;
            return name;
        }
    }
    return std::nullopt;
}

// A decimal number below 2^31, with any zeros in front.
bool IsMask(const std::string& text) {
    if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) {
        return false;
    }
    const size_t first = std::min(text.find_first_not_of('0'), text.size());
    return text.size() - first <= 10 && std::strtoll(text.c_str() + first, nullptr, 10) <= INT_MAX;
}

unsigned MaskOf(const std::string& text) {
    return static_cast<unsigned>(std::strtoul(text.c_str(), nullptr, 10));
}

bool IsPath(const std::string& text) {
    return text.substr(0, 1) == "/" && text.size() < PATH_MAX;
}

void ReadFile(const comlib::CIniFile& file, CTraceSettings& settings) {
    if (const CValue sink = file.Find("Trace", "Sink");
        sink && !SinkNamed(*sink, settings.m_Sink)) {
        settings.m_Sink = ETraceSink::SYSLOG;
    }
    if (const CValue levels = file.Find("Trace", "Levels"); levels) {
        settings.m_Levels = IsMask(*levels) ? MaskOf(*levels) : CTraceSettings::DEFAULT_LEVELS;
    }
    if (const CValue path = file.Find("Trace", "File"); path) {
        settings.m_File = IsPath(*path) ? *path : comlib::DEFAULT_TRACE_FILE;
    }
}

// sink [ ":" levels ]  |  "file:" path [ ":" levels ]
void ReadVariable(std::string text, CTraceSettings& settings) {
    CTraceSettings told = settings;
    const size_t last = text.rfind(':');
    if (last != std::string::npos && IsMask(text.substr(last + 1))) {
        told.m_Levels = MaskOf(text.substr(last + 1));
        text.resize(last);
    }
    const size_t colon = text.find(':');
    const CValue sink = SinkNamed(text.substr(0, colon), told.m_Sink);
    if (!sink || (colon != std::string::npos && *sink != "file")) {
        return;
    }
    if (colon != std::string::npos) {
        told.m_File = text.substr(colon + 1);
        if (!IsPath(told.m_File)) {
            return;
        }
    }
    settings = told;
}

// The directory that the file names, without slashes at its end; empty where it is none.
void DemandInstallPath(const CValue& named) {
    const std::string path = CFileUtility::GetInstallPath(0);
    const std::string expected = named.value_or(comlib::DEFAULT_INSTALL_PATH);
    std::error_code error;
    const bool isDirectory =
        expected.starts_with('/') && std::filesystem::is_directory(expected.c_str(), error);
    const std::string bare = expected.substr(0, expected.find_last_not_of('/') + 1);
    Demand(path == (isDirectory ? bare : ""), "the install path is a directory", path);
}

void Fuzz(const std::string& text) {
    static const bool made = std::filesystem::create_directories("/etc/opt/tarmica/qor");
    static_cast<void>(made);
    const size_t end = std::min(text.find('\n'), text.size());
    const std::string variable = text.substr(0, end).c_str();
    WriteServerFile(comlib::CONFIGURATION_FILE, text.substr(std::min(end + 1, text.size())));
    setenv(VARIABLE, variable.c_str(), 1);
    CTraceSettings expected;
    const CLeavesNothing check;
    const auto file = comlib::CIniFile::Load(comlib::CONFIGURATION_FILE);
    if (file != nullptr) {
        ReadFile(*file, expected);
    }
    ReadVariable(variable, expected);
    const CTraceSettings settings = CTraceSettings::Read();
    Demand(settings == expected, "the settings are those of file and variable", settings.m_File);
    DemandInstallPath(file != nullptr ? file->Find("Install", "INSTALLPATH_CIM") : std::nullopt);
}

}  // namespace

std::vector<std::string_view> qorfuzz::Vocabulary() {
    return {"[Trace]",
            "[trace]",
            "[Install]",
            "Sink=file",
            "Sink=SYSLOG",
            "Sink = \"none\"",
            "Levels=31",
            "Levels=2147483648",
            "Levels=007",
            "File=/var/opt/tarmica/qor/log/trace.log",
            "File=trace.log",
            "INSTALLPATH_CIM=/opt/tarmica/qor/provider/",
            "INSTALLPATH_CIM=/",
            "INSTALLPATH_CIM=/opt/tarmica/krz/cli/krzcli",
            "file:/tmp/a:b:7",
            "file:/tmp/t.log",
            "file::3",
            "stderr:31",
            "stderr:",
            "NONE",
            ""};
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qorfuzz::FuzzInput(data, size, Fuzz);
    return 0;
}
