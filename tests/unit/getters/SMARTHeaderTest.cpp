// The header of a SAS table, handed over as it stands in the report.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "FakeComLib.h"
#include "ItemText.h"
#include "PrivateServerFixture.h"
#include "getters/CMSRAID_PDSMInfoGetter.h"

using namespace qortest;

namespace {

constexpr const char* ROWS = "/opt/tarmica/rows.txt";

class CTableParser : public CMSRAID_PDSMInfoGetter {
public:
    CTableParser() { StartRoot("T"); }
    ~CTableParser() override { DeleteItems(m_RaidList); }

    bool ParseSAS(const std::string& header) {
        std::ifstream stream(ROWS);
        return ParseSMARTSAS(stream, header);
    }
    std::string Text() const { return ItemText(m_RaidList); }
};

class SMARTHeader : public CPrivateServerFixture {
protected:
    void SetUp() override {
        CPrivateServerFixture::SetUp();
        ResetFakeComLib();
    }
};

TEST_F(SMARTHeader, FirstSASColumnBeginsAtTheStartOfTheLineWhereverItsNameStands) {
    WriteFile(ROWS, "---\nabcdef  12\n");
    CTableParser parser;
    EXPECT_TRUE(parser.ParseSAS("   Name Value"));
    EXPECT_EQ(parser.Text(),
              " | T |  | TRUE\n"
              "T | SMART Detail(SAS) |  | TRUE\n"
              "SMART Detail(SAS) | Name | abcdef | TRUE\n"
              "SMART Detail(SAS) | Value | 12 | TRUE\n");
}

}  // namespace
