#include "Reports.h"

namespace qorsim {

void ReportVersion(const CHost& host, CReport& report) {
    report.Line("RAID Management Command Line Interface");
    report.Blank();
    report.Key("Product Name", "krzcli");
    report.Key("Product Version", host.tool.version);
    report.Key("Interface", "Linux x86_64");
}

}  // namespace qorsim
