#include <gtest/gtest.h>

#include <utility>

#include "commands/XmlCommand.h"

namespace {

using qorctl::ExplainXmlResult;

TEST(XmlResultTest, EveryResultHasAMeaning) {
    const std::pair<unsigned int, const char*> cases[] = {
        {0x01000000,
         "no XML document, result 0x01000000: invalid argument: the list of items is empty, or "
         "something was missing"},
        {0x02000000,
         "no XML document, result 0x02000000: the plug-in does not know this type of document"},
        {0x03100001,
         "no XML document, result 0x03100001: item 1 is out of order: its parent does not stand "
         "before it"},
        {0x0320000A, "no XML document, result 0x0320000A: item 10 is named like its own parent"},
        {0x033FFFFF,
         "no XML document, result 0x033FFFFF: item 1048575 has an enable flag that is neither "
         "\"TRUE\" nor \"FALSE\""},
        {0x04000000, "no XML document, result 0x04000000: the document would be too large"},
        {0x03400001, "no XML document, result 0x03400001: no meaning is known for this result"},
        {0x01000001, "no XML document, result 0x01000001: no meaning is known for this result"},
        {0x7F000000, "no XML document, result 0x7F000000: no meaning is known for this result"},
    };
    for (const auto& [result, text] : cases) {
        EXPECT_EQ(ExplainXmlResult(result), text);
    }
}

}  // namespace
