// What the versions of the RAID tool print and understand differently.
#ifndef QORSIM_TOOLGENERATION_H
#define QORSIM_TOOLGENERATION_H

#include <string>

namespace qorsim {

struct CToolGeneration {
    bool knowsNoSmart;     // from 4.0: the option "-nosmart"
    bool hasCurrentNames;  // from 4.0: today's key and section names, and the values new with them
    bool knowsPcieSsd;     // from 7.0: the command "-pssdinfo"
};

// The generation by the number before the first dot; a version without a number is the first one.
CToolGeneration GenerationOf(const std::string& version);

}  // namespace qorsim

#endif  // QORSIM_TOOLGENERATION_H
