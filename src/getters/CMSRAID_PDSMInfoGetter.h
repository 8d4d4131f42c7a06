// Reports one physical drive with its SMART data ("krzcli -pdinfo -pd[a:b]"): all that the physical
// drive getter reports, and a SMART section that runs to the end of the report.
//
//     smart  = title LF { key/value LF } LF [ table ]
//     table  = header LF rule LF { row LF }              the header holds the word "Attribute"
//
// A SATA row is split at white space, but its second cell, the attribute's name, is 40 characters
// wide. A SAS row is cut where the header's column names begin; a line that begins with "[Head"
// labels the rows below it. The items are named as the header names its columns.
#ifndef QOR_GETTERS_CMSRAID_PDSMINFOGETTER_H
#define QOR_GETTERS_CMSRAID_PDSMINFOGETTER_H

#include <vector>

#include "getters/CMSRAID_PDInfoGetter.h"

class CMSRAID_PDSMInfoGetter : public CMSRAID_PDInfoGetter {
public:
    static constexpr const char* SMART_TEMPERATURE_NAME = "Temperature";
    static constexpr const char* SMART_POWER_TIME_NAME = "Power-On Time";
    static constexpr const char* SMART_ATTRIBUTE_NAME = "Attribute";
    static constexpr const char* SMART_DETAIL_SAS_NAME = "SMART Detail(SAS)";
    static constexpr const char* SMART_DETAIL_SATA_NAME = "SMART Detail(SATA)";
    static constexpr const char* SMART_HEAD_NAME = "[Head";
    static constexpr const char* SMART_RAW_DATA_NAME = "Raw Data";
    static constexpr const char* SMART_RAW_DATA_HEAD_NAME = "Raw";

    CMSRAID_PDSMInfoGetter();
    ~CMSRAID_PDSMInfoGetter() override;

    using CMSRAID_PDInfoGetter::GetInfo;
    // The drive at address [`enclosure`:`slot`] of controller `ctrlNo`. Throws std::out_of_range
    // for a table whose rows are too short for its columns, or whose header ends with "Raw Data".
    bool GetInfo(long ctrlNo, long enclosure, long slot, std::list<CItemDisp*>& out);

    bool ParseSMARTInfo(std::ifstream& stream, std::string line) override;
    bool ParseSMARTSATA(std::ifstream& stream, std::string header);
    bool ParseSMARTSAS(std::ifstream& stream, std::string header);

private:
    bool ParseSummary(std::ifstream& stream);
    bool ParseTable(std::ifstream& stream);
    bool AddRow(const char* group, const std::vector<std::string>& columns,
                const std::vector<std::string>& cells, const std::string& line);
};

#endif  // QOR_GETTERS_CMSRAID_PDSMINFOGETTER_H
