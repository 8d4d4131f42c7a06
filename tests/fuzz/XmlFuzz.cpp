// XmlSerialize() of arbitrary item lists.
#include "Fuzz.h"
#include "ItemListInput.h"
#include "ItemProperties.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CItemListOwner items;
    const std::string text = qorfuzz::InputText(data, size);
    qorfuzz::ReadItems(text, items);
    qorfuzz::DemandXml(items);
    return 0;
}
