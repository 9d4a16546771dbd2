// The domain of the machine the program runs on.
#pragma once

#include "ala/access/credential.h"

// The machine's domain, looked up once per process, and its type, SEC_DOM_NT.  The text belongs to the
// facility.  Null, with the type 0, when the look-up could not be run.
const char *ALA__GetHostDomain(SEC_domType_t *outp_domType);
const char *ALA__GetUserDomain(SEC_domType_t *outp_domType);

namespace qvledger {

// The once-only look-up behind both.
void TOnceGetDomainName();

} // namespace qvledger
