// Throwing many damaged reports at a getter: a quick tool, the damage, and what must hold after it.
#ifndef QORTEST_REPORTSTRESS_H
#define QORTEST_REPORTSTRESS_H

#include <functional>
#include <memory>
#include <random>
#include <string>

#include "getters/CMSRAID_InfoGetter.h"

namespace qortest {

using CRandom = std::mt19937;

// Makes the RAID tool print `report`, whatever it is asked. Quicker than CStandInTool, so that a
// test can afford thousands of runs; checks nothing.
void LetToolPrint(const std::string& report);

// `report` with one to three lines deleted, doubled or swapped, or bytes changed.
std::string DamagedReport(const std::string& report, CRandom& random);

// Runs `getter` on `report`. Demands that it either made a well-formed list (every parent stands
// before its children, placeholders are empty) or failed with code "04" and an empty list.
void ExpectItemsOrCleanFailure(CMSRAID_InfoGetter& getter, const std::string& report);

using CGetterFactory = std::function<std::unique_ptr<CMSRAID_InfoGetter>()>;

// The above for the report cut at every byte, a fresh getter each.
void ExpectEveryBeginningIsHandled(const CGetterFactory& makeGetter, const std::string& report);
// The above for `rounds` damaged forms of the report, one getter for all; undamaged, the report
// must give the same items afterwards as before.
void ExpectDamageIsHandled(CMSRAID_InfoGetter& getter, const std::string& report, unsigned int seed,
                           int rounds);

}  // namespace qortest

#endif  // QORTEST_REPORTSTRESS_H
