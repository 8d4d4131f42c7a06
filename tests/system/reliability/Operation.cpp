// A host of one request: loads the plug-in, calls one operation, and says in one line what came
// back:
//
//     operation PLUGIN GetRAIDInfo|GetStorageInfo|GetPDInfo
#include <dlfcn.h>

#include <cstdio>
#include <list>
#include <stdexcept>
#include <string>
#include <string_view>

#include "plugin/ItemDisp.h"
#include "plugin/MngSrv_QorLibIF.h"

namespace {

// The first drive of the simulated server.
constexpr long CONTROLLER = 0;
constexpr long ENCLOSURE = 252;
constexpr long SLOT = 0;

struct CAnswer {
    bool succeeded = false;
    std::list<CItemDisp*> items;
    std::string errorCode;
    std::string noticeCode;
    std::string errorDetail;
};

void Ask(CMngSrv_QorLibIF& object, std::string_view operation, CAnswer& answer) {
    std::string& error = answer.errorCode;
    std::string& notice = answer.noticeCode;
    std::string& detail = answer.errorDetail;
    if (operation == "GetRAIDInfo") {
        answer.succeeded = object.GetRAIDInfo(&answer.items, &error, &notice, &detail) != 0;
    } else if (operation == "GetStorageInfo") {
        answer.succeeded = object.GetStorageInfo(&answer.items, &error, &notice, &detail) != 0;
    } else if (operation == "GetPDInfo") {
        answer.succeeded = object.GetPDInfo(CONTROLLER, ENCLOSURE, SLOT, &answer.items, &error,
                                            &notice, &detail) != 0;
    }
}

void Tell(const CAnswer& answer) {
    std::string text = answer.succeeded ? "success" : "failure";
    if (answer.succeeded || !answer.items.empty()) {
        text += ", " + std::to_string(answer.items.size()) + " items";
    }
    if (!answer.errorCode.empty()) {
        text += ", error `" + answer.errorCode + "`";
    }
    if (!answer.noticeCode.empty()) {
        text += ", notice `" + answer.noticeCode + "`";
    }
    if (answer.errorDetail.empty()) {
        text += ", empty detail";
    } else if (answer.errorDetail != "none") {
        text += ", `" + answer.errorDetail + "`";
    }
    std::puts(text.c_str());
}

void AskAndTell(CMngSrv_QorLibIF& object, std::string_view operation) {
    CAnswer answer;
    try {
        Ask(object, operation, answer);
        Tell(answer);
    } catch (const std::out_of_range&) {
        std::puts("`std::out_of_range`");  // of what the header names
    }
    object.FreeItemList(&answer.items);
}

}  // namespace

int main(int argc, char** argv) {
    void* const library = argc == 3 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : nullptr;
    if (library == nullptr) {
        std::fputs("usage: operation PLUGIN OPERATION\n", stderr);
        return 1;
    }
    const auto create = reinterpret_cast<void* (*)()>(dlsym(library, "CreateLibIF"));
    const auto destroy = reinterpret_cast<void (*)(void*)>(dlsym(library, "DeleteLibIF"));
    void* const object = create();
    AskAndTell(*static_cast<CMngSrv_QorLibIF*>(object), argv[2]);
    destroy(object);
    return 0;  // the library stays loaded, so that a leak is reported with its place
}
