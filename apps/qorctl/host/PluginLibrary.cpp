#include "host/PluginLibrary.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace fs = std::filesystem;

namespace qorctl {
namespace {

constexpr const char* LIBRARY_NAME = "libqor_MngSrv_QorLib.so";
constexpr std::string_view MULTIARCH = QORCTL_MULTIARCH;  // "x86_64-linux-gnu", or empty

// A path with a slash, so that the loader takes it as a file and does not search for it.
std::string AsFile(const std::string& path) {
    std::error_code error;
    const fs::path absolute = fs::absolute(path, error);
    return error ? "./" + path : absolute.string();
}

std::vector<fs::path> PlacesBesideProgram() {
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    if (error) {
        return {};
    }
    const fs::path own = program.parent_path();
    const fs::path prefix = own.parent_path();
    // Each family of systems has its own name for the folder.
    std::vector<fs::path> folders = {prefix / "lib"};
    if (!MULTIARCH.empty()) {
        folders.push_back(prefix / "lib" / MULTIARCH);
    }
    folders.push_back(prefix / "lib64");
    // An installation has the libraries in a private folder there; a build has them there.
    std::vector<fs::path> places;
    for (const char* inside : {"qor", ""}) {
        for (const fs::path& folder : folders) {
            places.push_back(folder / inside / LIBRARY_NAME);
        }
    }
    places.push_back(own / LIBRARY_NAME);
    return places;
}

// The file that the user names, or an empty text.
std::string FileOfUser(const std::string& path) {
    if (!path.empty()) {
        return AsFile(path);
    }
    const char* variable = secure_getenv("QOR_PLUGIN");
    return variable == nullptr || *variable == '\0' ? "" : AsFile(variable);
}

void AddTried(std::string& tried, const std::string& name, const std::string& reason) {
    tried += "  " + name + ": " + reason + "\n";
}

// The loader begins its messages with the name that it was given, which the caller states anyway.
std::string LoaderMessage(const std::string& name) {
    const char* message = dlerror();
    std::string text = message == nullptr ? "unknown reason" : message;
    return text.starts_with(name + ": ") ? text.substr(name.size() + 2) : text;
}

// What the loader is to open; the places that were looked at in vain are added to `tried`.
std::string FindLibrary(const std::string& path, std::string& tried) {
    std::string name = FileOfUser(path);
    if (!name.empty()) {
        return name;
    }
    for (const fs::path& place : PlacesBesideProgram()) {
        std::error_code error;
        if (fs::exists(place, error)) {
            return place.string();
        }
        AddTried(tried, place.string(), "no such file");
    }
    return LIBRARY_NAME;
}

}  // namespace

std::optional<CPluginLibrary> CPluginLibrary::Load(const std::string& path, std::string& problem) {
    std::string tried;
    const std::string name = FindLibrary(path, tried);
    std::string reason;
    std::optional<CPluginLibrary> library = Open(name, reason);
    if (!library) {
        AddTried(tried, name, reason);
        problem = "the plug-in could not be loaded; tried:\n" + tried +
                  "Name the plug-in with --plugin PATH or the environment variable QOR_PLUGIN.";
    }
    return library;
}

std::string CPluginLibrary::Locate(const std::string& path) {
    std::string tried;
    return FindLibrary(path, tried);
}

std::optional<CPluginLibrary> CPluginLibrary::Open(const std::string& name, std::string& reason) {
    void* handle = dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        reason = LoaderMessage(name);
        return std::nullopt;
    }
    CPluginLibrary library(handle);
    if (!library.ResolveExports(reason)) {
        return std::nullopt;
    }
    return library;
}

// All four are demanded, also those that are not called here: a library without them is not the
// plug-in that it claims to be.
bool CPluginLibrary::ResolveExports(std::string& reason) {
    for (const char* symbol : PLUGIN_EXPORTS) {
        if (Symbol(symbol) == nullptr) {
            reason = std::string("not the plug-in, it does not export ") + symbol;
            return false;
        }
    }
    m_Create = reinterpret_cast<decltype(m_Create)>(Symbol("CreateLibIF"));
    m_Delete = reinterpret_cast<decltype(m_Delete)>(Symbol("DeleteLibIF"));
    return true;
}

CPluginLibrary::CPluginLibrary(CPluginLibrary&& other) noexcept
    : m_Handle(std::exchange(other.m_Handle, nullptr)),
      m_Create(other.m_Create),
      m_Delete(other.m_Delete) {}

CPluginLibrary::~CPluginLibrary() {
    if (m_Handle != nullptr) {
        dlclose(m_Handle);
    }
}

void* CPluginLibrary::Symbol(const char* symbol) const {
    return dlsym(m_Handle, symbol);
}

CMngSrv_QorLibIF* CPluginLibrary::Create() const {
    return static_cast<CMngSrv_QorLibIF*>(m_Create());
}

void CPluginLibrary::Delete(CMngSrv_QorLibIF* object) const {
    m_Delete(object);
}

}  // namespace qorctl
