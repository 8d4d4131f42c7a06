#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <stdexcept>
#include <utility>
#include <vector>

#include "FakeComLib.h"
#include "svp/CSvpPdInfoForm.h"

namespace {

using qortest::CTraceLine;

std::string Dump(const CSvpPdInfoForm& form) {
    std::string digits;
    form.DumpMe(&digits);
    return digits;
}

TEST(SvpPdInfoForm, EmptyFormIsItsHeader) {
    CSvpPdInfoForm form;
    form.SetDataSize();
    EXPECT_EQ(Dump(form), "00000000000000001000000000000000");
}

TEST(SvpPdInfoForm, LayoutIsHeaderThenControllers) {
    CSvpPdInfoForm form;
    CSvpCtrlPdInfo ctrl;
    ctrl.SetCtrlNo(1);
    ctrl.AddItem("A", "1");
    CSvpPdInfo pd;
    pd.SetPDNo(12);
    ctrl.AddPD(pd);
    form.AddCtrl(ctrl);
    form.AddCtrl(CSvpCtrlPdInfo());
    form.SetDataSize();
    EXPECT_EQ(Dump(form),
              "0000000000"  // signature
              "00"          // format revision
              "0000"        // reserved
              "26000000"    // total size 38
              "02"          // controllers
              "01"          // drives
              "0000"        // reserved
              "01"          // controller number
              "01"          // its drives
              "1000"        // its size with drives: 16
              "0d00"        // its size without: 13
              "024100"
              "02003100"  // "A" = "1"
              "0c"        // drive number
              "0300"      // drive section size
              "00"        // second controller: number
              "00"        // no drives
              "0600"
              "0600");  // header only
    EXPECT_EQ(form.DataSize(), 38U);
}

TEST(SvpPdInfoForm, OneBareControllerTakes22Bytes) {
    CSvpPdInfoForm form;
    form.AddCtrl(CSvpCtrlPdInfo());
    form.SetDataSize();
    EXPECT_EQ(form.TotalDataSize(), 22U);
    EXPECT_EQ(form.CtrlCount(), 1);
    EXPECT_EQ(form.PDCount(), 0);
    EXPECT_EQ(form.Ctrls().front().CtrlAndPDSectionSize(), 6);
    EXPECT_EQ(form.Ctrls().front().CtrlSectionSize(), 6);
}

CSvpCtrlPdInfo CtrlWithPDs(int count) {
    CSvpCtrlPdInfo ctrl;
    for (int i = 0; i < count; ++i) {
        ctrl.AddPD(CSvpPdInfo());
    }
    return ctrl;
}

TEST(SvpPdInfoForm, SetDataSizeTwiceCountsTheSectionsTwice) {
    CSvpPdInfoForm form;
    form.AddCtrl(CtrlWithPDs(1));
    form.SetDataSize();
    form.SetDataSize();
    EXPECT_EQ(form.CtrlCount(), 2);
    EXPECT_EQ(form.PDCount(), 1 + 2);  // the controller's own count has doubled as well
    EXPECT_EQ(form.TotalDataSize(), 16U + 6 + 3);
}

TEST(SvpPdInfoForm, CountsWrapBeyond8Bits) {
    CSvpPdInfoForm form;
    for (int i = 0; i < 300; ++i) {
        form.AddCtrl(CtrlWithPDs(1));
    }
    form.SetDataSize();
    EXPECT_EQ(form.CtrlCount(), 44);
    EXPECT_EQ(form.PDCount(), 44);
    EXPECT_EQ(form.TotalDataSize(), 16U + 300 * 9);
}

TEST(SvpPdInfoForm, DriveCountIsTheSumOfTheControllersWrappedCounts) {
    CSvpPdInfoForm form;
    form.AddCtrl(CtrlWithPDs(257));
    form.AddCtrl(CtrlWithPDs(200));
    form.AddCtrl(CtrlWithPDs(100));
    form.SetDataSize();
    EXPECT_EQ(form.PDCount(), (1 + 200 + 100) % 256);
}

TEST(SvpPdInfoForm, TotalSizeIsTheSumOfTheWrappedSectionSizes) {
    CSvpPdInfoForm form;
    form.AddCtrl(CtrlWithPDs(21'844));
    form.AddCtrl(CtrlWithPDs(21'843));
    form.SetDataSize();
    EXPECT_EQ(form.TotalDataSize(), 16U + (6 + 3 * 21'844 - 65'536) + (6 + 3 * 21'843));
}

TEST(SvpPdInfoForm, InitFormMakesAFormThatCanBeUsedAgain) {
    CSvpPdInfoForm form;
    form.AddCtrl(CtrlWithPDs(2));
    form.SetDataSize();
    form.InitForm();
    EXPECT_EQ(form.DataSize(), 0U);
    EXPECT_TRUE(form.Ctrls().empty());
    EXPECT_EQ(Dump(form), std::string(32, '0'));
    form.SetDataSize();
    EXPECT_EQ(Dump(form), "00000000000000001000000000000000");
}

TEST(SvpPdInfoForm, DumpIsAppended) {
    CSvpPdInfoForm form;
    form.SetDataSize();
    std::string digits = "before";
    form.DumpMe(&digits);
    EXPECT_EQ(digits, "before00000000000000001000000000000000");
}

TEST(SvpPdInfoForm, EveryByteOfARawFieldIsWritten) {
    const unsigned char bytes[] = {0x00, 0x7F, 0x80, 0xFF};
    EXPECT_EQ(CSvpPdInfoForm::StringToBinString(bytes, 4), "007f80ff");
    EXPECT_EQ(CSvpPdInfoForm::StringToBinString(bytes, 0), "");
    EXPECT_EQ(CSvpPdInfoForm::StringToBinString(bytes, -1), "");
    EXPECT_EQ(CSvpPdInfoForm::StringToBinString(bytes, std::numeric_limits<int>::min()), "");
}

TEST(SvpPdInfoForm, TraceLinesInOrder) {
    CSvpPdInfoForm form;
    form.AddCtrl(CtrlWithPDs(1));
    form.SetDataSize();
    qortest::ResetFakeComLib();
    form.OutPutMemberToDebugLog();
    const std::vector<CTraceLine> expected = {
        {4, "CSvpPdInfoForm::OutPutMemberToDebugLog[START]"},
        {1, "m_Signature=0000000000"},
        {1, "m_FormatRevision=00"},
        {1, "m_Reserved1=0000"},
        {1, "m_TotalDataSize=25"},
        {1, "m_CtrlCount=1"},
        {1, "m_PDCount=1"},
        {1, "m_Reserved2=0000"},
        {4, "CSvpCtrlPdInfo::OutPutMemberToDebugLog[START]"},
        {1, "m_CtrlNo=0"},
        {1, "m_PDCountOnCtrl=1"},
        {1, "m_CtrlAndPDSectionSize=9"},
        {1, "m_CtrlSectionSize=6"},
        {4, "CSvpPdInfo::OutPutMemberToDebugLog[START]"},
        {1, "m_PDNo=0"},
        {1, "m_PDSectionSize=3"},
        {4, "CSvpPdInfo::OutPutMemberToDebugLog[END]"},
        {1, "m_DumpSize=9"},
        {4, "CSvpCtrlPdInfo::OutPutMemberToDebugLog[END]"},
        {1, "m_DumpSize=25"},
        {4, "CSvpPdInfoForm::OutPutMemberToDebugLog[END]"},
    };
    EXPECT_EQ(qortest::FakeComLib().traces, expected);
}

// What a form says, and a reader of the hexadecimal text that knows the layout only.
using CPairs = std::vector<std::pair<std::string, std::string>>;

struct CDrive {
    unsigned int number = 0;
    CPairs items;
    bool operator==(const CDrive& other) const = default;
};

struct CCtrl {
    unsigned int number = 0;
    CPairs items;
    std::vector<CDrive> drives;
    bool operator==(const CCtrl& other) const = default;
};

class CFormReader {
public:
    explicit CFormReader(const std::string& digits) {
        for (std::size_t at = 0; at < digits.size(); at += 2) {
            m_Bytes.push_back(
                static_cast<unsigned char>(std::stoul(digits.substr(at, 2), nullptr, 16)));
        }
    }

    std::vector<CCtrl> Read() {
        for (int reserved = 0; reserved < 8; ++reserved) {
            Expect(Number(1) == 0);
        }
        Expect(Number(4) == m_Bytes.size());
        const unsigned int ctrlCount = Number(1);
        const unsigned int pdCount = Number(1);
        Expect(Number(2) == 0);
        std::vector<CCtrl> ctrls;
        std::size_t drives = 0;
        while (ctrls.size() < ctrlCount) {
            ctrls.push_back(Ctrl());
            drives += ctrls.back().drives.size();
        }
        Expect(drives == pdCount && m_At == m_Bytes.size());
        return ctrls;
    }

private:
    static void Expect(bool holds) {
        if (!holds) {
            throw std::runtime_error("the form contradicts itself");
        }
    }

    unsigned int Number(int width) {
        unsigned int number = 0;
        for (int i = 0; i < width; ++i) {
            number |= static_cast<unsigned int>(m_Bytes.at(m_At++)) << (8 * i);
        }
        return number;
    }

    std::string Text(unsigned int size) {
        std::string text;
        for (unsigned int i = 0; i + 1 < size; ++i) {
            text += static_cast<char>(Number(1));
        }
        Expect(Number(1) == 0);
        return text;
    }

    CPairs ItemsUpTo(std::size_t end) {
        CPairs items;
        while (m_At < end) {
            std::string label = Text(Number(1));
            std::string value = Text(Number(2));
            items.emplace_back(std::move(label), std::move(value));
        }
        Expect(m_At == end);
        return items;
    }

    CDrive Drive() {
        const std::size_t start = m_At;
        CDrive drive;
        drive.number = Number(1);
        const unsigned int size = Number(2);
        drive.items = ItemsUpTo(start + size);
        return drive;
    }

    CCtrl Ctrl() {
        const std::size_t start = m_At;
        CCtrl ctrl;
        ctrl.number = Number(1);
        const unsigned int drives = Number(1);
        const unsigned int sizeWithDrives = Number(2);
        const unsigned int size = Number(2);
        ctrl.items = ItemsUpTo(start + size);
        while (ctrl.drives.size() < drives) {
            ctrl.drives.push_back(Drive());
        }
        Expect(m_At == start + sizeWithDrives);
        return ctrl;
    }

    std::vector<unsigned char> m_Bytes;
    std::size_t m_At = 0;
};

CPairs RandomItems(std::mt19937& random) {
    CPairs items(random() % 5);
    for (auto& [label, value] : items) {
        for (unsigned int length = random() % 32; label.size() < length;) {
            label += static_cast<char>(random() % 128);
        }
        for (unsigned int length = random() % 256; value.size() < length;) {
            value += static_cast<char>(random() % 128);
        }
    }
    return items;
}

std::vector<CCtrl> RandomCtrls(std::mt19937& random) {
    std::vector<CCtrl> ctrls(random() % 6);
    for (CCtrl& ctrl : ctrls) {
        ctrl.number = random() % 256;
        ctrl.items = RandomItems(random);
        ctrl.drives.resize(random() % 30);
        for (CDrive& drive : ctrl.drives) {
            drive.number = random() % 256;
            drive.items = RandomItems(random);
        }
    }
    return ctrls;
}

template <typename Record>
void AddItems(Record& record, const CPairs& items) {
    for (const auto& [label, value] : items) {
        record.AddItem(label, value);
    }
}

CSvpPdInfoForm FormOf(const std::vector<CCtrl>& ctrls) {
    CSvpPdInfoForm form;
    for (const CCtrl& from : ctrls) {
        CSvpCtrlPdInfo ctrl;
        ctrl.SetCtrlNo(static_cast<std::uint8_t>(from.number));
        AddItems(ctrl, from.items);
        for (const CDrive& drive : from.drives) {
            CSvpPdInfo pd;
            pd.SetPDNo(static_cast<std::uint8_t>(drive.number));
            AddItems(pd, drive.items);
            ctrl.AddPD(pd);
        }
        form.AddCtrl(ctrl);
    }
    return form;
}

TEST(SvpPdInfoForm, RandomFormsReadBackAsTheyWereFilled) {
    std::mt19937 random(20240502);
    for (int round = 0; round < 100; ++round) {
        const std::vector<CCtrl> ctrls = RandomCtrls(random);
        CSvpPdInfoForm form = FormOf(ctrls);
        form.SetDataSize();
        const std::string digits = Dump(form);
        EXPECT_EQ(digits.size(), 2 * form.DataSize());
        EXPECT_TRUE(CFormReader(digits).Read() == ctrls) << round;
    }
}

}  // namespace
