#include "plugin/ComLib.h"

void CTraceUtility::WriteDebug(const char*, TRACE_DBG_LEVEL, const char*, ...) {}
