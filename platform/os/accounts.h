// The calling user, and accounts by name and by security identifier (SID).
#pragma once

#include "platform/os/types.h"

#ifndef _WIN32

enum SID_NAME_USE : std::int32_t {
    SidTypeUser = 1,
    SidTypeGroup = 2,
    SidTypeAlias = 4,
    SidTypeWellKnownGroup = 5
};

extern "C" {

// The account name of the real user id; of "DOMAIN\user" or "user@domain" only the user.  inoutp_size: bytes
// of the buffer on input, of the name with its NUL on output.  Non-zero is success.  Fails with 122 and the
// needed size when the buffer is too small, with 1332 when the user has no account.
BOOL GetUserNameA(char *outp_name, DWORD *inoutp_size);

// SID, domain and kind of an account.  Non-zero is success.  Fails with 122 and both needed sizes (the
// domain's with its NUL) when a buffer is too small, with 1332 for an unknown name.  On success the domain's
// size does not count the NUL.
BOOL LookupAccountNameA(const char *in_system, const char *inp_name, PSID outp_sid, DWORD *inoutp_sidSize,
                        char *outp_domain, DWORD *inoutp_domainSize, SID_NAME_USE *outp_use);

// Name, domain and kind of a SID's account.  Sizes and failures are as above; 1332 means an unknown SID.
BOOL LookupAccountSidA(const char *in_system, PSID inp_sid, char *outp_name, DWORD *inoutp_nameSize,
                       char *outp_domain, DWORD *inoutp_domainSize, SID_NAME_USE *outp_use);

} // extern "C"

#endif
