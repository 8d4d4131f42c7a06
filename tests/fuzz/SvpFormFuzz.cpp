// The service-processor form of arbitrary item lists, and the reading of it.
#include "Fuzz.h"
#include "ItemListInput.h"
#include "ItemProperties.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CItemListOwner items;
    const std::string text = qorfuzz::InputText(data, size);
    qorfuzz::ReadItems(text, items);
    qorfuzz::DemandForm(items);
    return 0;
}
