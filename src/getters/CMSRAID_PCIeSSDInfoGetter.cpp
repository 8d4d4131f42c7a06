#include "getters/CMSRAID_PCIeSSDInfoGetter.h"

#include <utility>

#include "base/Trace.h"
#include "getters/Text.h"

CMSRAID_PCIeSSDInfoGetter::CMSRAID_PCIeSSDInfoGetter() {
    const CTraceScope trace("CMSRAID_PCIeSSDInfoGetter::CMSRAID_PCIeSSDInfoGetter");
    m_CommandFormat = "krzcli -pssdinfo -aAll";
}

CMSRAID_PCIeSSDInfoGetter::~CMSRAID_PCIeSSDInfoGetter() {
    const CTraceScope trace("CMSRAID_PCIeSSDInfoGetter::~CMSRAID_PCIeSSDInfoGetter");
}

bool CMSRAID_PCIeSSDInfoGetter::CreateRAIDItem(std::ifstream& stream, std::string line) {
    const CTraceScope trace("CMSRAID_PCIeSSDInfoGetter::CreateRAIDItem");
    if (line.starts_with(BUS_NO_NAME_HEAD)) {
        AddRootItem();
        return ParseBusNo(stream, line);
    }
    if (!line.starts_with(TITLE_BEGIN_NAME)) {
        return !IsKeyValueLine(line) || m_RaidList.empty() ||
               ParseKeyValue(stream, std::move(line), m_RaidList);
    }
    if (!ParseTitle(stream, line)) {
        return false;
    }
    if (m_RaidList.back()->ItemName() == GENERAL_INFO_TITLE_NAME) {
        m_RaidList.splice(m_RaidList.end(), m_BusHeadItemList);
    }
    return true;
}

bool CMSRAID_PCIeSSDInfoGetter::ParseBusNo(std::ifstream& stream, std::string line) {
    const CTraceScope trace("CMSRAID_PCIeSSDInfoGetter::ParseBusNo", line.c_str());
    return ParseHeaderNumber(stream, line, m_BusHeadItemList, BUS_NO_NAME);
}

void CMSRAID_PCIeSSDInfoGetter::AddRootItem() {
    const CTraceScope trace("CMSRAID_PCIeSSDInfoGetter::AddRootItem");
    StartRoot(PCIE_SSD_INFO_ROOT_NAME);
}

void CMSRAID_PCIeSSDInfoGetter::FreeItemList() {
    const CTraceScope trace("CMSRAID_PCIeSSDInfoGetter::FreeItemList");
    DeleteItems(m_BusHeadItemList);
}
