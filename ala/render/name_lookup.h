// Texts of names, of object identifiers, and of records that contain names or object identifiers.
//
// Functions with a Text append to it.  If there is nothing to add, the Text is unchanged; when memory runs
// out, the Text fails.
#pragma once

#include <cstring>

#include "ala/render/value_text.h"
#include "service/oid/oid.h"
#include "service/packed/values.h"

namespace qvledger {

// Copies a name of `length` bytes and its NUL.  Always copies at least kUsualName bytes, because copying a
// fixed size is faster.  So both buffers must have that many bytes, even for a shorter name.
constexpr std::size_t kUsualName = 32;
inline void copyName(const char *name, std::size_t length, char *buffer) {
    std::memcpy(buffer, name, kUsualName);
    if (length >= kUsualName)
        std::memcpy(buffer + kUsualName, name + kUsualName, length + 1 - kUsualName);
}

// Returns the name of a short identifier, in the buffer; null if the database does not know the identifier.
// If the identifier's class is 0x40 to 0x4F or 0x10 to 0x1F and the name begins with a digit, the result
// begins after the name's first hyphen, if it has one.
const char *strippedName(STF_l__hdr *status, void *handle, GEN_oid_t shortOID, char (&buffer)[OID_NAME_SIZE]);

// Appends the name that strippedName returns.  False if the database does not know the identifier.
bool addStrippedName(STF_l__hdr *status, void *handle, Text &text, GEN_oid_t shortOID);

// Append the text of a name or text record.  If the record has no text, both append nothing.  addText returns
// false if it cannot get the text.
void addSimpleName(STF_l__hdr *status, Text &text, const GEN_simpleName *ip);
bool addText(STF_l__hdr *status, Text &text, const GEN_text *ip);

} // namespace qvledger

// The name that strippedName returns, as a new string to be released with free.  Null if the database does
// not know the identifier or memory runs out.
char *ALA__IdentToAsciiStripped(STF_l__hdr *inoutp_status, void *in_handle, GEN_oid_t in_shortOID);

// The text of a name record as a new string, to be released with free.  Null if the record has no text or
// memory runs out.
char *ALA__SimpleNameToAscii(STF_l__hdr *inoutp_status, const GEN_simpleName *ip);

void ALA__NameOrOidToAscii(STF_l__hdr *inoutp_status, void *in_handle, qvledger::Text &buf,
                           const GEN_nameOrOid *ip);

// Appends "NULL" for a null record.
void ALA__ObjectIdentToAscii(STF_l__hdr *inoutp_status, void *in_handle, qvledger::Text &buf,
                             const GEN_objectIdent *inp_objectIdent);

// Appends nothing for an unknown choice.
void ALA__CardOrNoidToAscii(STF_l__hdr *inoutp_status, void *in_handle, qvledger::Text &buf,
                            const GEN_cardinalOrNoid *ip);
