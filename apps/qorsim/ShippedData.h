// The files that are shipped with this program: host profiles and supported-device lists.
#ifndef QORSIM_SHIPPEDDATA_H
#define QORSIM_SHIPPEDDATA_H

#include <string>
#include <vector>

namespace qorsim {

// Where they are: "../share/qor" beside the program's folder, installed or built.
std::string DataDirectory();

// The names of the shipped host profiles, sorted.
std::vector<std::string> ShippedHosts();

// The path of the profile that a user named: a shipped name stands for its file; anything with a
// "/" or ending in ".json" is a path. An unknown name gives "" and `error` says which are known.
std::string FindProfile(const std::string& reference, std::string& error);

}  // namespace qorsim

#endif  // QORSIM_SHIPPEDDATA_H
