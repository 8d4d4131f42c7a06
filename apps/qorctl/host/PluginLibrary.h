// The plug-in library, loaded into this process.
//
// Owner: the object holds the library; its destructor unloads it. Nothing that comes from the
// plug-in, a thrown exception included, may be touched after that.
// Thread rule: one thread at a time.
#ifndef QORCTL_HOST_PLUGINLIBRARY_H
#define QORCTL_HOST_PLUGINLIBRARY_H

#include <array>
#include <optional>
#include <string>

#include "plugin/MngSrv_QorLibIF.h"

namespace qorctl {

// What every plug-in exports.
inline constexpr std::array<const char*, 4> PLUGIN_EXPORTS = {"CreateLibIF", "DeleteLibIF",
                                                              "CreateItemDisp", "DeleteItemDisp"};

class CPluginLibrary {
public:
    // Loads the plug-in. Where it is looked for, the first that applies:
    //   1. `path`, unless empty: that file only;
    //   2. the environment variable QOR_PLUGIN, unless empty: that file only;
    //   3. libqor_MngSrv_QorLib.so beside this program, in the folder "qor" of "../lib",
    //      "../lib/<multiarch>" and "../lib64", then in these three and in the program's own
    //      folder: the first that exists;
    //   4. the same name wherever the loader searches.
    // A library that exists but cannot be loaded or lacks one of the four exports ends the search.
    // On failure returns nothing and sets `problem` to a text of several lines: what was tried, and
    // why it did not do.
    static std::optional<CPluginLibrary> Load(const std::string& path, std::string& problem);

    // The file or the name that Load() hands to the loader for `path`.
    static std::string Locate(const std::string& path);

    CPluginLibrary(CPluginLibrary&& other) noexcept;
    ~CPluginLibrary();
    CPluginLibrary(const CPluginLibrary&) = delete;  // one owner of the loaded library
    CPluginLibrary& operator=(const CPluginLibrary&) = delete;
    CPluginLibrary& operator=(CPluginLibrary&&) = delete;

    // Makes the plug-in object; null if the plug-in made none. It must go back to Delete() before
    // the library is unloaded. Exceptions of the plug-in pass through.
    CMngSrv_QorLibIF* Create() const;

    // Ends an object made by Create(). Null is harmless.
    void Delete(CMngSrv_QorLibIF* object) const;

    // The address of `symbol` in the plug-in or in a library that it needs; null if there is none.
    void* Symbol(const char* symbol) const;

private:
    explicit CPluginLibrary(void* handle) : m_Handle(handle) {}

    static std::optional<CPluginLibrary> Open(const std::string& name, std::string& reason);
    bool ResolveExports(std::string& reason);

    void* m_Handle;
    decltype(&CreateLibIF) m_Create = nullptr;
    decltype(&DeleteLibIF) m_Delete = nullptr;
};

}  // namespace qorctl

#endif  // QORCTL_HOST_PLUGINLIBRARY_H
