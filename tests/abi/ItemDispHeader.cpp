#include "plugin/ItemDisp.h"
