// Where things stand on a server that has the RAID tool.
#ifndef QORSIM_SERVERPATHS_H
#define QORSIM_SERVERPATHS_H

namespace qorsim {

inline constexpr const char* KRZ_CLI_DIR = "/opt/tarmica/krz/cli";
inline constexpr const char* KRZ_LIB_DIR = "/opt/tarmica/krz/lib";
inline constexpr const char* PROVIDER_DIR = "/opt/tarmica/qor/provider";
inline constexpr const char* UTILITY_DIR = "/opt/tarmica/qor/provider/RAID/tool";
inline constexpr const char* DEVICE_LIST = "/opt/tarmica/qor/kam/work/devices.tmp";
inline constexpr const char* CONFIG_DIR = "/etc/opt/tarmica/qor";

// The simulated server's own files: the program that the stand-in tools are, the profile that they
// read, and the second of the system's clock in which the server started.
inline constexpr const char* SIMULATOR = "/opt/tarmica/krz/qorsim";
inline constexpr const char* PROFILE_COPY = "/opt/tarmica/krz/host.json";
inline constexpr const char* START_TIME = "/opt/tarmica/krz/started";

}  // namespace qorsim

#endif  // QORSIM_SERVERPATHS_H
