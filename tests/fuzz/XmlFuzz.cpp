// XmlSerialize() of arbitrary item lists.
#include "Depth.h"
#include "Fuzz.h"
#include "ItemListInput.h"
#include "ItemProperties.h"

namespace {

using namespace qorfuzz;

void Fuzz(const std::string& text) {
    CItemListOwner items;
    qorfuzz::ReadItems(text, items);
    qorfuzz::DemandXml(items);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qorfuzz::FuzzInput(data, size, Fuzz);
    return 0;
}
