// A library that can be loaded but has only three of the plug-in's four exports.
extern "C" {
__attribute__((visibility("default"))) void* CreateLibIF();
__attribute__((visibility("default"))) void DeleteLibIF(void* object);
__attribute__((visibility("default"))) void* CreateItemDisp();
}

void* CreateLibIF() {
    return nullptr;
}

void DeleteLibIF(void*) {}

void* CreateItemDisp() {
    return nullptr;
}
