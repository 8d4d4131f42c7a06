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

#endif  // QOR_BASE_SERVERPATHS_H
