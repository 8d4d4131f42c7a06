#include "comlib/CIniCache.h"

#include <algorithm>
#include <array>
#include <memory>
#include <mutex>

#include "comlib/CIniFile.h"
#include "comlib/ForkLock.h"

namespace comlib {
namespace {

// Plain pointers and a mutex without a destructor: nothing here is destroyed at exit while another
// thread may still ask.
constinit std::mutex s_Mutex;
constinit std::array<CIniFile*, CIniCache::CAPACITY> s_Files = {};  // the last used one first

// The file at `path` as it is now, moved to the front; null if it is missing or unreadable.
const CIniFile* Current(const char* path) {
    const std::optional<CFileStamp> stamp = CFileStamp::Of(path);
    if (!stamp) {
        return nullptr;
    }
    // The file's own place, or the least recently used one.
    auto* const slot = std::find_if(s_Files.begin(), s_Files.end() - 1, [&](const CIniFile* file) {
        return file != nullptr && file->Path() == path;
    });
    if (*slot == nullptr || !(*slot)->IsCurrent(path, *stamp)) {
        std::unique_ptr<CIniFile> loaded = CIniFile::Load(path);
        if (loaded == nullptr) {
            return nullptr;
        }
        delete *slot;
        *slot = loaded.release();
    }
    std::rotate(s_Files.begin(), slot, slot + 1);
    return s_Files.front();
}

__attribute__((constructor)) void PrepareCacheForForks() {
    KeepFreeInForks<s_Mutex>();
}

__attribute__((destructor)) void ClearOnUnload() {
    CIniCache::Clear();
}

}  // namespace

std::optional<std::string> CIniCache::Find(const char* section, const char* key, const char* path) {
    const std::lock_guard<std::mutex> lock(s_Mutex);
    const CIniFile* file = Current(path);
    return file != nullptr ? file->Find(section, key) : std::nullopt;
}

void CIniCache::Clear() {
    const std::lock_guard<std::mutex> lock(s_Mutex);
    for (CIniFile*& file : s_Files) {
        delete file;
        file = nullptr;
    }
}

}  // namespace comlib
