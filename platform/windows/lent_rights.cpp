// Programs on Windows have no rights beyond their caller's.
#include "platform/os.h"

int OS_HasLentRights() {
    return 0;
}

void OS_UseCallersRights() {}

void OS_UseLentRights() {}
