#include <gtest/gtest.h>

#include "xml/XmlElement.h"

namespace {

TEST(XmlElement, CreatesTheTagOfEachType) {
    const struct {
        unsigned int type;
        const char* tag;
    } rows[] = {
        {0, "<item>"}, {1, "</item>"}, {2, "<item/>"}, {3, "item"}, {0xFFFFFFFF, "item"},
    };
    const CXmlElement element("item", "the value plays no part");
    for (const auto& row : rows) {
        EXPECT_EQ(element.CreateTag(row.type), row.tag) << row.type;
    }
}

TEST(XmlElement, ValueStandsBetweenTheTags) {
    EXPECT_EQ(CXmlElement("name", "V").CreateElement(), "<name>V</name>");
}

TEST(XmlElement, EmptyValueGivesTheEmptyElementFormOnly) {
    EXPECT_EQ(CXmlElement("val", "").CreateElement(), "<val/>");
}

TEST(XmlElement, NothingIsEscaped) {
    EXPECT_EQ(CXmlElement("val", "a<b&\"c\">'").CreateElement(), "<val>a<b&\"c\">'</val>");
    EXPECT_EQ(CXmlElement("a&b", "").CreateElement(), "<a&b/>");
}

TEST(XmlElement, BytesPassUnchanged) {
    const std::string bytes("\x80\xFF\0\n\t", 5);
    EXPECT_EQ(CXmlElement("val", bytes).CreateElement(), "<val>" + bytes + "</val>");
}

TEST(XmlElement, AppendingKeepsWhatStandsThere) {
    std::string text = "before";
    CXmlElement("item", "").AppendTag(text, CXmlElement::TAG_CLOSE);
    CXmlElement::AppendElement(text, "val", "V");
    CXmlElement::AppendElement(text, "val", "");
    EXPECT_EQ(text, "before</item><val>V</val><val/>");
}

}  // namespace
