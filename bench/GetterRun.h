// A getter run on a report that is there already, without the tool.
#ifndef QORBENCH_GETTERRUN_H
#define QORBENCH_GETTERRUN_H

#include "ReportWriter.h"
#include "base/ItemList.h"

extern "C" {

// Appends the items of the report at `path` to `out`; false if the getter rejected it.
__attribute__((visibility("default"))) bool QorBenchParse(qorbench::EReport kind, const char* path,
                                                          ItemList* out);
// The items are freed by the code that made them.
__attribute__((visibility("default"))) void QorBenchFree(ItemList* items);

}  // extern "C"

#endif  // QORBENCH_GETTERRUN_H
