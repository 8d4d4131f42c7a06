#include "xml/XmlSerializer_DispData.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace {

// The tags of an element, written out once: a document has millions of them.
struct CTags {
    std::string_view open;
    std::string_view close;
    std::string_view empty;
};

constexpr std::string_view LEAF_MARK = "<item/>";
constexpr std::string_view ITEM_END = "</item>";
constexpr std::string_view LEAF_END = "<item/></item>";
constexpr CTags NAME = {"<item><name>", "</name>", "<item><name/>"};  // the first in every item
constexpr CTags VALUE = {"<val>", "</val>", "<val/>"};
constexpr CTags ENABLE = {"<enbl>", "</enbl>", "<enbl/>"};

// What stands around the two texts of nearly all items.
constexpr std::string_view BEFORE_NAME = "<item><name>";
constexpr std::string_view AFTER_NAME = "</name><val>";
constexpr std::string_view AFTER_VALUE = "</val><enbl>TRUE</enbl>";

void AppendElement(std::string& text, const CTags& tags, const std::string& value) {
    if (value.empty()) {
        text.append(tags.empty);
    } else {
        text.append(tags.open).append(value).append(tags.close);
    }
}

constexpr std::string::size_type TAGS_OF_ITEM =
    std::string_view("<item><name></name><val></val><enbl>TRUE</enbl><item/></item>").size();

constexpr std::string_view ENABLE_TRUE = "TRUE";
constexpr std::string_view ENABLE_FALSE = "FALSE";

// A text of usual length; a longer one says nothing about those of other items.
std::string::size_type UsualSize(const std::string& text) {
    constexpr std::string::size_type LONGEST_USUAL = 256;
    return std::min(text.size(), LONGEST_USUAL);
}

// About what the items take, a little more than less: the first ones stand for all. Where they do
// not, the document grows as any text does. (To look at all of them takes up to a third more time.)
std::string::size_type GuessedSize(const std::list<CItemDisp*>& items) {
    constexpr std::string::size_type SAMPLE = 64;
    constexpr std::string::size_type MOST = std::string::size_type{128} << 20U;
    const std::string::size_type sample = std::min(items.size(), SAMPLE);
    std::string::size_type size = 0;
    auto item = items.begin();
    for (std::string::size_type i = 0; i < sample; ++i, ++item) {
        size += UsualSize((*item)->ItemName()) + UsualSize((*item)->ItemValue());
    }
    const std::string::size_type average = size / sample + TAGS_OF_ITEM;
    return std::min(items.size(), MOST / (average + average / 8)) * (average + average / 8);
}

}  // namespace

CXmlSerializer_DispData::CXmlSerializer_DispData(std::string rootName, std::string component)
    : CXmlSerializer(std::move(rootName), std::move(component)) {}

CXmlSerializer_DispData::~CXmlSerializer_DispData() = default;

unsigned int CXmlSerializer_DispData::XmlSerialize(void* data, char** out) {
    auto* items = static_cast<std::list<CItemDisp*>*>(data);
    if (items == nullptr || *out != nullptr || items->empty()) {
        return RESULT_INVALID_ARGUMENT;
    }
    ReserveXmlData(GuessedSize(*items));
    std::list<std::string> openParents;
    const CItemDisp* previous = nullptr;
    bool isLevelOpen = false;
    unsigned int index = 1;
    for (auto position = items->begin(); position != items->end(); ++position, ++index) {
        const unsigned int check = CheckInputData(*position, previous, &openParents);
        if (check != CHECK_OK) {
            return RESULT_MALFORMED_LIST | (check << 20U) | index;
        }
        if (!isLevelOpen) {
            openParents.push_back((*position)->ParentName());
        }
        const unsigned int result = AddItem(position, items, &openParents, &isLevelOpen);
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
    const std::string_view enable = item->Enable();
    if (enable != ENABLE_TRUE && enable != ENABLE_FALSE) {
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
                                              std::list<std::string>* openParents,
                                              bool* isNextLevelOpen) {
    return AppendXmlData([&](std::string& text) {
        AppendItem(text, **position);
        *isNextLevelOpen = AppendItemTag(text, **position, position, items, openParents);
    });
}

void CXmlSerializer_DispData::AppendItem(std::string& text, const CItemDisp& item) {
    if (!item.ItemName().empty() && !item.ItemValue().empty() && item.Enable() == ENABLE_TRUE) {
        text.append(BEFORE_NAME).append(item.ItemName()).append(AFTER_NAME);
        text.append(item.ItemValue()).append(AFTER_VALUE);
        return;
    }
    AppendElement(text, NAME, item.ItemName());
    AppendElement(text, VALUE, item.ItemValue());
    AppendElement(text, ENABLE, item.Enable());
}

bool CXmlSerializer_DispData::AppendItemTag(std::string& text, const CItemDisp& item,
                                            std::list<CItemDisp*>::iterator position,
                                            std::list<CItemDisp*>* items,
                                            std::list<std::string>* openParents) {
    if (*position == items->back()) {
        text.append(LEAF_MARK);
        CloseEveryLevel(text, openParents);
        return false;
    }
    const CItemDisp& next = **std::next(position);
    if (next.ParentName() == item.ItemName()) {
        return false;
    }
    if (openParents->empty()) {
        text.append(LEAF_MARK);
        return false;
    }
    text.append(LEAF_END);
    CloseLevelsUpTo(text, next.ParentName(), openParents);
    return !openParents->empty();
}

void CXmlSerializer_DispData::CloseEveryLevel(std::string& text,
                                              std::list<std::string>* openParents) {
    for (; !openParents->empty(); openParents->pop_back()) {
        text.append(ITEM_END);
    }
}

// The item itself has its end; each closing tag is an ancestor's whose children have all been
// written.
void CXmlSerializer_DispData::CloseLevelsUpTo(std::string& text, const std::string& parentName,
                                              std::list<std::string>* openParents) {
    while (openParents->back() != parentName) {
        openParents->pop_back();
        if (openParents->empty()) {
            return;
        }
        text.append(ITEM_END);
    }
}
