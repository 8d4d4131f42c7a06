#include <gtest/gtest.h>

#include <random>
#include <utility>

#include "ItemList.h"
#include "xml/XmlSerializer_DispData.h"

namespace {

using qortest::CItemList;

const std::string HEAD = "<dispdata><component>C</component>";
const std::string TAIL = "</dispdata>";

std::string Element(const std::string& name, const std::string& text) {
    return text.empty() ? "<" + name + "/>" : "<" + name + ">" + text + "</" + name + ">";
}

// The fields of an item with an empty value and the flag "TRUE".
std::string Fields(const std::string& name) {
    return Element("name", name) + "<val/><enbl>TRUE</enbl>";
}

struct CResult {
    unsigned int code = 0;
    std::string text;      // what was handed out
    std::string document;  // what the serializer holds
};

CResult Serialize(std::list<CItemDisp*>& items) {
    CXmlSerializer_DispData serializer("dispdata", "C");
    char* out = nullptr;
    CResult result;
    result.code = serializer.XmlSerialize(&items, &out);
    result.text = out != nullptr ? out : "";
    result.document = serializer.XmlData();
    return result;
}

void ExpectDocument(CItemList& list, const std::string& body) {
    const CResult result = Serialize(list.items);
    EXPECT_EQ(result.code, 0U);
    EXPECT_EQ(result.text, HEAD + body + TAIL);
}

// A serializer whose document has room for `room` more bytes.
class CNearlyFullSerializer : public CXmlSerializer_DispData {
public:
    explicit CNearlyFullSerializer(std::string::size_type room)
        : CXmlSerializer_DispData("dispdata", "C") {
        m_MaxDataSize = XmlData().size() + room;
    }
};

TEST(XmlSerializerDispData, SingleItemIsALeaf) {
    CItemList list;
    list.Add("", "R", "V", "FALSE");
    ExpectDocument(list, "<item><name>R</name><val>V</val><enbl>FALSE</enbl><item/></item>");
}

TEST(XmlSerializerDispData, ChildrenStandInsideTheirParent) {
    CItemList list;
    list.Add("", "R");
    list.Add("R", "A");
    list.Add("A", "A1");
    list.Add("R", "B");
    ExpectDocument(list, "<item>" + Fields("R") + "<item>" + Fields("A") + "<item>" + Fields("A1") +
                             "<item/></item></item><item>" + Fields("B") + "<item/></item></item>");
}

TEST(XmlSerializerDispData, TopLevelItemsFollowEachOtherAtTheSameLevel) {
    CItemList list;
    list.Add("", "R");
    list.Add("", "S");
    ExpectDocument(
        list, "<item>" + Fields("R") + "<item/></item><item>" + Fields("S") + "<item/></item>");
}

TEST(XmlSerializerDispData, NextRootClosesEveryLevelOfTheOneBefore) {
    CItemList list;
    for (int controller = 0; controller < 2; ++controller) {
        list.Add("", "R");
        list.Add("R", "T");
        list.Add("T", "K");
    }
    const std::string root = "<item>" + Fields("R") + "<item>" + Fields("T") + "<item>" +
                             Fields("K") + "<item/></item></item></item>";
    ExpectDocument(list, root + root);
}

TEST(XmlSerializerDispData, NothingIsEscapedAndBytesPassUnchanged) {
    CItemList list;
    list.Add("", "a<b", "\xE9&\"\x01");
    ExpectDocument(list,
                   "<item><name>a<b</name><val>\xE9&\"\x01</val><enbl>TRUE</enbl><item/></item>");
}

TEST(XmlSerializerDispData, EmptyNameTakesTheEmptyElementForm) {
    CItemList list;
    list.Add("", "R");
    list.Add("R", "", "V");
    ExpectDocument(list, "<item>" + Fields("R") +
                             "<item><name/><val>V</val><enbl>TRUE</enbl><item/></item></item>");
}

TEST(XmlSerializerDispData, InvalidArgumentsWriteNothing) {
    CItemList list;
    CXmlSerializer_DispData serializer("dispdata", "C");
    char* out = nullptr;
    EXPECT_EQ(serializer.XmlSerialize(nullptr, &out), 0x01000000U);
    EXPECT_EQ(serializer.XmlSerialize(&list.items, &out), 0x01000000U) << "empty list";
    EXPECT_EQ(out, nullptr);
    list.Add("", "R");
    char other = 'x';
    out = &other;
    EXPECT_EQ(serializer.XmlSerialize(&list.items, &out), 0x01000000U);
    EXPECT_EQ(out, &other);
    EXPECT_EQ(serializer.XmlData(), HEAD);
}

// A list of 1,500 good items whose item at `bad` (from 1) is the given one.
void FillWithBadItem(CItemList& list, int bad, const char* parent, const char* name,
                     const char* enable) {
    for (int number = 1; number <= 1500; ++number) {
        if (number == bad) {
            list.Add(parent, name, "", enable);
        } else {
            list.Add(number == 1 ? "" : "R", number == 1 ? "R" : "A");
        }
    }
}

TEST(XmlSerializerDispData, MalformedItemIsReportedWithCheckAndNumber) {
    const struct {
        int bad;
        const char* parent;
        const char* name;
        const char* enable;
        unsigned int code;
    } rows[] = {{1, "R", "A", "TRUE", 0x03100001},
                {2, "X", "A", "TRUE", 0x03100002},
                {1000, "X", "A", "TRUE", 0x031003E8},
                {1500, "X", "A", "TRUE", 0x031005DC},
                {1, "", "", "TRUE", 0x03200001},
                {2, "R", "R", "TRUE", 0x03200002},
                {1000, "R", "R", "TRUE", 0x032003E8},
                {1, "", "R", "true", 0x03300001},
                {2, "R", "A", "true", 0x03300002},
                {1000, "R", "A", "", 0x033003E8},
                {2, "R", "A", "TRUE ", 0x03300002},
                {2, "R", "A", "false", 0x03300002},
                {2, "R", "A", "1", 0x03300002},
                {1, "R", "R", "true", 0x03100001},
                {2, "R", "R", "true", 0x03200002},
                {1500, "R", "R", "true", 0x032005DC},
                {1500, "R", "A", "TRUEFALSE", 0x033005DC},
                {2, "R", "A", "FALSE ", 0x03300002},
                {2, "R", "A", "FALS", 0x03300002}};
    for (const auto& row : rows) {
        CItemList list;
        FillWithBadItem(list, row.bad, row.parent, row.name, row.enable);
        const CResult result = Serialize(list.items);
        EXPECT_EQ(result.code, row.code) << std::hex << row.code;
        EXPECT_EQ(result.text, "");
    }
}

TEST(XmlSerializerDispData, FirstItemUnderAParentLeavesOnlyTheHead) {
    CItemList list;
    list.Add("X", "A");
    EXPECT_EQ(Serialize(list.items).document, HEAD);
}

TEST(XmlSerializerDispData, ItemUnderAnUnknownParentFindsEveryLevelClosed) {
    CItemList list;
    list.Add("", "R");
    list.Add("R", "A");
    list.Add("A", "A1");
    list.Add("X", "B");
    const CResult result = Serialize(list.items);
    EXPECT_EQ(result.code, 0x03100004U);
    EXPECT_EQ(result.document, HEAD + "<item>" + Fields("R") + "<item>" + Fields("A") + "<item>" +
                                   Fields("A1") + "<item/></item></item></item>");
}

TEST(XmlSerializerDispData, ParentWhoseLevelIsClosedIsUnknown) {
    CItemList list;
    list.Add("", "R");
    list.Add("R", "A");
    list.Add("A", "A1");
    list.Add("R", "B");
    list.Add("A", "A2");
    EXPECT_EQ(Serialize(list.items).code, 0x03100005U);
}

TEST(XmlSerializerDispData, NumberOfTwentyOneBitsRunsIntoTheCheckBits) {
    CItemList list;
    CItemDisp* root = list.Add("", "R");
    CItemDisp* bad = list.Add("R", "R");
    list.items.assign(0x100000, root);
    list.items.push_back(bad);
    EXPECT_EQ(Serialize(list.items).code, 0x03200000U | 0x100001U);
}

TEST(XmlSerializerDispData, CheckOfAnItemNeedsNoPreviousOne) {
    const CXmlSerializer_DispData serializer("dispdata", "C");
    std::list<std::string> open;
    const CItemDisp root("", "R", "", "TRUE");
    const CItemDisp child("R", "A", "", "FALSE");
    EXPECT_EQ(serializer.CheckInputData(&root, nullptr, &open), 0U);
    EXPECT_EQ(serializer.CheckInputData(&child, nullptr, &open), 1U);
    EXPECT_EQ(serializer.CheckInputData(&child, &root, &open), 0U);
    EXPECT_EQ(serializer.CheckInputData(&root, &child, &open), 1U);
    open.push_back("whatever is open");
    EXPECT_EQ(serializer.CheckInputData(&root, &child, &open), 0U);
}

TEST(XmlSerializerDispData, CreatesTheOpeningTextOfAnItem) {
    const CXmlSerializer_DispData serializer("dispdata", "C");
    EXPECT_EQ(serializer.CreateItem(CItemDisp("P", "N", "V", "FALSE")),
              "<item><name>N</name><val>V</val><enbl>FALSE</enbl>");
    EXPECT_EQ(serializer.CreateItem(CItemDisp("", "", "", "")), "<item><name/><val/><enbl/>");
}

TEST(XmlSerializerDispData, ClosingTextPopsTheLevelsItCloses) {
    const CXmlSerializer_DispData serializer("dispdata", "C");
    CItemList list;
    list.Add("", "R");
    list.Add("R", "A");
    list.Add("A", "A1");
    list.Add("R", "B");
    const struct {
        std::list<std::string> before;
        const char* text;
        std::list<std::string> after;
    } rows[] = {
        {{""}, "", {""}},
        {{"", "R"}, "", {"", "R"}},
        {{"", "R", "A"}, "<item/></item></item>", {"", "R"}},
        {{"", "R"}, "<item/></item></item>", {}},
    };
    auto position = list.items.begin();
    for (const auto& row : rows) {
        std::list<std::string> open = row.before;
        EXPECT_EQ(serializer.AddItemTag(**position, position, &list.items, &open), row.text);
        EXPECT_EQ(open, row.after);
        ++position;
    }
}

TEST(XmlSerializerDispData, PointerThatStandsTwiceCountsAsTheLastAtBothPlaces) {
    CItemList list;
    list.Add("", "a");
    CItemDisp* twice = list.Add("a", "b");
    list.Add("b", "a");
    list.items.push_back(twice);
    ExpectDocument(list, "<item>" + Fields("a") + "<item>" + Fields("b") +
                             "<item/></item></item>"  // the list seems to end here
                             "<item>" +
                             Fields("a") + "<item>" + Fields("b") + "<item/></item></item>");
}

TEST(XmlSerializerDispData, RootThatStandsTwiceFindsNoOpenLevel) {
    CItemList list;
    list.items.push_back(list.Add("", "R"));
    EXPECT_EQ(Serialize(list.items).code, 0x03100002U);
}

TEST(XmlSerializerDispData, FullDocumentKeepsTheItemsThatFitted) {
    CItemList list;
    list.Add("", "R");
    list.Add("R", "A");
    const std::string first = "<item>" + Fields("R");
    const std::string second = "<item>" + Fields("A") + "<item/></item></item>";
    const struct {
        std::string::size_type room;
        std::string document;
    } rows[] = {
        {first.size() - 1, HEAD},
        {first.size(), HEAD + first},
        {first.size() + second.size() - 1, HEAD + first},
        {first.size() + second.size(), HEAD + first + second},
        {first.size() + second.size() + TAIL.size() - 1, HEAD + first + second},
    };
    for (const auto& row : rows) {
        CNearlyFullSerializer serializer(row.room);
        char* out = nullptr;
        EXPECT_EQ(serializer.XmlSerialize(&list.items, &out), 0x04000000U) << row.room;
        EXPECT_EQ(out, nullptr);
        EXPECT_EQ(serializer.XmlData(), row.document);
    }
}

TEST(XmlSerializerDispData, DocumentMayBeFullToTheLastByte) {
    CItemList list;
    list.Add("", "R");
    const std::string rest = "<item>" + Fields("R") + "<item/></item>" + TAIL;
    CNearlyFullSerializer serializer(rest.size());
    char* out = nullptr;
    EXPECT_EQ(serializer.XmlSerialize(&list.items, &out), 0U);
    EXPECT_EQ(serializer.XmlData(), HEAD + rest);
}

TEST(XmlSerializerDispData, MillionItems) {
    CItemList list;
    list.Add("", "R");
    CItemDisp* child = list.Add("R", "A");
    list.items.insert(list.items.end(), 999'997, child);
    list.Add("R", "Z");
    ASSERT_EQ(list.items.size(), 1'000'000U);
    const std::string leaf = "<item>" + Fields("A") + "<item/></item>";
    std::string expected = HEAD + "<item>" + Fields("R");
    for (int i = 0; i < 999'998; ++i) {
        expected += leaf;
    }
    expected += "<item>" + Fields("Z") + "<item/></item></item>" + TAIL;
    const CResult result = Serialize(list.items);
    EXPECT_EQ(result.code, 0U);
    EXPECT_TRUE(result.text == expected);
}

TEST(XmlSerializerDispData, DepthOfTenThousand) {
    constexpr int DEPTH = 10'000;
    CItemList list;
    std::string expected = HEAD;
    std::string parent;
    for (int level = 0; level < DEPTH; ++level) {
        const std::string name = "n" + std::to_string(level);
        list.Add(parent, name);
        expected += "<item>" + Fields(name);
        parent = name;
    }
    // A second root behind the deepest item closes all of it at once.
    list.Add("", "S");
    expected += "<item/>";
    for (int level = 0; level < DEPTH; ++level) {
        expected += "</item>";
    }
    expected += "<item>" + Fields("S") + "<item/></item>" + TAIL;
    const CResult result = Serialize(list.items);
    EXPECT_EQ(result.code, 0U);
    EXPECT_TRUE(result.text == expected);
}

// An independent picture of the format: the tree is built with pointers and written recursively.
struct CNode {
    const CItemDisp* item = nullptr;
    std::vector<std::unique_ptr<CNode>> children;
};

std::string Render(const CNode& node) {
    std::string inner;
    for (const auto& child : node.children) {
        inner += Render(*child);
    }
    return "<item>" + Element("name", node.item->ItemName()) +
           Element("val", node.item->ItemValue()) + Element("enbl", node.item->Enable()) +
           (inner.empty() ? "<item/>" : inner) + "</item>";
}

// Cuts `path`, the open items from the top level down to the previous item, to those inside which
// `item` stands; false if it stands nowhere.
bool FindPlace(std::vector<CNode*>& path, const CItemDisp& item) {
    if (path.size() == 1) {
        return item.ParentName().empty();
    }
    if (path.back()->item->ItemName() == item.ParentName()) {
        return true;
    }
    while (path.size() > 1 && path.back()->item->ParentName() != item.ParentName()) {
        path.pop_back();
    }
    if (path.size() == 1) {
        return false;
    }
    path.pop_back();
    return true;
}

std::pair<unsigned int, std::string> Model(const std::list<CItemDisp*>& items) {
    CNode top;
    std::vector<CNode*> path = {&top};
    unsigned int number = 0;
    for (const CItemDisp* item : items) {
        ++number;
        if (!FindPlace(path, *item)) {
            return {0x03100000U | number, ""};
        }
        if (item->ItemName() == item->ParentName()) {
            return {0x03200000U | number, ""};
        }
        if (item->Enable() != "TRUE" && item->Enable() != "FALSE") {
            return {0x03300000U | number, ""};
        }
        path.back()->children.push_back(std::make_unique<CNode>());
        path.back()->children.back()->item = item;
        path.push_back(path.back()->children.back().get());
    }
    std::string text = HEAD;
    for (const auto& child : top.children) {
        text += Render(*child);
    }
    return {0U, text + TAIL};
}

void ExpectAsModelled(std::list<CItemDisp*>& items) {
    const auto [code, text] = Model(items);
    const CResult result = Serialize(items);
    EXPECT_EQ(result.code, code);
    EXPECT_EQ(result.text, text);
}

TEST(XmlSerializerDispData, RandomTreesNestAsTheirParentsSay) {
    std::mt19937 random(20240501);
    for (int round = 0; round < 500; ++round) {
        CItemList list;
        std::vector<std::string> path = {""};
        const std::size_t count = 1 + random() % 60;
        for (std::size_t i = 0; i < count; ++i) {
            path.resize(1 + random() % path.size());
            // Names repeat among the items of a level, as section titles do.
            const std::string name =
                "level" + std::to_string(path.size()) + std::string(random() % 3, 'x');
            list.Add(path.back(), name, std::string(random() % 3, 'v'),
                     random() % 2 == 0 ? "TRUE" : "FALSE");
            path.push_back(name);
        }
        ASSERT_EQ(Model(list.items).first, 0U);
        ExpectAsModelled(list.items);
    }
}

TEST(XmlSerializerDispData, RandomListsAreAcceptedOrRefusedAsModelled) {
    std::mt19937 random(7);
    const char* const names[] = {"", "a", "b", "c"};
    int refused = 0;
    for (int round = 0; round < 20'000; ++round) {
        CItemList list;
        const std::size_t count = 1 + random() % 8;
        for (std::size_t i = 0; i < count; ++i) {
            list.Add(i == 0 ? "" : names[random() % 4], names[random() % 4], "",
                     random() % 30 == 0 ? "no" : "TRUE");
        }
        ExpectAsModelled(list.items);
        refused += Model(list.items).first != 0 ? 1 : 0;
    }
    EXPECT_GT(refused, 1000);
    EXPECT_LT(refused, 19'000);
}

TEST(XmlSerializerDispData, OneLargeItemMakesTheOthersNoLarger) {
    CItemList list;
    list.Add("", "R", std::string(20'000'000, 'v'));
    constexpr std::string::size_type CHILDREN = 500'000;
    for (std::string::size_type i = 0; i < CHILDREN; ++i) {
        list.Add("R", "C", "V");
    }
    CXmlSerializer_DispData serializer("dispdata", "C");
    char* out = nullptr;
    EXPECT_EQ(serializer.XmlSerialize(&list.items, &out), 0U);
    EXPECT_LE(serializer.XmlData().capacity(), 2 * serializer.XmlData().size());
}

TEST(XmlSerializerDispData, LargeItemsMakeRoomForFewOfTheirKind) {
    CItemList list;
    list.Add("", "R", "V");
    for (int i = 0; i < 300'000; ++i) {
        list.Add("R", "C", std::string(i < 300 ? 100'000 : 1, 'v'));
    }
    CXmlSerializer_DispData serializer("dispdata", "C");
    char* out = nullptr;
    EXPECT_EQ(serializer.XmlSerialize(&list.items, &out), 0U);
    EXPECT_LE(serializer.XmlData().capacity(), 128U << 20U);
}

}  // namespace
