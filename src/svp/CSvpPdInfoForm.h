// The service-processor form: the RAID controllers and their physical drives as one binary record,
// handed to the service processor as hexadecimal text.
//
//     offset  width  content
//     0       5      m_Signature: zero
//     5       1      m_FormatRevision: zero
//     6       2      m_Reserved1: zero
//     8       4      m_TotalDataSize: bytes of the whole form, little-endian
//     12      1      m_CtrlCount: number of controller sections
//     13      1      m_PDCount: number of drive sections of all controllers
//     14      2      m_Reserved2: zero
//     16      ...    the controller sections (CSvpCtrlPdInfo), without padding
//
// Use: fill it, call SetDataSize() once, then DumpMe().
// Thread rule: a plain record; one thread at a time.
#ifndef QOR_SVP_CSVPPDINFOFORM_H
#define QOR_SVP_CSVPPDINFOFORM_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "svp/CSvpCtrlPdInfo.h"

class CSvpPdInfoForm {
public:
    CSvpPdInfoForm();
    CSvpPdInfoForm(const CSvpPdInfoForm&) = default;
    CSvpPdInfoForm(CSvpPdInfoForm&&) = default;
    CSvpPdInfoForm& operator=(const CSvpPdInfoForm&) = default;
    CSvpPdInfoForm& operator=(CSvpPdInfoForm&&) = default;
    virtual ~CSvpPdInfoForm();

    // Back to a form of zeros without controllers.
    void InitForm();

    // Appends the section of one controller.
    void AddCtrl(CSvpCtrlPdInfo ctrl);

    // Computes every size and count, those of the sections included. The counts wrap beyond 255,
    // the total size beyond 32 bits. The trap: sections are added to the counts that are there, so
    // a second call counts them twice.
    void SetDataSize();

    // Appends the form's bytes as hexadecimal text. `out` is never null.
    void DumpMe(std::string* out) const;

    void OutPutMemberToDebugLog() const;

    // Two digits for each of the `count` bytes at `bytes`, in order, zero bytes included; none for
    // a negative count.
    static std::string StringToBinString(const unsigned char* bytes, int count);

    // Bytes of the whole form, as SetDataSize() left it.
    std::uint64_t DataSize() const { return m_DumpSize; }
    std::uint32_t TotalDataSize() const { return m_TotalDataSize; }
    std::uint8_t CtrlCount() const { return m_CtrlCount; }
    std::uint8_t PDCount() const { return m_PDCount; }
    const std::vector<CSvpCtrlPdInfo>& Ctrls() const { return m_Ctrls; }

private:
    std::uint64_t m_DumpSize = 0;
    std::array<unsigned char, 5> m_Signature = {};
    std::array<unsigned char, 1> m_FormatRevision = {};
    std::array<unsigned char, 2> m_Reserved1 = {};
    std::uint32_t m_TotalDataSize = 0;
    std::uint8_t m_CtrlCount = 0;
    std::uint8_t m_PDCount = 0;
    std::array<unsigned char, 2> m_Reserved2 = {};
    std::vector<CSvpCtrlPdInfo> m_Ctrls;
};

#endif  // QOR_SVP_CSVPPDINFOFORM_H
