// The document that `qorctl page` writes: one HTML file that needs nothing else; docs/page.md
// describes it.
//
// The reports stand in it as JSON, each in an element of its own that a browser does not look into
// before somebody opens the server. Beside them stands plain HTML for those without scripts.
//
//     CPage page;
//     page.Add(ReadServerReport("web01.json"));
//     WriteOut(page.Text());
#ifndef QORCTL_PAGE_PAGE_H
#define QORCTL_PAGE_PAGE_H

#include <string>
#include <vector>

#include "page/PlainFleet.h"
#include "page/ServerReport.h"

namespace qorctl {

class CPage {
public:
    void Add(const CServerReport& report);

    // One report is the page of that server; otherwise a list of all.
    std::string Text();

private:
    std::vector<std::string> m_Data;  // of each server: one text would be copied as it grows
    std::string m_PlainServer;        // of the first, while it is the only one
    std::string m_Title;
    std::vector<CFleetLine> m_Lines;
};

}  // namespace qorctl

#endif  // QORCTL_PAGE_PAGE_H
