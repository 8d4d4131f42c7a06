// A folder that holds files of somebody else, or is to hold this user's own among others'.
//
// Everything in it is reached beneath it: no path leads out of it, no symbolic link is followed on
// the way, nothing but a regular file is read or made, and nothing is waited for.
#ifndef QORSIM_FOLDER_H
#define QORSIM_FOLDER_H

#include <optional>
#include <string>
#include <utility>

#include "Files.h"
#include "util/UniqueFd.h"

namespace qorsim {

// Whether a text from somebody else names a file below a folder: plain names, with slashes between.
bool IsPathBelow(const std::string& text);

// A file below `folder`, not larger than `limit`. On failure returns nothing and `error` says why.
std::optional<std::string> ReadBeneath(const std::string& folder, const std::string& name,
                                       std::string& error, size_t limit = MAX_READ);

// A folder for new files, held open: what is done to its name afterwards changes nothing.
class CNewFolder {
public:
    // Makes the folder, or takes an empty one that belongs to this user and that nobody else may
    // write into.
    static std::optional<CNewFolder> Make(const std::string& path, std::string& error);

    // Makes a file where none of that name is; its folder, too, if there is one slash in the name.
    bool Write(const std::string& name, const std::string& text, std::string& error) const;

    // Makes it the working directory.
    bool Enter(std::string& error) const;

private:
    CNewFolder(std::string path, util::CUniqueFd fd)
        : m_Path(std::move(path)), m_Fd(std::move(fd)) {}

    std::string m_Path;
    util::CUniqueFd m_Fd;
};

}  // namespace qorsim

#endif  // QORSIM_FOLDER_H
