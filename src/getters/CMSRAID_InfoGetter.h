// Base of all information getters: runs one tool command into a result file, reads the report line
// by line, and hands the items that its subclass made of them to the caller.
//
// The report's grammar, as far as all getters share it:
//
//     report    = { line LF } [ line ]                   a CR before the LF is trimmed away
//     title     = "### " text " ###"                     at the first column; opens a section
//     key/value = key ":" value                          split at the first colon, both trimmed
//
// What other lines mean, each getter decides in CreateRAIDItem().
//
// Owner: a getter owns the items it is building; a successful run hands them to the caller's list,
// a failed one destroys them. Nothing leaks when an exception passes through. Threads: one getter,
// one thread. A getter may run several times.
#ifndef QOR_GETTERS_CMSRAID_INFOGETTER_H
#define QOR_GETTERS_CMSRAID_INFOGETTER_H

#include <fstream>
#include <list>
#include <string>

#include "base/ItemList.h"
#include "base/ServerPaths.h"
#include "cli/ResultFile.h"
#include "getters/Text.h"

// A report whose items would take more memory than a host can be expected to have.
struct CReportTooLarge {};

class CMSRAID_InfoGetter {
public:
    static constexpr const char* PROVIDER_TMP_DIR = PROVIDER_TMP_DIRECTORY;
    static constexpr const char* MSRAID_DIR = RESULT_DIRECTORY_NAME;
    static constexpr const char* KRZ_RSLT_FILE = RESULT_FILE_END;
    static constexpr const char* GENERAL_INFO_TITLE_NAME = "### General Information ###";
    static constexpr const char* TITLE_BEGIN_NAME = "### ";
    static constexpr const char* TITLE_END_NAME = " ###";
    static constexpr const char* RG_NO_HEAD = "RG";
    static constexpr const char* S_RG_NO_HEAD = "sRG";
    static constexpr const char* CACHE_RG_NO_HEAD = "scRG";
    static constexpr const char* LD_NO_NAME = "LD No.";
    static constexpr const char* PD_NO_NAME = "PD No.";
    static constexpr const char* RG_NO_NAME = "RG No.";
    static constexpr const char* CTRL_NO_NAME_HEAD = "RAID Controller";

    CMSRAID_InfoGetter();
    CMSRAID_InfoGetter(const CMSRAID_InfoGetter&) = delete;  // owns items
    CMSRAID_InfoGetter& operator=(const CMSRAID_InfoGetter&) = delete;

    // The order of the virtual operations is fixed; slots 0 and 1 are the destructor's.
    virtual ~CMSRAID_InfoGetter();

    // Runs the getter's command for controller `ctrlNo` and appends its items to `out`. False on
    // failure: `out` is as it was, ErrCode() and ErrDetail() tell why.
    virtual bool GetInfo(long ctrlNo, std::list<CItemDisp*>& out);
    // The same with the command as it stands.
    virtual bool GetInfo(std::list<CItemDisp*>& out);

    // Offers every line to CreateRAIDItem() until one is rejected. Returns the last answer; true
    // for an empty report.
    virtual bool Parse(std::ifstream& stream, std::string command);

    // Classifies one line and makes its items; may read further lines. False rejects the report.
    virtual bool CreateRAIDItem(std::ifstream& stream, std::string line) = 0;

    // Appends a section title under the root item and makes it the current section.
    virtual bool ParseTitle(std::ifstream& stream, std::string line);

    // Appends a key/value line under the current section to `list`.
    virtual bool ParseKeyValue(std::ifstream& stream, std::string line,
                               std::list<CItemDisp*>& list);

    // Appends the getter's root item.
    virtual void AddRootItem();

    // Destroys the items that were held for a section that never came.
    virtual void FreeItemList();

    virtual void Trim(std::string& text);

    // A path for one result file, never the same twice. Makes the directory.
    static std::string GetRsltFilePath();

    // Counts what the reports take together with those of `other`, which must live as long, and
    // with what `items` take.
    void CountTogetherWith(CMSRAID_InfoGetter& other) { m_CountedMemory = other.m_CountedMemory; }
    void CountAlso(const std::list<CItemDisp*>& items);

