// The requests of a host, each with a small server that answers it in few steps, so that every step
// can be made to fail.
#ifndef QORTEST_REQUEST_H
#define QORTEST_REQUEST_H

#include <functional>
#include <list>
#include <string>
#include <vector>

#include "plugin/MngSrv_QorLibIF.h"

namespace qortest {

// What a request came to.
struct COutcome {
    unsigned int result = 0;
    std::list<CItemDisp*> items;
    std::string errorCode;
    std::string noticeCode;
    std::string errorDetail;
    std::string text;  // XML or the service-processor form
};

// The items and the text, readable.
std::string Content(const COutcome& outcome);
// The result and the codes.
std::string Verdict(const COutcome& outcome);

struct CRequest {
    const char* name;  // fit for a test's name
    // Changes the server of LayOutServer() for this request.
    std::function<void()> prepare;
    // Makes the request; `items` is the list of an earlier request.
    std::function<void(CMngSrv_QorLibIF&, std::list<CItemDisp*>& items, COutcome&)> ask;
    // The verdicts that a failure on the way may have, and how much of the content there is then.
    std::vector<std::string> failures;
    std::vector<std::string> successes;
    // A quick test lets every `stride`-th call fail: more than 1 where many tool runs take time.
    long stride;
};

inline constexpr const char* EXEC_RESULT = "/opt/tarmica/exec.txt";
inline constexpr const char* PCI_BUS = "/opt/tarmica/bus";  // to be mounted over the kernel's

// A RAID controller with a drive and two SSDs; `traceLevels` go to a file.
void LayOutServer(int traceLevels);

const std::vector<CRequest>& Requests();

}  // namespace qortest

#endif  // QORTEST_REQUEST_H
