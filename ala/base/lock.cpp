#include "ala/base/lock.h"

THR_mutex_t timeLock = {};
THR_mutex_t localeLock = {};

void ALA__InitMutex() {
    THR_InitMutex(&localeLock);
    THR_InitMutex(&timeLock);
}