    // What the last failures were: two-character codes, the latest first; and the tool command.
    const std::string& ErrCode() const { return m_ErrCode; }
    const std::string& ErrDetail() const { return m_ErrDetail; }

protected:
    bool _GetInfo(const std::string& command, std::list<CItemDisp*>& out);

    // Takes note of a tool run that failed with a code of CMSRAID_KRZ.
    void NoteRunFailure(unsigned int result, const std::string& command);
    // Opens the report of a run; takes note if that fails.
    bool OpenReport(const std::string& path, CResultStream& stream);
    // To be asked when the report at `path` has been read: false, and takes note, if reading failed
    // before its end or it has become too large. Half a report must not pass for a whole one.
    bool IsReadToTheEnd(const std::string& path, const std::ifstream& stream);
    // Reads the next line of a section, trimmed. False at the empty line or the end of the report.
    bool ReadSectionLine(std::ifstream& stream, std::string& line);
    // Appends the key/value lines of a section to the items being built and shows each new item to
    // `onItem`; other lines are skipped. False if a line was rejected.
    template <class OnItem>
    bool ParsePairs(std::ifstream& stream, OnItem onItem);
    // Puts the line that getline has just delivered back to be read again.
    static void UngetLine(std::ifstream& stream, const std::string& line);
    // The name of the current section item, the parent of what follows.
    const std::string& CurTitleName() const { return (*m_CurTitle)->ItemName(); }
    // As the functions of this name make an item and put it into the list. Throw CReportTooLarge
    // where the items of the request's reports would take more than ITEM_MEMORY.
    ItemPosition InsertItem(std::list<CItemDisp*>& list, ItemPosition position,
                            const std::string& parentName, const std::string& itemName,
                            const std::string& itemValue, EItemFlag flag = EItemFlag::SHOWN);
    ItemPosition AddItem(std::list<CItemDisp*>& list, const std::string& parentName,
                         const std::string& itemName, const std::string& itemValue,
                         EItemFlag flag = EItemFlag::SHOWN);
    // Counts what is made of a report besides items. Throws likewise.
    void TakeMemory(size_t bytes);
    // Takes note of a report that made too much of itself; false.
    bool RefuseAsTooLarge(const std::string& path);
    // Appends an item for a value that the tool did not print to the current section.
    void AddPlaceholder(const char* name);
    // Holds the number of a header line ("RAID Controller : 0") as item `name` in `held` until the
    // General Information section comes.
    bool ParseHeaderNumber(std::ifstream& stream, const std::string& line,
                           std::list<CItemDisp*>& held, const char* name);
    // Appends a root item and makes it the current root and section.
    void StartRoot(const char* rootName);

    std::string m_ErrCode;
    std::string m_ErrDetail;
    std::string m_CommandFormat;       // one "%s", if any, stands for the controller number
    std::list<CItemDisp*> m_RaidList;  // the items being built; empty between runs
    ItemPosition m_RootItem;           // valid while m_RaidList has items
    ItemPosition m_CurTitle;           // likewise; may stand in a list of retired titles

private:
    void NoteUnreadableReport(const std::string& path);
    bool ParseReport(const std::string& path, const std::string& command,
                     std::list<CItemDisp*>& out);

    size_t m_ItemMemory = 0;                  // about what the items of all reports so far take
    size_t* m_CountedMemory = &m_ItemMemory;  // may be another getter's
    std::string m_Value;                      // of the last key/value line, kept for its memory
};

template <class OnItem>
bool CMSRAID_InfoGetter::ParsePairs(std::ifstream& stream, OnItem onItem) {
    for (std::string line; ReadSectionLine(stream, line);) {
        if (!IsKeyValueLine(line)) {
            continue;
        }
        if (!ParseKeyValue(stream, line, m_RaidList)) {
            return false;
        }
        onItem(*m_RaidList.back());
    }
    return true;
}

#endif  // QOR_GETTERS_CMSRAID_INFOGETTER_H
