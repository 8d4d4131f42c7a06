#include "plugin/ComLib.h"
