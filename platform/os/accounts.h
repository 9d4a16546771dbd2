// The calling user, and accounts by name and by security identifier (SID).
//
// The calls return non-zero on success.  On failure they return 0, and GetLastError returns an error listed
// below, 8 when memory runs out, or 87 if a required argument is null.  in_system is ignored.  A null buffer
// is a buffer that is too small.  Error 1332 is also returned if the name service fails.
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

// Gets the account name of the real user id, without its domain: "user" for "DOMAIN\user" and "user@domain".
// inoutp_size: on input, bytes of the buffer; on output, bytes of the name with its NUL.  Error 122, with the
// needed size, if the buffer is too small; error 1332 if the user has no account.
BOOL GetUserNameA(char *outp_name, DWORD *inoutp_size);

// Gets SID, domain and kind of the user account with a name.  Error 122 if a buffer is too small; both sizes
// are then the needed sizes.  Error 1332 for an unknown name.  The domain's needed size counts the NUL; its
// size on success does not.
BOOL LookupAccountNameA(const char *in_system, const char *inp_name, PSID outp_sid, DWORD *inoutp_sidSize,
                        char *outp_domain, DWORD *inoutp_domainSize, SID_NAME_USE *outp_use);

// Gets name, domain and kind of a SID's account.  Error 122 if a buffer is too small; both sizes are then the
// needed sizes and count the NUL.  Error 1332 for an unknown SID.  On success the sizes do not count the NUL.
BOOL LookupAccountSidA(const char *in_system, PSID inp_sid, char *outp_name, DWORD *inoutp_nameSize,
                       char *outp_domain, DWORD *inoutp_domainSize, SID_NAME_USE *outp_use);

} // extern "C"

#endif
