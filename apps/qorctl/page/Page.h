// The document that `qorctl page` writes: one HTML file that needs nothing else; docs/page.md
// describes it.
//
// The reports stand in it as JSON, each in an element of its own that a browser does not look into
// before somebody opens the server. Beside them stands plain HTML for those without scripts.
//
// The reports stand behind the list of servers, which is known when the last one was added: they
// wait on disk, and the memory is that of one report and of the list.
//
//     CPage page;
//     page.Add(ReadServerReport("web01.json"));
//     page.Give(take);
#ifndef QORCTL_PAGE_PAGE_H
#define QORCTL_PAGE_PAGE_H

#include <string>
#include <vector>

#include "page/PlainFleet.h"
#include "page/ServerReport.h"
#include "page/Spool.h"
#include "terminal/Pieces.h"

namespace qorctl {

class CPage {
public:
    void Add(const CServerReport& report);

    // One report is the page of that server; otherwise a list of all. Any number of times. False,
    // with errno set, when a piece is not taken, or a report is lost because no disk took it.
    bool Give(const CTakePiece& take);

private:
    bool GivePlain(const CTakePiece& take);

    CSpool m_Data;
    std::string m_PlainServer;  // of the first, while it is the only one
    std::string m_Title;
    std::vector<CFleetLine> m_Lines;
};

}  // namespace qorctl

#endif  // QORCTL_PAGE_PAGE_H
