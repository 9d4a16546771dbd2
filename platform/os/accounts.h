// The calling user, and the accounts of names and of security identifiers.
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

// The calling user's account name, from the real user id; of "DOMAIN\user" or "user@domain" only the user.
// inoutp_size: bytes of the buffer in, bytes of the name with its NUL out.  Non-zero is success.
BOOL GetUserNameA(char *outp_name, DWORD *inoutp_size);

// SID, domain and kind of an account.  Fails with 122 and both sizes as needed (the domain's with its NUL)
// when a buffer is too small, with 1332 for a name that no account has.  On success the domain's size is
// that of the text without its NUL.
BOOL LookupAccountNameA(const char *in_system, const char *inp_name, PSID outp_sid, DWORD *inoutp_sidSize,
                        char *outp_domain, DWORD *inoutp_domainSize, SID_NAME_USE *outp_use);

// Name, domain and kind of the account of a SID; sizes and failures as above.
BOOL LookupAccountSidA(const char *in_system, PSID inp_sid, char *outp_name, DWORD *inoutp_nameSize,
                       char *outp_domain, DWORD *inoutp_domainSize, SID_NAME_USE *outp_use);

} // extern "C"

#endif
