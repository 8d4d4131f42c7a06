// The classes of the public headers that the plug-in's four functions hide behind void pointers:
// the ABI record takes their layout and their slots from here.
#include "plugin/ItemDisp.h"
#include "plugin/MngSrv_QorLibIF.h"

extern "C" {
__attribute__((visibility("default"))) void UsePlugin(CMngSrv_QorLibIF* /*object*/) {}
__attribute__((visibility("default"))) void UseItem(CItemDisp* /*item*/) {}
}
