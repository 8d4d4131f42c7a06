// The file tree of a simulated server.
#ifndef QORSIM_LAYOUT_H
#define QORSIM_LAYOUT_H

#include <optional>
#include <string>

#include "Host.h"

namespace qorsim {

// What a server is made of, read completely before the file system changes.
struct CServerSource {
    CHost host;
    std::string profile;      // the text of the effective profile
    std::string raidList;     // RaidVCFac.ini
    std::string pcieSsdList;  // PciessdVCFac.ini
};

// Reads the profile that a user named and the supported-device lists. On failure returns nothing
// and `error` says what is wrong, where, and what to do.
std::optional<CServerSource> LoadServer(const std::string& reference, std::string& error);

// Lays the server out under ROOT/opt/tarmica and ROOT/etc/opt/tarmica, which should be empty; the
// root "" is that of the file system. The server has been running for `seconds` then.
bool LayOutServer(const CServerSource& source, long seconds, const std::string& root,
                  std::string& error);

}  // namespace qorsim

#endif  // QORSIM_LAYOUT_H
