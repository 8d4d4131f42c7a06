// A library that check-floor must refuse.
#include <string.h>

extern "C" __attribute__((visibility("default"))) const char* AboveFloor(int error) {
    return strerrordesc_np(error);
}
