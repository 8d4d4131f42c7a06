// A small host: loads the plug-in, asks it for the storage, prints the items, frees them.
#include <dlfcn.h>
#include <qor/ItemDisp.h>
#include <qor/MngSrv_QorLibIF.h>

#include <cstdio>
#include <list>
#include <string>

namespace {

int ShowStorage(CMngSrv_QorLibIF& plugin) {
    std::list<CItemDisp*> items;
    std::string errorCode, noticeCode, errorDetail;
    const bool success = plugin.GetStorageInfo(&items, &errorCode, &noticeCode, &errorDetail) != 0;
    for (const CItemDisp* item : items) {
        std::printf("%s | %s | %s\n", item->ParentName().c_str(), item->ItemName().c_str(),
                    item->ItemValue().c_str());
    }
    if (!success) {
        std::fprintf(stderr, "error %s, notice %s, %s\n", errorCode.c_str(), noticeCode.c_str(),
                     errorDetail.c_str());
    }
    plugin.FreeItemList(&items);
    return success ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    void* library = dlopen(argc > 1 ? argv[1] : QOR_PLUGIN, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    const auto create = reinterpret_cast<decltype(&CreateLibIF)>(dlsym(library, "CreateLibIF"));
    const auto destroy = reinterpret_cast<decltype(&DeleteLibIF)>(dlsym(library, "DeleteLibIF"));
    if (create == nullptr || destroy == nullptr) {
        std::fprintf(stderr, "this is not the plug-in\n");
        return 1;
    }
    void* object = create();
    const int status = ShowStorage(*static_cast<CMngSrv_QorLibIF*>(object));
    destroy(object);
    dlclose(library);
    return status;
}
