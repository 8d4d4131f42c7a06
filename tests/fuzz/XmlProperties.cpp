#include <algorithm>
#include <iterator>
#include <vector>

#include "Fuzz.h"
#include "ItemProperties.h"
#include "xml/MngSrv_QorLibMan.h"

namespace qorfuzz {
namespace {

constexpr unsigned int OUT_OF_ORDER = 1;
constexpr unsigned int OWN_PARENT = 2;
constexpr unsigned int WRONG_FLAG = 3;

// Which check an item fails, 0 for none. `open` are the items that it can be put below: the one
// before it and its ancestors. They are cut to the one that it stands below.
unsigned int FailedCheck(const CItemDisp& item, std::vector<std::string>& open) {
    const auto parent = std::find(open.rbegin(), open.rend(), item.ParentName());
    if (parent == open.rend()) {
        return OUT_OF_ORDER;
    }
    open.erase(parent.base(), open.end());
    if (item.ItemName() == item.ParentName()) {
        return OWN_PARENT;
    }
    return item.Enable() == "TRUE" || item.Enable() == "FALSE" ? 0 : WRONG_FLAG;
}

unsigned int ExpectedResult(const ItemList& items) {
    if (items.empty()) {
        return CXmlSerializer::RESULT_INVALID_ARGUMENT;
    }
    std::vector<std::string> open = {""};
    unsigned int index = 1;
    for (const CItemDisp* item : items) {
        const unsigned int check = FailedCheck(*item, open);
        if (check != 0) {
            return CXmlSerializer::RESULT_MALFORMED_LIST | (check << 20U) | index;
        }
        open.push_back(item->ItemName());
        ++index;
    }
    return CXmlSerializer::RESULT_OK;
}

bool HoldsMarkup(const ItemList& items) {
    return std::any_of(items.begin(), items.end(), [](const CItemDisp* item) {
        return (item->ItemName() + item->ItemValue()).find('<') != std::string::npos;
    });
}

// Reads a document from its first byte to its last.
class CDocument {
public:
    CDocument(std::string_view text, const ItemList& items) : m_Rest(text), m_Items(items) {}

    void DemandItems() {
        DemandNext("<dispdata><component>fuzz</component>");
        for (m_Next = m_Items.begin(); Take("<item>");) {
            DemandItem();
            while (m_Open.size() > 1 && Take("</item>")) {
                m_Open.pop_back();
            }
        }
        Demand(m_Next == m_Items.end(), "every item is in the document");
        Demand(m_Open.size() == 1, "every element is closed");
        DemandNext("</dispdata>");
        Demand(m_Rest.empty(), "nothing is behind the document", m_Rest);
    }

private:
    bool Take(std::string_view text) {
        const bool found = m_Rest.starts_with(text);
        m_Rest.remove_prefix(found ? text.size() : 0);
        return found;
    }

    void DemandNext(std::string_view text) {
        Demand(Take(text), "the document goes on as its grammar says", m_Rest);
    }

    void DemandElement(const std::string& name, const std::string& text) {
        DemandNext(text.empty() ? "<" + name + "/>" : "<" + name + ">" + text + "</" + name + ">");
    }

    void DemandItem() {
        Demand(m_Next != m_Items.end(), "only items are in the document");
        const CItemDisp& item = **m_Next;
        Demand(item.ParentName() == m_Open.back(), "items nest as their parent names say",
               item.ParentName());
        DemandElement("name", item.ItemName());
        DemandElement("val", item.ItemValue());
        DemandElement("enbl", item.Enable());
        const bool isLeaf = Take("<item/>");
        Demand(m_Rest.starts_with(isLeaf ? "</item>" : "<item>"),
               "leaves, and only they, are marked", m_Rest);
        m_Open.push_back(item.ItemName());
        ++m_Next;
    }

    std::string_view m_Rest;
    const ItemList& m_Items;
    ItemList::const_iterator m_Next;
    std::vector<std::string> m_Open = {""};
};

}  // namespace

unsigned int DemandXml(ItemList& items) {
    CMngSrv_QorLibMan manager;
    char* text = nullptr;
    const unsigned int result =
        manager.XmlSerialize(CMngSrv_QorLibMan::TYPE_DISPDATA, "fuzz", &items, &text);
    Demand(result == ExpectedResult(items), "the XML result is that of the first misplaced item",
           std::to_string(result));
    Demand((text != nullptr) == (result == CXmlSerializer::RESULT_OK),
           "a document comes with success only");
    if (text != nullptr && !HoldsMarkup(items)) {
        CDocument(text, items).DemandItems();
    }
    return result;
}

}  // namespace qorfuzz
