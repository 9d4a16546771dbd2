// Programs on Windows have no rights beyond the calling user's.
#include "platform/os.h"

int OS_HasLentRights() {
    return 0;
}

void OS_UseCallersRights() {}

void OS_UseLentRights() {}
