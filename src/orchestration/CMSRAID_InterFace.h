// Decides for each request whether there is anything to report, whether the RAID tool can report
// it, which getters run in which order, and how their failures reach the caller's three texts.
//
// The texts are, in order: error code, notice code, error detail; src/plugin/MngSrv_QorLibIF.h
// lists the codes. No pointer may be null. Created for one request; holds no data.
#ifndef QOR_ORCHESTRATION_CMSRAID_INTERFACE_H
#define QOR_ORCHESTRATION_CMSRAID_INTERFACE_H

#include <list>
#include <string>

class CItemDisp;

// The error detail where no command is to be named.
inline constexpr const char* NO_DETAIL = "none";

class CMSRAID_InterFace {
public:
    CMSRAID_InterFace();
    CMSRAID_InterFace(const CMSRAID_InterFace&) = delete;  // one request, one object
    CMSRAID_InterFace& operator=(const CMSRAID_InterFace&) = delete;
    virtual ~CMSRAID_InterFace();

    // Appends, per controller, its own items, its logical drives' and its physical drives'. 1 on
    // success, also if there is nothing to report; 0 on failure: `list` is empty then.
    virtual unsigned char GetRAIDInfo(std::list<CItemDisp*>* list, std::string* errCode,
                                      std::string* notice, std::string* detail);

    // Appends the items of one drive, SMART data included, straight to `list`. The three numbers go
    // to the SMART getter as they are. No check whether a supported card is present.
    virtual unsigned char GetPDInfo(long ctrlNo, long enclosure, long slot,
                                    std::list<CItemDisp*>* list, std::string* errCode,
                                    std::string* notice, std::string* detail);

    // GetRAIDInfo, then the items of all PCIe SSDs if one is present and the tool knows of them.
    virtual unsigned char GetStorageInfo(std::list<CItemDisp*>* list, std::string* errCode,
                                         std::string* notice, std::string* detail);

    // Destroys every item and empties the list.
    virtual void FreeItemList(std::list<CItemDisp*>* list);
};

#endif  // QOR_ORCHESTRATION_CMSRAID_INTERFACE_H
