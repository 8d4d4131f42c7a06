#include "plugin/SvpConversion.h"

#include <cstring>
#include <iterator>
#include <string_view>
#include <utility>

#include "svp/CSvpCommon.h"
#include "svp/SvpNameTables.h"

namespace {

constexpr std::string_view CTRL_ROOT = "Controller Information";
constexpr std::string_view PD_ROOT = "Physical Drive Information";
constexpr std::string_view GENERAL_TITLE = "### General Information ###";
constexpr std::string_view FIRMWARE_TITLE = "### Firmware/BIOS/Driver Information ###";

// The low 8 bits of the decimal number that `text` starts with: white space, a sign, digits; 0
// without digits. Bytes are compared, so that the host's locale plays no part; wrapping unsigned
// arithmetic keeps the low bits right however many digits there are.
std::uint8_t ReadLow8(const char* text) {
    text += std::strspn(text, " \t\n\v\f\r");
    const bool negative = *text == '-';
    if (*text == '-' || *text == '+') {
        ++text;
    }
    unsigned int number = 0;
    for (; *text >= '0' && *text <= '9'; ++text) {
        number = number * 10U + static_cast<unsigned int>(*text - '0');
    }
    return CSvpCommon::Low8(negative ? 0U - number : number);
}

}  // namespace

CSvpConversion::CSvpConversion(CSvpPdInfoForm* form) : m_pForm(form) {}

void CSvpConversion::Convert(CSvpPdInfoForm* form, const std::list<CItemDisp*>& items) {
    CSvpConversion conversion(form);
    for (auto position = items.begin(); position != items.end(); ++position) {
        const auto following = std::next(position);
        conversion.TakeItem(**position, following != items.end() ? *following : nullptr);
    }
    conversion.FlushPD();
    conversion.FlushCtrl();
}

bool CSvpConversion::SerchStringList(const std::string& name, const std::string* table) {
    for (; !table->empty(); ++table) {
        if (name == *table) {
            return true;
        }
    }
    return false;
}

void CSvpConversion::TakeItem(const CItemDisp& item, const CItemDisp* next) {
    const std::string_view name = item.ItemName();
    if (name == CTRL_ROOT) {
        StartCtrl();
    } else if (name == PD_ROOT) {
        StartPD();
    } else if (m_Mode == MODE::CONTROLLER) {
        TakeCtrlItem(item, next);
    } else if (m_Mode == MODE::PD) {
        TakePDItem(item, next);
    }
}

void CSvpConversion::StartCtrl() {
    FlushPD();
    FlushCtrl();
    m_Mode = MODE::CONTROLLER;
}

void CSvpConversion::StartPD() {
    FlushPD();
    m_Mode = MODE::PD;
}

void CSvpConversion::TakeCtrlItem(const CItemDisp& item, const CItemDisp* next) {
    if (item.ParentName() == GENERAL_TITLE) {
        if (item.ItemName() == tsCtrlGenList[0]) {
            m_Ctrl.SetCtrlNo(ReadLow8(item.ItemValue().c_str()));
        } else if (SerchStringList(item.ItemName(), tsCtrlGenList)) {
            m_Ctrl.AddItem(item.ItemName(), item.ItemValue());
        }
    } else if (item.ParentName() == FIRMWARE_TITLE) {
        if (SerchStringList(item.ItemName(), tsCtrlVerList)) {
            m_Ctrl.AddItem(item.ItemName(), item.ItemValue());
        }
        EndBlock(FIRMWARE_TITLE, next);
    }
}

void CSvpConversion::TakePDItem(const CItemDisp& item, const CItemDisp* next) {
    if (item.ParentName() != GENERAL_TITLE) {
        return;
    }
    if (item.ItemName() == tsPdGenList[0]) {
        // "PD12": the number stands behind the two letters, which must be there.
        if (item.ItemValue().find("PD") != std::string::npos) {
            m_PD.SetPDNo(ReadLow8(item.ItemValue().c_str() + 2));
        }
    } else if (SerchStringList(item.ItemName(), tsPdGenList)) {
        m_PD.AddItem(item.ItemName(), item.ItemValue());
    }
    EndBlock(GENERAL_TITLE, next);
}

// The block named `title` is the last one that is read: behind it nothing counts until a root.
void CSvpConversion::EndBlock(std::string_view title, const CItemDisp* next) {
    if (next != nullptr && next->ParentName() != title) {
        m_Mode = MODE::NONE;
    }
}

// A drive without items is dropped, its number with it.
void CSvpConversion::FlushPD() {
    if (!m_PD.Items().empty()) {
        m_PD.CheckMyItem();
        m_Ctrl.AddPD(std::move(m_PD));
    }
    m_PD.InitForm();
}

// A controller without items is dropped, its drives with it.
void CSvpConversion::FlushCtrl() {
    if (!m_Ctrl.Items().empty()) {
        m_pForm->AddCtrl(std::move(m_Ctrl));
    }
    m_Ctrl.InitForm();
}
