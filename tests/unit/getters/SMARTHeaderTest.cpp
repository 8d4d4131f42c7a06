// The header of a SAS table, handed over as it stands in the report.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "GetterFixture.h"
#include "getters/CMSRAID_PDSMInfoGetter.h"

using namespace qortest;

namespace {

class CTableParser : public CParserOf<CMSRAID_PDSMInfoGetter> {
public:
    CTableParser() { StartRoot("T"); }

    bool ParseSAS(const std::string& header, const std::string& rows) {
        std::ifstream stream = StreamOf(rows);
        return ParseSMARTSAS(stream, header);
    }
};

class SMARTHeader : public CGetterFixture {};

TEST_F(SMARTHeader, FirstSASColumnBeginsAtTheStartOfTheLineWhereverItsNameStands) {
    CTableParser parser;
    EXPECT_TRUE(parser.ParseSAS("   Name Value", "---\nabcdef  12\n"));
    EXPECT_EQ(ItemText(parser.Items()),
              " | T |  | TRUE\n"
              "T | SMART Detail(SAS) |  | TRUE\n"
              "SMART Detail(SAS) | Name | abcdef | TRUE\n"
              "SMART Detail(SAS) | Value | 12 | TRUE\n");
}

}  // namespace
