#include "terminal/NamelessFile.h"

#include <fcntl.h>
#include <sys/mman.h>

#include <utility>

namespace qorctl {
namespace {

constexpr const char* FOLDER = "/var/tmp";
constexpr mode_t OWNER_ONLY = 0600;

}  // namespace

util::CUniqueFd OpenNamelessFile() {
    util::CUniqueFd file(open(FOLDER, O_TMPFILE | O_RDWR | O_CLOEXEC, OWNER_ONLY));
    return file.IsOpen() ? std::move(file) : util::CUniqueFd(memfd_create("qorctl", MFD_CLOEXEC));
}

}  // namespace qorctl
