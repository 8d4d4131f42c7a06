#include "MemoryFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "util/Kernel.h"

// The linker's names of the calls that are redirected, and of what they were.
extern "C" {
int __real_open(const char* path, int flags, ...);
FILE* __real_fopen(const char* path, const char* mode);
int __real_fileno(FILE* file);
int __real_fclose(FILE* file);
ssize_t __real_read(int fd, void* buffer, size_t size);
ssize_t __real_pread(int fd, void* buffer, size_t size, off_t offset);
ssize_t __real_write(int fd, const void* text, size_t size);
off_t __real_lseek(int fd, off_t offset, int whence);
int __real_close(int fd);
int __real_unlink(const char* path);
int __real_mkdir(const char* path, mode_t mode);
bool __real__ZN4util9GetStatusEPKcR4stat(const char* path, struct stat& status);
bool __real__ZN4util9GetStatusEiR4stat(int fd, struct stat& status);

int __wrap_open(const char* path, int flags, ...);
FILE* __wrap_fopen(const char* path, const char* mode);
FILE* __wrap_fopen64(const char* path, const char* mode);
int __wrap_fileno(FILE* file);
int __wrap_fclose(FILE* file);
ssize_t __wrap_read(int fd, void* buffer, size_t size);
ssize_t __wrap_pread(int fd, void* buffer, size_t size, off_t offset);
ssize_t __wrap_write(int fd, const void* text, size_t size);
off_t __wrap_lseek(int fd, off_t offset, int whence);
off64_t __wrap_lseek64(int fd, off64_t offset, int whence);
int __wrap_close(int fd);
int __wrap_unlink(const char* path);
int __wrap_mkdir(const char* path, mode_t mode);
bool __wrap__ZN4util9GetStatusEPKcR4stat(const char* path, struct stat& status);
bool __wrap__ZN4util9GetStatusEiR4stat(int fd, struct stat& status);
}

namespace qorfuzz {
namespace {

constexpr int FIRST_DESCRIPTOR = 1'000'000'000;  // no process has so many
constexpr int WRITE_DESCRIPTOR = FIRST_DESCRIPTOR - 1;

constexpr size_t MOST_FOUND = 64;

struct CMemoryFile {
    std::string path;
    std::shared_ptr<const std::string> text;
    ino_t number = 0;
};

// One that is open.
struct CHandle {
    std::shared_ptr<const std::string> text;  // null: free
    ino_t number = 0;
    off64_t position = 0;
};

// All of them, and what is known of the real file system.
struct CFiles {
    bool inUse = false;
    std::vector<CMemoryFile> files;
    std::array<CHandle, 8> handles;
    std::set<std::string, std::less<>> directories;  // made

    std::map<std::string, std::pair<bool, struct stat>, std::less<>> found;
    std::string written;
    ino_t lastNumber = 0;

    CMemoryFile* Find(std::string_view path) {
        if (!inUse) {
            return nullptr;
        }
        const auto file = std::find_if(files.begin(), files.end(),
                                       [&](const CMemoryFile& each) { return each.path == path; });
        return file != files.end() ? &*file : nullptr;
    }

    CHandle* Handle(int fd) {
        const auto index = static_cast<size_t>(fd) - FIRST_DESCRIPTOR;
        return fd >= FIRST_DESCRIPTOR && index < handles.size() && handles[index].text != nullptr
                   ? &handles[index]
                   : nullptr;
    }

    // A stream of the C library for a memory file is the address of its handle.
    CHandle* Handle(const FILE* file) {
        const auto handle = std::find_if(handles.begin(), handles.end(), [&](const CHandle& each) {
            return static_cast<const void*>(&each) == file;
        });
        return handle != handles.end() ? &*handle : nullptr;
    }

    CHandle* Open(const CMemoryFile& file) {
        const auto handle = std::find_if(handles.begin(), handles.end(),
                                         [](const CHandle& each) { return each.text == nullptr; });
        if (handle == handles.end()) {
            errno = EMFILE;
            return nullptr;
        }
        *handle = {file.text, file.number, 0};
        return &*handle;
    }

    int DescriptorOf(const CHandle& handle) const {
        return FIRST_DESCRIPTOR + static_cast<int>(&handle - handles.data());
    }
};

CFiles& Files() {
    static CFiles files;
    return files;
}

ssize_t ReadAt(const CHandle& handle, void* buffer, size_t size, off64_t position) {
    const std::string& text = *handle.text;
    const size_t begin = std::min(static_cast<size_t>(position), text.size());
    const size_t count = std::min(size, text.size() - begin);
    std::memcpy(buffer, text.data() + begin, count);
    return static_cast<ssize_t>(count);
}

void Describe(const std::string& text, ino_t number, struct stat& status) {
    status = {};
    status.st_mode = S_IFREG | S_IRUSR | S_IWUSR;
    status.st_uid = geteuid();
    status.st_gid = getegid();
    status.st_nlink = 1;
    status.st_ino = number;
    status.st_size = static_cast<off_t>(text.size());
    status.st_mtim.tv_sec = 1;
    status.st_ctim.tv_sec = 1;
}

}  // namespace

void UseMemoryFiles(bool use) {
    CFiles& files = Files();
    files.inUse = use;
    files.directories.clear();
    files.found.clear();
}

void PutMemoryFile(const std::string& path, const std::string& text) {
    CFiles& files = Files();
    CMemoryFile* file = files.Find(path);
    if (file == nullptr) {
        file = &files.files.emplace_back();
        file->path = path;
    }
    file->text = std::make_shared<const std::string>(text);
    file->number = ++files.lastNumber;
}

size_t MemoryFilesBelow(const std::string& directory) {
    const std::vector<CMemoryFile>& files = Files().files;
    return static_cast<size_t>(std::count_if(
        files.begin(), files.end(),
        [&](const CMemoryFile& each) { return each.path.starts_with(directory + "/"); }));
}

size_t OpenMemoryFiles() {
    const auto& handles = Files().handles;
    return static_cast<size_t>(std::count_if(
        handles.begin(), handles.end(), [](const CHandle& each) { return each.text != nullptr; }));
}

int MemoryDescriptor() {
    return WRITE_DESCRIPTOR;
}

std::string TakeWritten() {
    return std::exchange(Files().written, {});
}

}  // namespace qorfuzz

