// Reports all PCIe SSDs of the host ("krzcli -pssdinfo -aAll").
//
//     report  = { ssd }
//     ssd     = "Bus :" number LF { section }
//     section = title LF { key/value LF } LF
//
// Every SSD gets a root item of its own.
#ifndef QOR_GETTERS_CMSRAID_PCIESSDINFOGETTER_H
#define QOR_GETTERS_CMSRAID_PCIESSDINFOGETTER_H

#include "getters/CMSRAID_InfoGetter.h"

class CMSRAID_PCIeSSDInfoGetter : public CMSRAID_InfoGetter {
public:
    static constexpr const char* PCIE_SSD_INFO_ROOT_NAME = "PCIe SSD Information";
    static constexpr const char* BUS_NO_NAME = "Bus No.";
    static constexpr const char* BUS_NO_NAME_HEAD = "Bus :";

    CMSRAID_PCIeSSDInfoGetter();
    ~CMSRAID_PCIeSSDInfoGetter() override;

    bool CreateRAIDItem(std::ifstream& stream, std::string line) override;
    void AddRootItem() override;
    void FreeItemList() override;

    // The header line: its bus number is held until General Information comes.
    bool ParseBusNo(std::ifstream& stream, std::string line);

private:
    CItemListOwner m_BusHeadItemList;
};

#endif  // QOR_GETTERS_CMSRAID_PCIESSDINFOGETTER_H
