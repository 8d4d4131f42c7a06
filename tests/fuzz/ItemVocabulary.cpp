// The items that the document and the form know, for the mutation of item lists.
#include "Fuzz.h"

std::vector<std::string_view> qorfuzz::Vocabulary() {
    return {
        " | Controller Information |  | TRUE",
        "Controller Information | ### General Information ### |  | TRUE",
        "### General Information ### | Controller No. | 0 | TRUE",
        "### General Information ### | Controller No. | -1 | TRUE",
        "### General Information ### | Product Name | TRC 3108-8i | TRUE",
        "### General Information ### | PCI Bus/Dev/Func | 3/0/0 | TRUE",
        "Controller Information | ### Firmware/BIOS/Driver Information ### |  | TRUE",
        "### Firmware/BIOS/Driver Information ### | Firmware Package Version |  | FALSE",
        "### Firmware/BIOS/Driver Information ### | Firmware Version | 4.680 | TRUE",
        " | Physical Drive Information |  | TRUE",
        "Physical Drive Information | ### General Information ### |  | TRUE",
        "### General Information ### | PD No. | PD3 | TRUE",
        "### General Information ### | PD No. | 3 | TRUE",
        "### General Information ### | Raw Capacity | 558.912GB | TRUE",
        "### General Information ### | Interface Type | SATA | TRUE",
        "### General Information ### | Media Type | HDD | TRUE",
        "### General Information ### | Product ID | NL600MM0069 | TRUE",
        "### General Information ### | Serial Number | S0M2KX41 | TRUE",
        "### General Information ### | Vendor ID | NORDLYS | TRUE",
        "### General Information ### | PD Status | NO ERROR | TRUE",
        "### General Information ### | PD Status(Detail) | ONLINE | TRUE",
        "### General Information ### | Drive Speed | 6.0Gb/s | TRUE",
        "### General Information ### | Revision Level | N004 | TRUE",
        " |  |  | TRUE",
        " | a",
        "a | b",
        "b | a | x",
        "a | a",
        "a | b | x | MAYBE",
        "",
    };
}
