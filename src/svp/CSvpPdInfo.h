// The section of one physical drive in the service-processor form:
//
//     offset  width  content
//     0       1      m_PDNo
//     1       2      m_PDSectionSize: bytes of this section, little-endian
//     3       ...    the items
//
// Thread rule: a plain record; one thread at a time.
#ifndef QOR_SVP_CSVPPDINFO_H
#define QOR_SVP_CSVPPDINFO_H

#include <cstdint>
#include <string>
#include <vector>

#include "svp/CSvpCtrlPdItem.h"

class CSvpPdInfo {
public:
    CSvpPdInfo();
    CSvpPdInfo(const CSvpPdInfo&) = default;
    CSvpPdInfo(CSvpPdInfo&&) = default;
    CSvpPdInfo& operator=(const CSvpPdInfo&) = default;
    CSvpPdInfo& operator=(CSvpPdInfo&&) = default;
    virtual ~CSvpPdInfo();

    // Back to a record without number, sizes and items; also what makes a moved-from one usable.
    void InitForm();

    void SetPDNo(std::uint8_t number) { m_PDNo = number; }

    // Appends one item.
    void AddItem(const std::string& label, const std::string& value);

    // Drops every item unless the section starts with all the names of tsPdGenList but the first,
    // in that order and each with a value: a drive is described completely or by its number only.
    void CheckMyItem();

    // Computes the sizes from the items. The section size wraps beyond 65,535.
    void SetDataSize();

    // Appends the section's bytes as hexadecimal text. `out` is never null.
    void DumpMe(std::string* out) const;

    void OutPutMemberToDebugLog() const;

    // Bytes that the section takes in the form, as SetDataSize() left it.
    std::uint64_t DataSize() const { return m_DumpSize; }
    std::uint8_t PDNo() const { return m_PDNo; }
    std::uint16_t PDSectionSize() const { return m_PDSectionSize; }
    const std::vector<CSvpCtrlPdItem>& Items() const { return m_Items; }

private:
    bool IsComplete() const;

    std::uint64_t m_DumpSize = 0;
    std::uint8_t m_PDNo = 0;
    std::uint16_t m_PDSectionSize = 0;
    std::vector<CSvpCtrlPdItem> m_Items;
};

#endif  // QOR_SVP_CSVPPDINFO_H
