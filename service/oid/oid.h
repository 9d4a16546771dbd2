// OID_: the database of object identifiers and their names.
//
// The path of a database names a folder.  The folder contains the table "oids", and renaming tables
// "oids.LOCALE" with the names in other languages; docs/formats.md describes the tables.  Opening reads the
// whole table "oids"; a look-up searches a hash table.
#pragma once

#include <cstdint>

#include "service/status.h"

using AS_attrID_t = std::uint32_t; // short identifier

// A binary OID is one length byte and that many contents octets (X.690 8.19).
constexpr std::int32_t OID_BINARY_SIZE = 73; // bytes of the buffer, length byte included
constexpr std::int32_t OID_NAME_SIZE = 256;  // bytes of a name buffer, NUL included
constexpr std::int32_t OID_CLASS_SIZE = 19;  // bytes of a class: 0, the class number, zeros

// Failure codes, all non-zero.  The operations return 0 or one of these codes.
constexpr std::int32_t OID_E_NOT_INITIALISED = 1;
constexpr std::int32_t OID_E_DATABASE = 2; // null path, or a table is missing or bad; the log has the reason
constexpr std::int32_t OID_E_NO_MEMORY = 3;
constexpr std::int32_t OID_E_SYNTAX = 4;  // not an object identifier, or too long for its buffer
constexpr std::int32_t OID_E_UNKNOWN = 5; // the database has no such identifier
constexpr std::int32_t OID_E_HANDLE = 6;  // null instead of an open database

extern "C" {

// Call OID_Init before OID_OpenDb, and OID_Term after OID_CloseDb, once for each OID_Init.
std::int32_t OID_Init(STF_l__hdr *in_status, const char *inp_path, std::int32_t in_reserved);
void OID_Term();

// Reads the table "oids" into a new handle; *outp_handle is null on failure.  OID_CloseDb releases the handle
// and sets it to null.
std::int32_t OID_OpenDb(STF_l__hdr *in_status, const char *inp_path, std::int32_t in_reserved1,
                        std::int32_t in_reserved2, void **outp_handle);
std::int32_t OID_CloseDb(STF_l__hdr *in_status, void **inoutp_handle);

// Sets the language of the names that later look-ups write; "de_DE.UTF-8" selects the first table that exists
// of oids.de_DE.UTF-8, oids.de_DE and oids.de.  A locale without a table, and "C", select the names of
// "oids".  If the selected table is bad, returns OID_E_DATABASE and leaves the language unchanged.  The
// locale's text is copied.
std::int32_t OID_SetLocale(STF_l__hdr *in_status, void **inp_handle, char **inp_locale);

// Converts dotted-decimal text to a binary OID of at most 73 bytes; the rest of the buffer stays unchanged.
std::int32_t OID_ConvertDecToBin(STF_l__hdr *in_status, const char *inp_decimal, std::uint8_t *outp_binary,
                                 std::int32_t in_reserved);

// Writes the name of a binary OID to a 256-byte buffer.
std::int32_t OID_LookupBinary(STF_l__hdr *in_status, void *in_handle, const std::uint8_t *inp_binary,
                              char *outp_name, std::int32_t in_reserved);

// Writes the name of a short identifier to a 256-byte buffer, and its class of 19 bytes to outp_class unless
// outp_class is null.
std::int32_t OID_LookupShort(STF_l__hdr *in_status, void *in_handle, AS_attrID_t in_identifier,
                             char *outp_name, std::uint8_t *outp_class);

} // extern "C"
