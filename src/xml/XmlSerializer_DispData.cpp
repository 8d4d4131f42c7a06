#include "xml/XmlSerializer_DispData.h"

#include <iterator>
#include <utility>

CXmlSerializer_DispData::CXmlSerializer_DispData(std::string rootName, std::string component)
    : CXmlSerializer(std::move(rootName), std::move(component)), m_ItemElement("item", "") {}

CXmlSerializer_DispData::~CXmlSerializer_DispData() = default;

unsigned int CXmlSerializer_DispData::XmlSerialize(void* data, char** out) {
    auto* items = static_cast<std::list<CItemDisp*>*>(data);
    if (items == nullptr || *out != nullptr || items->empty()) {
        return RESULT_INVALID_ARGUMENT;
    }
    std::list<std::string> openParents;
    const CItemDisp* previous = nullptr;
    unsigned int index = 1;
    for (auto position = items->begin(); position != items->end(); ++position, ++index) {
        const unsigned int check = CheckInputData(*position, previous, &openParents);
        if (check != CHECK_OK) {
            return RESULT_MALFORMED_LIST | (check << 20U) | index;
        }
        const unsigned int result = AddItem(position, items, &openParents);
        if (result != RESULT_OK) {
            return result;
        }
        previous = *position;
    }
    return CXmlSerializer::XmlSerialize(data, out);
}

unsigned int CXmlSerializer_DispData::CheckInputData(
    const CItemDisp* item, const CItemDisp* previous,
    const std::list<std::string>* openParents) const {
    if (previous == nullptr && !item->ParentName().empty()) {
        return CHECK_OUT_OF_ORDER;
    }
    // Behind the first item no level is open only if the previous item's closing text did not find
    // this one's parent.
    if (previous != nullptr && openParents->empty() && item->ParentName() != previous->ItemName()) {
        return CHECK_OUT_OF_ORDER;
    }
    if (item->ItemName() == item->ParentName()) {
        return CHECK_OWN_PARENT;
    }
    if (item->Enable() != "TRUE" && item->Enable() != "FALSE") {
        return CHECK_ENABLE_FLAG;
    }
    return CHECK_OK;
}

std::string CXmlSerializer_DispData::CreateItem(CItemDisp item) const {
    std::string text;
    AppendItem(text, item);
    return text;
}

std::string CXmlSerializer_DispData::AddItemTag(CItemDisp item,
                                                std::list<CItemDisp*>::iterator position,
                                                std::list<CItemDisp*>* items,
                                                std::list<std::string>* openParents) const {
    std::string text;
    AppendItemTag(text, item, position, items, openParents);
    return text;
}

unsigned int CXmlSerializer_DispData::AddItem(std::list<CItemDisp*>::iterator position,
                                              std::list<CItemDisp*>* items,
                                              std::list<std::string>* openParents) {
    const CItemDisp& item = **position;
    if (openParents->empty() || openParents->back() != item.ParentName()) {
        openParents->push_back(item.ParentName());
    }
    std::string text;
    AppendItem(text, item);
    AppendItemTag(text, item, position, items, openParents);
    return AddXmlData(std::move(text));
}

void CXmlSerializer_DispData::AppendItem(std::string& text, const CItemDisp& item) const {
    m_ItemElement.AppendTag(text, CXmlElement::TAG_OPEN);
    CXmlElement::AppendElement(text, "name", item.ItemName());
    CXmlElement::AppendElement(text, "val", item.ItemValue());
    CXmlElement::AppendElement(text, "enbl", item.Enable());
}

void CXmlSerializer_DispData::AppendItemTag(std::string& text, const CItemDisp& item,
                                            std::list<CItemDisp*>::iterator position,
                                            std::list<CItemDisp*>* items,
                                            std::list<std::string>* openParents) const {
    if (*position == items->back()) {
        m_ItemElement.AppendTag(text, CXmlElement::TAG_EMPTY);
        CloseEveryLevel(text, openParents);
        return;
    }
    const CItemDisp& next = **std::next(position);
    if (next.ParentName() != item.ItemName()) {
        m_ItemElement.AppendTag(text, CXmlElement::TAG_EMPTY);
        CloseLevelsUpTo(text, next.ParentName(), openParents);
    }
}

void CXmlSerializer_DispData::CloseEveryLevel(std::string& text,
                                              std::list<std::string>* openParents) const {
    for (; !openParents->empty(); openParents->pop_back()) {
        m_ItemElement.AppendTag(text, CXmlElement::TAG_CLOSE);
    }
}

// The first closing tag ends the item itself, each further one an ancestor whose children have all
// been written.
void CXmlSerializer_DispData::CloseLevelsUpTo(std::string& text, const std::string& parentName,
                                              std::list<std::string>* openParents) const {
    for (; !openParents->empty(); openParents->pop_back()) {
        m_ItemElement.AppendTag(text, CXmlElement::TAG_CLOSE);
        if (openParents->back() == parentName) {
            return;
        }
    }
}
