#include "ala/base/lock.h"

using namespace qvledger;

THR_mutex_t qvledger::timeLock = {};
THR_mutex_t qvledger::localeLock = {};

void ALA__InitMutex() {
    THR_InitMutex(&localeLock);
    THR_InitMutex(&timeLock);
}
