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

inline constexpr const char* OLD_TEXT = "before";  // in a result text, before the request

// What a request came to.
struct COutcome {
    unsigned int result = 0;
    std::list<CItemDisp*> items;
    std::string errorCode = OLD_TEXT;
    std::string noticeCode = OLD_TEXT;
    std::string errorDetail = OLD_TEXT;
    std::string text;  // XML, the service-processor form or an exit status
};

// The result texts that a request fills.
enum class ETexts { NONE, CODES, CODES_AND_DETAIL };

// The items and the text, readable.
std::string Content(const COutcome& outcome);

struct CRequest {
    const char* name;  // fit for a test's name
    ETexts texts;
    // Changes the server of LayOutServer() for this request.
    std::function<void()> prepare;
    // Makes the request; `items` is the list of an earlier request.
    std::function<void(CMngSrv_QorLibIF&, std::list<CItemDisp*>& items, COutcome&)> ask;
    // What it comes to when nothing fails: the verdict, how many different answers there are on
    // servers with both devices, either and none, and the file of KRZExecCli.
    std::string whole;
    size_t answers;
    std::string file;
    // The verdicts that it may have with a failure on the way.
    std::vector<std::string> failures;
    std::vector<std::string> successes;
    // A quick test lets every `stride`-th call fail: more than 1 where many tool runs take time.
    long stride;
};

inline constexpr const char* TOOL = "/opt/tarmica/krz/cli/krzcli";
inline constexpr const char* RAID_INI = "RaidVCFac.ini";
inline constexpr const char* SSD_INI = "PciessdVCFac.ini";
inline constexpr const char* RAID_CARD = "02:00.0_1000:005d_0000_02\n";
inline constexpr const char* SSD = "03:00.0_144d:a821_0000_00\n";
inline constexpr const char* VERSION_REPORT = "Product Version : 7.0\n";
inline constexpr const char* EXEC_RESULT = "/opt/tarmica/exec.txt";
inline constexpr const char* PCI_BUS = "/opt/tarmica/bus";  // to be mounted over the kernel's

// Makes the tool's version unreadable.
void HideVersion();

// A RAID controller with a drive, and an SSD; `traceLevels` go to a file.
void LayOutServer(int traceLevels);

const std::vector<CRequest>& Requests();
// How many of them make system calls: all but the last.
inline size_t RequestsWithSystemCalls() {
    return Requests().size() - 1;
}

// The result and the codes; of a request without codes the result.
std::string Verdict(const CRequest& request, const COutcome& outcome);

}  // namespace qortest

#endif  // QORTEST_REQUEST_H
