// A host may have set any locale: the texts and numbers that leave the plug-in are the same.
#include <gtest/gtest.h>

#include <locale>
#include <string>

#include "ItemList.h"
#include "plugin/SvpConversion.h"
#include "svp/CSvpPdInfoForm.h"
#include "xml/XmlSerializer_DispData.h"

namespace {

using qortest::CItemList;

// Puts a mark behind every digit: a number written through the locale would show it.
class CGroupingPunct : public std::numpunct<char> {
protected:
    char do_thousands_sep() const override { return '\''; }
    std::string do_grouping() const override { return "\1"; }
};

class CHostLocale {
public:
    CHostLocale()
        : m_Before(std::locale::global(std::locale(std::locale::classic(), new CGroupingPunct))) {}
    ~CHostLocale() { std::locale::global(m_Before); }
    CHostLocale(const CHostLocale&) = delete;
    CHostLocale& operator=(const CHostLocale&) = delete;

private:
    std::locale m_Before;
};

void Fill(CItemList& list) {
    const char* const general = "### General Information ###";
    list.Add("", "Controller Information");
    list.Add("Controller Information", general);
    list.Add(general, "Controller No.", "12345");
    list.Add(general, "Product Name", "Karte \xC4\xB0\xC3\x96");
}

std::string FormText() {
    CItemList list;
    Fill(list);
    CSvpPdInfoForm form;
    CSvpConversion::Convert(&form, list.items);
    form.SetDataSize();
    std::string digits;
    form.DumpMe(&digits);
    return digits;
}

std::string XmlText() {
    CItemList list;
    Fill(list);
    CXmlSerializer_DispData serializer("dispdata", "C");
    char* out = nullptr;
    EXPECT_EQ(serializer.XmlSerialize(&list.items, &out), 0U);
    return out != nullptr ? out : "";
}

TEST(HostLocale, ChangesNeitherTheFormNorTheDocument) {
    const std::string form = FormText();
    const std::string document = XmlText();
    EXPECT_EQ(form.substr(32, 2), "39") << "12345 mod 256, in hexadecimal";
    const CHostLocale locale;
    EXPECT_EQ(FormText(), form);
    EXPECT_EQ(XmlText(), document);
}

}  // namespace
