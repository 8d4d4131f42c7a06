#include "plugin/MngSrv_QorLibIF.h"
