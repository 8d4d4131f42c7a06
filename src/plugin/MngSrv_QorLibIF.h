// The plug-in object: what a management server obtains from CreateLibIF() and calls.
//
//     void* library = dlopen("libqor_MngSrv_QorLib.so", RTLD_NOW | RTLD_LOCAL);
//     auto create = reinterpret_cast<void* (*)()>(dlsym(library, "CreateLibIF"));
//     auto object = static_cast<CMngSrv_QorLibIF*>(create());
//     std::list<CItemDisp*> items;
//     std::string errorCode, noticeCode, errorDetail;
//     if (object->GetRAIDInfo(&items, &errorCode, &noticeCode, &errorDetail)) { ... }
//     object->FreeItemList(&items);
//     // then DeleteLibIF(object), dlclose(library)
//
// The host calls the virtual operations by their position in the table: their order is the binary
// interface and never changes.
//
// The three result texts of every information operation, always in this order:
//   error code   "" on success (see the notice code "02"), else
//                "01" the RAID tool failed            "04" its report was not understood
//                "02" the RAID tool is not installed  "05" it ran into the 150 s time-out
//                "03" its report could not be opened
//   notice code  "", or "01" the tool's version is old or unreadable; the answer is complete all
//                the same, but for PCIe SSDs, of which only a tool from 7.0 on knows,
//                "02" the tool is missing but no RAID physical disk is attached: success with
//                nothing to report, and the error code is "02" too
//   error detail the tool command that failed; "" after error codes "03" and "04"; else "none"
//
// Owner: items appended to a caller's list belong to the caller, who gives them back through
// FreeItemList() (or DeleteItemDisp() one by one). XML text belongs to the plug-in object.
// Exceptions: std::bad_alloc, and std::out_of_range for the few malformed reports that the
// operations name; nothing is leaked then. No other exception leaves the plug-in.
// Threads: one call at a time in a process; the plug-in takes no locks. Any thread may call.
// Signals, environment, locale, working directory: never touched. While the tool runs, the process
// has one child more; a host that waits for children of its own should name them by process id.
//
// Compiles alone as C++11 and later.
#ifndef QOR_PLUGIN_MNGSRV_QORLIBIF_H
#define QOR_PLUGIN_MNGSRV_QORLIBIF_H

#include <list>
#include <string>

class CItemDisp;
class CMngSrv_QorLibMan;
class CSvpPdInfoForm;

class CMngSrv_QorLibIF {
public:
    CMngSrv_QorLibIF();
    CMngSrv_QorLibIF(const CMngSrv_QorLibIF&) = delete;  // owns the serializer manager
    CMngSrv_QorLibIF& operator=(const CMngSrv_QorLibIF&) = delete;

    // Slots 0 and 1. Hosts end the object with DeleteLibIF().
    virtual ~CMngSrv_QorLibIF();

    // Slot 2. Turns the std::list<CItemDisp*> behind `data` into an XML document of `type` 0 whose
    // component element holds `component`. `*out` must be null on entry (out itself is not
    // checked); on success it points at the zero-terminated document, which stays valid until the
    // next XmlSerialize() of this object that is not refused for a null argument or a set *out, and
    // must not be freed. 0 success; 0x01000000 null component or data,
    // or *out already set, or an empty list; 0x02000000 unknown type; 0x03CNNNNN malformed item
    // list (C = 1 order, 2 own parent, 3 flag; NNNNN = number of the item, from 1); 0x04000000
    // document too large.
    virtual unsigned int XmlSerialize(unsigned int type, const char* component, void* data,
                                      char** out);

    // Slot 3. As slot 4, without the error detail.
    virtual unsigned char GetRAIDInfo(std::list<CItemDisp*>* items, std::string* errorCode,
                                      std::string* noticeCode);

    // Slot 4. Appends the items of all RAID controllers, their logical and their physical drives.
    // 1 success, also with nothing to report; 0 failure: the list is empty then and the texts tell
    // why. A null pointer gives 0 and touches nothing. Throws std::out_of_range for a version line
    // of the tool that ends at its colon; the list is empty then and the texts are as at the start:
    // empty, empty and "none".
    virtual unsigned char GetRAIDInfo(std::list<CItemDisp*>* items, std::string* errorCode,
                                      std::string* noticeCode, std::string* errorDetail);

    // Slot 5. As slot 6, without the error detail.
    virtual unsigned char GetPDInfo(long ctrlNo, long enclosure, long slot,
                                    std::list<CItemDisp*>* items, std::string* errorCode,
                                    std::string* noticeCode);

    // Slot 6. Appends everything about one physical drive, SMART data included. The three numbers
    // name the controller and the two parts of the drive's address ("-pd[enclosure:slot]", of which
    // the tool knows the low 32 bits). Results as slot 4, but a missing tool is always a failure:
    // nobody checks whether a card is present. Throws std::out_of_range for a SMART table whose
    // rows are shorter than its columns or whose header ends with "Raw Data"; the list is empty
    // then.
    virtual unsigned char GetPDInfo(long ctrlNo, long enclosure, long slot,
                                    std::list<CItemDisp*>* items, std::string* errorCode,
                                    std::string* noticeCode, std::string* errorDetail);

    // Slot 7. Empties the three texts, asks slot 3 for the two codes, and appends the
    // service-processor form to `binary` as lower-case hexadecimal digits; on failure (0) that of
    // no controller. A null pointer gives 0 and touches nothing. Throws as slot 4, and the three
    // texts are empty then; throws std::bad_alloc for the form with the codes in their texts.
    virtual unsigned char GetCtrlPDInfoBinaryString(std::string* binary, std::string* errorCode,
                                                    std::string* noticeCode);

    // Slot 8. As slot 4, followed by the items of all PCIe SSDs; a host with a supported SSD but
    // without the tool gets failure "02", also where slot 4 succeeds with both codes "02".
    virtual unsigned char GetStorageInfo(std::list<CItemDisp*>* items, std::string* errorCode,
                                         std::string* noticeCode, std::string* errorDetail);

    // Slot 9. Destroys every item and empties the list. Null is harmless.
    virtual void FreeItemList(std::list<CItemDisp*>* items);

    // Slot 10. Runs one tool command ("krzcli ...") with its output going to `resultFile`, which
    // stays; `*exitCode` receives the tool's exit status, 255 until a run completed.
    // 0 success; 1 the tool reported an error; 2 it could not be run (or `exitCode` is null);
    // 3 it is not installed; 4 time-out.
    virtual unsigned int KRZExecCli(const std::string& command, unsigned long* exitCode,
                                    const std::string& resultFile);

    // Not for hosts: the two steps behind slot 7. The second says whether `name` is one of the
    // table's texts before its empty end mark; it is spelled so.
    void ChangeToSvpPdInfoForm(CSvpPdInfoForm* form, std::list<CItemDisp*>* items);
    bool SerchStringList(const std::string& name, const std::string* table);

private:
    CMngSrv_QorLibMan* m_pLibMan;
};

extern "C" {

// Makes one plug-in object, a CMngSrv_QorLibIF. The caller owns it and ends it with DeleteLibIF().
// On lack of memory nothing is left allocated and std::bad_alloc propagates.
__attribute__((visibility("default"))) void* CreateLibIF();

// Destroys an object made by CreateLibIF(), and with it the XML text it handed out. Null is
// harmless.
__attribute__((visibility("default"))) void DeleteLibIF(void* object);

}  // extern "C"

#endif  // QOR_PLUGIN_MNGSRV_QORLIBIF_H
