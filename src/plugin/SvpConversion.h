// Picks the controller and drive items out of a display item list and fills the service-processor
// form with them.
//
// The list is read once, in order. A "Controller Information" root starts a controller, a
// "Physical Drive Information" root a drive of the controller before it. Of a controller the
// general and the firmware block are read, of a drive the general block; which items of a block
// count is said by the tables of svp/SvpNameTables.h.
//
// Owner: the items stay the caller's and are only read; the form gets copies of the texts.
// Thread rule: one thread at a time.
#ifndef QOR_PLUGIN_SVPCONVERSION_H
#define QOR_PLUGIN_SVPCONVERSION_H

#include <list>
#include <string>
#include <string_view>

#include "plugin/ItemDisp.h"
#include "svp/CSvpCtrlPdInfo.h"
#include "svp/CSvpPdInfo.h"
#include "svp/CSvpPdInfoForm.h"

class CSvpConversion {
public:
    // Appends a section to `form` (never null) for each controller of `items` (no null among them)
    // that has at least one item, with a section for each of its drives that has at least one; the
    // form's sizes and counts are not computed. Throws std::bad_alloc only; the form then holds the
    // controllers finished so far.
    static void Convert(CSvpPdInfoForm* form, const std::list<CItemDisp*>& items);

    // True if `name` is one of the table's texts before the empty one that ends it, byte by byte.
    static bool SerchStringList(const std::string& name, const std::string* table);

private:
    enum class MODE { NONE, CONTROLLER, PD };

    explicit CSvpConversion(CSvpPdInfoForm* form);

    // `next` is the item that follows, null behind the last one.
    void TakeItem(const CItemDisp& item, const CItemDisp* next);
    void StartCtrl();
    void StartPD();
    void TakeCtrlItem(const CItemDisp& item, const CItemDisp* next);
    void TakePDItem(const CItemDisp& item, const CItemDisp* next);
    void EndBlock(std::string_view title, const CItemDisp* next);
    void FlushPD();
    void FlushCtrl();

    CSvpPdInfoForm* m_pForm;
    CSvpCtrlPdInfo m_Ctrl;
    CSvpPdInfo m_PD;
    MODE m_Mode = MODE::NONE;
};

#endif  // QOR_PLUGIN_SVPCONVERSION_H
