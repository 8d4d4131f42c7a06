// Where things stand on every server, whatever its configuration says.
#ifndef QOR_BASE_SERVERPATHS_H
#define QOR_BASE_SERVERPATHS_H

// The PCI devices of the host, as COsInfo::makeDeviceInfo() writes them.
inline constexpr const char* DEVICE_LIST_DIRECTORY = "/opt/tarmica/qor/kam/work";
inline constexpr const char* DEVICE_LIST_PATH = "/opt/tarmica/qor/kam/work/devices.tmp";

// The RAID tool.
inline constexpr const char* KRZ_CLI_DIRECTORY = "/opt/tarmica/krz/cli/";
inline constexpr const char* KRZ_CLI_PATH = "/opt/tarmica/krz/cli/krzcli";

// The working directory of the LSI utilities.
inline constexpr const char* UTILITY_WORK_DIRECTORY = "/opt/tarmica/qor/provider/RAID/tool";

// The reports of the RAID tool while a request runs: below the provider's install directory, each
// in a file of its own.
inline constexpr const char* PROVIDER_TMP_DIRECTORY = "tmp";
inline constexpr const char* RESULT_DIRECTORY_NAME = "MSRAID";
inline constexpr const char* RESULT_FILE_END = "MngSrvRaid.txt";

#endif  // QOR_BASE_SERVERPATHS_H
