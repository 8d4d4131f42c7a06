#include "svp/SvpNameTables.h"

const std::string tsCtrlGenList[] = {"Controller No.", "Product Name", "PCI Bus/Dev/Func", ""};

const std::string tsCtrlVerList[] = {"Firmware Package Version", "Firmware Version", ""};

const std::string tsPdGenList[] = {"PD No.",      "Raw Capacity",   "Interface Type",
                                   "Media Type",  "Product ID",     "Serial Number",
                                   "Vendor ID",   "PD Status",      "PD Status(Detail)",
                                   "Drive Speed", "Revision Level", ""};
