// The fixed paths and the defaults of the library's configuration.
#ifndef QOR_COMLIB_CONFIGURATION_H
#define QOR_COMLIB_CONFIGURATION_H

namespace comlib {

inline constexpr const char* CONFIGURATION_FILE = "/etc/opt/tarmica/qor/comlib.ini";
inline constexpr const char* DEFAULT_INSTALL_PATH = "/opt/tarmica/qor/provider";
inline constexpr const char* DEFAULT_TRACE_FILE = "/var/opt/tarmica/qor/log/trace.log";

}  // namespace comlib

#endif  // QOR_COMLIB_CONFIGURATION_H
