#include <gtest/gtest.h>

#include <climits>

#include "SlotOf.h"
#include "xml/XmlSerializer.h"

namespace {

// A serializer whose document has room for `room` more bytes.
class CNearlyFullSerializer : public CXmlSerializer {
public:
    explicit CNearlyFullSerializer(std::string::size_type room) : CXmlSerializer("root", "") {
        m_MaxDataSize = XmlData().size() + room;
    }
};

TEST(XmlSerializer, SerializingStandsBehindTheDestructor) {
    EXPECT_EQ(qortest::SlotOf(&CXmlSerializer::XmlSerialize), 2U);
}

TEST(XmlSerializer, StartsWithRootAndComponent) {
    EXPECT_EQ(CXmlSerializer("dispdata", "C").XmlData(), "<dispdata><component>C</component>");
}

TEST(XmlSerializer, EmptyComponentTakesTheEmptyElementForm) {
    EXPECT_EQ(CXmlSerializer("dispdata", "").XmlData(), "<dispdata><component/>");
}

TEST(XmlSerializer, EndsTheDocumentAndHandsOutItsOwnText) {
    CXmlSerializer serializer("root", "C");
    int data = 0;
    char* out = nullptr;
    EXPECT_EQ(serializer.XmlSerialize(&data, &out), 0U);
    EXPECT_STREQ(out, "<root><component>C</component></root>");
    EXPECT_EQ(out, serializer.XmlData().data());
}

TEST(XmlSerializer, NullDataIsAnInvalidArgument) {
    CXmlSerializer serializer("root", "");
    char* out = nullptr;
    EXPECT_EQ(serializer.XmlSerialize(nullptr, &out), 0x01000000U);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(serializer.XmlData(), "<root><component/>");
}

TEST(XmlSerializer, OutThatIsSetIsAnInvalidArgumentAndNothingIsAppended) {
    CXmlSerializer serializer("root", "");
    char other = 'x';
    char* out = &other;
    EXPECT_EQ(serializer.XmlSerialize(&other, &out), 0x01000000U);
    EXPECT_EQ(out, &other);
    EXPECT_EQ(serializer.XmlData(), "<root><component/>");
}

TEST(XmlSerializer, SizeLimitIsThatOfAString) {
    const CXmlSerializer serializer("root", "");
    const unsigned long room = std::string().max_size() - serializer.XmlData().size();
    EXPECT_EQ(serializer.CheckDataSize(0), 0U);
    EXPECT_EQ(serializer.CheckDataSize(room), 0U);
    EXPECT_EQ(serializer.CheckDataSize(room + 1), 0x04000000U);
    EXPECT_EQ(serializer.CheckDataSize(ULONG_MAX), 0x04000000U);
}

TEST(XmlSerializer, DataIsAppendedUpToTheLastByteOfRoom) {
    CNearlyFullSerializer serializer(4);
    EXPECT_EQ(serializer.AddXmlData("12345"), 0x04000000U);
    EXPECT_EQ(serializer.XmlData(), "<root><component/>");
    EXPECT_EQ(serializer.AddXmlData("1234"), 0U);
    EXPECT_EQ(serializer.XmlData(), "<root><component/>1234");
    EXPECT_EQ(serializer.AddXmlData(""), 0U);
    EXPECT_EQ(serializer.AddXmlData("5"), 0x04000000U);
}

TEST(XmlSerializer, DocumentWithoutRoomForItsEndIsNotHandedOut) {
    CNearlyFullSerializer serializer(sizeof "</root>" - 2);
    int data = 0;
    char* out = nullptr;
    EXPECT_EQ(serializer.XmlSerialize(&data, &out), 0x04000000U);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(serializer.XmlData(), "<root><component/>");
}

}  // namespace
