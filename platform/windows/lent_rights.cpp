// No program lends rights to its caller here.
#include "platform/os.h"

int OS_HasLentRights() {
    return 0;
}

void OS_UseCallersRights() {}

void OS_UseLentRights() {}