using qorfuzz::Files;

int __wrap_open(const char* path, int flags, ...) {
    if (const qorfuzz::CMemoryFile* file = Files().Find(path); file != nullptr) {
        const qorfuzz::CHandle* handle = Files().Open(*file);
        return handle != nullptr ? Files().DescriptorOf(*handle) : -1;
    }
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return __real_open(path, flags, mode);
}

// The C++ library calls these two, or those with 64 in their names, as its version is.
FILE* __wrap_fopen(const char* path, const char* mode) {
    const qorfuzz::CMemoryFile* file = Files().Find(path);
    return file != nullptr ? static_cast<FILE*>(static_cast<void*>(Files().Open(*file)))
                           : __real_fopen(path, mode);
}

FILE* __wrap_fopen64(const char* path, const char* mode) {
    return __wrap_fopen(path, mode);
}

int __wrap_fileno(FILE* file) {
    const qorfuzz::CHandle* handle = Files().Handle(file);
    return handle != nullptr ? Files().DescriptorOf(*handle) : __real_fileno(file);
}

int __wrap_fclose(FILE* file) {
    if (qorfuzz::CHandle* handle = Files().Handle(file); handle != nullptr) {
        *handle = {};
        return 0;
    }
    return __real_fclose(file);
}

ssize_t __wrap_read(int fd, void* buffer, size_t size) {
    if (qorfuzz::CHandle* handle = Files().Handle(fd); handle != nullptr) {
        const ssize_t count = qorfuzz::ReadAt(*handle, buffer, size, handle->position);
        handle->position += count;
        return count;
    }
    return __real_read(fd, buffer, size);
}

ssize_t __wrap_pread(int fd, void* buffer, size_t size, off_t offset) {
    const qorfuzz::CHandle* handle = Files().Handle(fd);
    return handle != nullptr ? qorfuzz::ReadAt(*handle, buffer, size, offset)
                             : __real_pread(fd, buffer, size, offset);
}

ssize_t __wrap_write(int fd, const void* text, size_t size) {
    if (fd == qorfuzz::WRITE_DESCRIPTOR) {
        Files().written.append(static_cast<const char*>(text), size);
        return static_cast<ssize_t>(size);
    }
    return __real_write(fd, text, size);
}

off_t __wrap_lseek(int fd, off_t offset, int whence) {
    qorfuzz::CHandle* handle = Files().Handle(fd);
    if (handle == nullptr) {
        return __real_lseek(fd, offset, whence);
    }
    const off_t origin = whence == SEEK_SET   ? 0
                         : whence == SEEK_CUR ? handle->position
                                              : static_cast<off_t>(handle->text->size());
    if (origin + offset < 0) {
        errno = EINVAL;
        return -1;
    }
    handle->position = origin + offset;
    return handle->position;
}

off64_t __wrap_lseek64(int fd, off64_t offset, int whence) {
    return __wrap_lseek(fd, offset, whence);
}

int __wrap_close(int fd) {
    if (qorfuzz::CHandle* handle = Files().Handle(fd); handle != nullptr) {
        *handle = {};
        return 0;
    }
    return __real_close(fd);
}

int __wrap_unlink(const char* path) {
    auto& files = Files().files;
    if (const qorfuzz::CMemoryFile* file = Files().Find(path); file != nullptr) {
        files.erase(files.begin() + (file - files.data()));
        return 0;
    }
    return __real_unlink(path);
}

int __wrap_mkdir(const char* path, mode_t mode) {
    if (!Files().inUse) {
        return __real_mkdir(path, mode);
    }
    if (Files().directories.contains(std::string_view(path))) {
        return 0;
    }
    const int result = __real_mkdir(path, mode);
    if (result == 0 || errno == EEXIST) {
        Files().directories.emplace(path);
    }
    return result;
}

bool __wrap__ZN4util9GetStatusEPKcR4stat(const char* path, struct stat& status) {
    if (!Files().inUse) {
        return __real__ZN4util9GetStatusEPKcR4stat(path, status);
    }
    if (const qorfuzz::CMemoryFile* file = Files().Find(path); file != nullptr) {
        qorfuzz::Describe(*file->text, file->number, status);
        return true;
    }
    const auto known = Files().found.find(std::string_view(path));
    if (known == Files().found.end()) {
        const bool isThere = __real__ZN4util9GetStatusEPKcR4stat(path, status);
        if (Files().found.size() == qorfuzz::MOST_FOUND) {
            Files().found.clear();
        }
        Files().found.emplace(path, std::pair(isThere, status));
        return isThere;
    }
    status = known->second.second;
    return known->second.first;
}

bool __wrap__ZN4util9GetStatusEiR4stat(int fd, struct stat& status) {
    if (const qorfuzz::CHandle* handle = Files().Handle(fd); handle != nullptr) {
        qorfuzz::Describe(*handle->text, handle->number, status);
        return true;
    }
    return __real__ZN4util9GetStatusEiR4stat(fd, status);
}
