// The checks of `qorctl doctor`, a source file for each group.
#ifndef QORCTL_DOCTOR_CHECKS_H
#define QORCTL_DOCTOR_CHECKS_H

#include <sys/types.h>

#include "doctor/Check.h"

namespace qorctl::doctor {

// LibraryChecks.cpp
CFinding ExaminePlugin(CServerFacts& facts);
CFinding ExamineExports(CServerFacts& facts);
CFinding ExamineCommonLibrary(CServerFacts& facts);

// InstallChecks.cpp
CFinding ExamineInstallPath(CServerFacts& facts);

// ListChecks.cpp
CFinding ExamineRaidList(CServerFacts& facts);
CFinding ExamineSsdList(CServerFacts& facts);

// DeviceChecks.cpp
CFinding ExamineDeviceList(CServerFacts& facts);
CFinding ExamineLiveBus(CServerFacts& facts);

// ToolChecks.cpp
CFinding ExamineToolPresence(CServerFacts& facts);
CFinding ExamineToolPermissions(CServerFacts& facts);
CFinding ExamineToolForRaid(CServerFacts& facts);
CFinding ExamineToolForSsds(CServerFacts& facts);
CFinding ExamineLsiUtility(CServerFacts& facts);

// ResultChecks.cpp
CFinding ExamineResultDirectory(CServerFacts& facts);
CFinding ExamineResultSpace(CServerFacts& facts);
CFinding ExamineResultMode(CServerFacts& facts);
CFinding ExamineResultOwner(CServerFacts& facts);
CFinding ExamineLeftovers(CServerFacts& facts);
// A directory of `owner`, for a server that runs as `user`.
CFinding JudgeOwner(uid_t owner, uid_t user);

// TraceChecks.cpp
CFinding ExamineTraceSettings(CServerFacts& facts);
CFinding ExamineTraceSink(CServerFacts& facts);
// The sink syslog, whose lines go to the socket `path`.
CFinding JudgeSyslog(const std::string& path);

}  // namespace qorctl::doctor

#endif  // QORCTL_DOCTOR_CHECKS_H
