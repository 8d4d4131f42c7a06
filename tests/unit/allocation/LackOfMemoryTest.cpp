// Every allocation of an operation fails once: the exception reaches the caller and nothing is
// left behind.
#include <gtest/gtest.h>

#include <functional>
#include <new>

#include "AllocationFault.h"
#include "ItemList.h"
#include "base/ItemList.h"
#include "plugin/SvpConversion.h"
#include "xml/MngSrv_QorLibMan.h"

namespace {

// Runs `operation` with its first, second, ... allocation failing until it succeeds; returns how
// often it failed.
int FailEveryAllocation(const std::function<void()>& operation) {
    for (int failures = 0;; ++failures) {
        const long before = qortest::LiveAllocations();
        bool failed = false;
        qortest::FailAllocationAfter(failures);
        try {
            operation();
        } catch (const std::bad_alloc&) {
            failed = true;
        }
        const bool pending = qortest::DisarmAllocationFault();
        EXPECT_NE(failed, pending) << "the failure was swallowed";
        EXPECT_EQ(qortest::LiveAllocations(), before) << "after " << failures << " allocations";
        if (pending) {
            return failures;
        }
    }
}

// Texts too long for a string's own buffer, so that each of them is an allocation.
qortest::CItemList ReportOfOneDrive() {
    qortest::CItemList list;
    const std::string general = "### General Information ###";
    const std::string value(40, 'v');
    list.Add("", "Controller Information");
    list.Add("Controller Information", general);
    list.Add(general, "Product Name", value);
    list.Add("", "Physical Drive Information");
    list.Add("Physical Drive Information", general);
    list.Add(general, "Raw Capacity", value);
    list.Add("", "Controller Information");
    list.Add("Controller Information", general);
    list.Add(general, "PCI Bus/Dev/Func", value);
    return list;
}

TEST(LackOfMemory, SerializationLeavesNothingBehind) {
    qortest::CItemList list = ReportOfOneDrive();
    const int failures = FailEveryAllocation([&list] {
        CMngSrv_QorLibMan manager;
        char* out = nullptr;
        manager.XmlSerialize(0, "a component text of some length", &list.items, &out);
    });
    EXPECT_GT(failures, 10);
}

TEST(LackOfMemory, AddingItemsLeavesNothingBehind) {
    const std::string text(40, 't');
    const int failures = FailEveryAllocation([&text] {
        CItemListOwner items;
        AddItem(items, text, text, text);
        InsertItem(items, items.begin(), text, text, text);
    });
    EXPECT_GT(failures, 7);
}

TEST(LackOfMemory, CreatingSerializersLeavesNothingBehind) {
    const int failures = FailEveryAllocation([] {
        CMngSrv_QorLibMan manager;
        for (int i = 0; i < 3; ++i) {
            manager.CreateXmlSerializer(0, "a component text of some length");
        }
    });
    EXPECT_GT(failures, 6);
}

TEST(LackOfMemory, ConversionLeavesNothingBehind) {
    qortest::CItemList list = ReportOfOneDrive();
    const int failures = FailEveryAllocation([&list] {
        CSvpPdInfoForm form;
        CSvpConversion::Convert(&form, list.items);
        form.SetDataSize();
        std::string digits;
        form.DumpMe(&digits);
    });
    EXPECT_GT(failures, 10);
}

}  // namespace
