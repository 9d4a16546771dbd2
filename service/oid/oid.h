// OID_: the database of object identifiers and their names.
//
// The database path names a folder with the table "oids" and renaming tables "oids.LOCALE"; docs/formats.md
// describes them.  Opening reads the whole table; every look-up is one probe of a hash table.
#pragma once

#include <cstdint>

#include "service/status.h"

using AS_attrID_t = std::uint32_t; // short identifier

// A binary OID is one length byte and that many contents octets (X.690 8.19).
constexpr std::int32_t OID_BINARY_SIZE = 73; // bytes of the buffer, length byte included
constexpr std::int32_t OID_NAME_SIZE = 256;  // bytes of a name buffer, NUL included
constexpr std::int32_t OID_CLASS_SIZE = 19;  // bytes that the short look-up adds; the second is the class

// Failure codes, all non-zero.
constexpr std::int32_t OID_E_NOT_INITIALISED = 1;
constexpr std::int32_t OID_E_DATABASE = 2; // missing, unreadable or malformed; the log says file and line
constexpr std::int32_t OID_E_NO_MEMORY = 3;
constexpr std::int32_t OID_E_SYNTAX = 4;  // no object identifier, or it does not fit its buffer
constexpr std::int32_t OID_E_UNKNOWN = 5; // the database has no such identifier
constexpr std::int32_t OID_E_HANDLE = 6;  // no open database

extern "C" {

// Paired per registration, before OID_OpenDb and after OID_CloseDb.
std::int32_t OID_Init(STF_l__hdr *in_status, const char *inp_path, std::int32_t in_reserved);
void OID_Term();

// Reads the table into a new handle; *outp_handle is null on failure.
std::int32_t OID_OpenDb(STF_l__hdr *in_status, const char *inp_path, std::int32_t in_reserved1,
                        std::int32_t in_reserved2, void **outp_handle);
std::int32_t OID_CloseDb(STF_l__hdr *in_status, void **inoutp_handle);

// Names of later look-ups come in that language; "de_DE.UTF-8" tries oids.de_DE.UTF-8, oids.de_DE and
// oids.de.  A locale without a table, or "C", gives the names of "oids".  A malformed renaming table is
// OID_E_DATABASE and leaves the language as it was.  The caller keeps the text.
std::int32_t OID_SetLocale(STF_l__hdr *in_status, void **inp_handle, char **inp_locale);

// Dotted-decimal text into a binary OID of at most 73 bytes; the rest of the buffer is left alone.
std::int32_t OID_ConvertDecToBin(STF_l__hdr *in_status, const char *inp_decimal, std::uint8_t *outp_binary,
                                 std::int32_t in_reserved);

// The name of a binary OID into a 256-byte buffer.
std::int32_t OID_LookupBinary(STF_l__hdr *in_status, void *in_handle, const std::uint8_t *inp_binary,
                              char *outp_name, std::int32_t in_reserved);

// The name of a short identifier into a 256-byte buffer; 19 bytes into outp_class unless it is null.
std::int32_t OID_LookupShort(STF_l__hdr *in_status, void *in_handle, AS_attrID_t in_identifier,
                             char *outp_name, std::uint8_t *outp_class);

} // extern "C"
