// The section of one controller in the service-processor form, its drives' sections included:
//
//     offset  width  content
//     0       1      m_CtrlNo
//     1       1      m_PDCountOnCtrl: number of drive sections
//     2       2      m_CtrlAndPDSectionSize: bytes of this section with its drives, little-endian
//     4       2      m_CtrlSectionSize: bytes of this section without its drives, little-endian
//     6       ...    the controller's items, then the drive sections
//
// Thread rule: a plain record; one thread at a time.
#ifndef QOR_SVP_CSVPCTRLPDINFO_H
#define QOR_SVP_CSVPCTRLPDINFO_H

#include <cstdint>
#include <string>
#include <vector>

#include "svp/CSvpCtrlPdItem.h"
#include "svp/CSvpPdInfo.h"

class CSvpCtrlPdInfo {
public:
    CSvpCtrlPdInfo();
    CSvpCtrlPdInfo(const CSvpCtrlPdInfo&) = default;
    CSvpCtrlPdInfo(CSvpCtrlPdInfo&&) = default;
    CSvpCtrlPdInfo& operator=(const CSvpCtrlPdInfo&) = default;
    CSvpCtrlPdInfo& operator=(CSvpCtrlPdInfo&&) = default;
    virtual ~CSvpCtrlPdInfo();

    // Back to a record without number, sizes, items and drives; also what makes a moved-from one
    // usable.
    void InitForm();

    void SetCtrlNo(std::uint8_t number) { m_CtrlNo = number; }

    // Appends one item of the controller itself.
    void AddItem(const std::string& label, const std::string& value);

    // Appends the section of one drive.
    void AddPD(CSvpPdInfo pd);

    // Computes the sizes of this section and its drives'. The sizes wrap beyond 65,535, the drive
    // count beyond 255. The trap: drives are added to the count that is there, so a second call
    // counts them twice.
    void SetDataSize();

    // Appends the section's bytes as hexadecimal text. `out` is never null.
    void DumpMe(std::string* out) const;

    void OutPutMemberToDebugLog() const;

    // Bytes that the section takes in the form, as SetDataSize() left it.
    std::uint64_t DataSize() const { return m_DumpSize; }
    std::uint8_t CtrlNo() const { return m_CtrlNo; }
    std::uint8_t PDCountOnCtrl() const { return m_PDCountOnCtrl; }
    std::uint16_t CtrlAndPDSectionSize() const { return m_CtrlAndPDSectionSize; }
    std::uint16_t CtrlSectionSize() const { return m_CtrlSectionSize; }
    const std::vector<CSvpCtrlPdItem>& Items() const { return m_Items; }
    const std::vector<CSvpPdInfo>& PDs() const { return m_PDs; }

private:
    std::uint64_t m_DumpSize = 0;
    std::uint8_t m_CtrlNo = 0;
    std::uint8_t m_PDCountOnCtrl = 0;
    std::uint16_t m_CtrlAndPDSectionSize = 0;
    std::uint16_t m_CtrlSectionSize = 0;
    std::vector<CSvpCtrlPdItem> m_Items;
    std::vector<CSvpPdInfo> m_PDs;
};

#endif  // QOR_SVP_CSVPCTRLPDINFO_H
