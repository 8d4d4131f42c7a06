#include "host/Request.h"

#include <fmt/format.h>

namespace qorctl {

CRequest RaidRequest() {
    return {.operation =
                [](CMngSrv_QorLibIF& object, CItemList& items, CReply& reply) {
                    return object.GetRAIDInfo(&items, &reply.texts.errorCode,
                                              &reply.texts.noticeCode, &reply.texts.detail) != 0;
                },
            .subject = ESubject::RAID,
            .nothing = "no RAID controller with something to show was found on this server"};
}

CRequest StorageRequest() {
    return {.operation =
                [](CMngSrv_QorLibIF& object, CItemList& items, CReply& reply) {
                    return object.GetStorageInfo(&items, &reply.texts.errorCode,
                                                 &reply.texts.noticeCode, &reply.texts.detail) != 0;
                },
            .subject = ESubject::STORAGE,
            .nothing =
                "no RAID controller or PCIe SSD with something to show was found on this server"};
}

CRequest DriveRequest(const CDriveAddress& address) {
    return {.operation =
                [address](CMngSrv_QorLibIF& object, CItemList& items, CReply& reply) {
                    return object.GetPDInfo(address.controller, address.enclosure, address.slot,
                                            &items, &reply.texts.errorCode, &reply.texts.noticeCode,
                                            &reply.texts.detail) != 0;
                },
            .subject = ESubject::DRIVE,
            .nothing = fmt::format("the RAID tool described no drive at [{}:{}] of controller {}",
                                   address.enclosure, address.slot, address.controller),
            .controller = address.controller};
}

}  // namespace qorctl
