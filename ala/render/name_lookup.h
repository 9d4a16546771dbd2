// Texts of names, of object identifiers, and of records that contain either.
//
// Operations with a Text append to it.  If there is nothing to add they leave it unchanged; when memory runs
// out they make it fail.
#pragma once

#include <cstring>

#include "ala/render/value_text.h"
#include "service/oid/oid.h"
#include "service/packed/values.h"

namespace qvledger {

// Copies a name and its NUL.  Copying a fixed size is faster, so both buffers must have at least kUsualName
// bytes, and more if the name needs them.
constexpr std::size_t kUsualName = 32;
inline void copyName(const char *name, std::size_t length, char *buffer) {
    std::memcpy(buffer, name, kUsualName);
    if (length >= kUsualName)
        std::memcpy(buffer + kUsualName, name + kUsualName, length + 1 - kUsualName);
}

// The name of a short identifier.  A name of class 4x or 1x that begins with a digit loses everything up to
// its first hyphen.  The result points into the buffer; null if the database does not know the identifier.
const char *strippedName(STF_l__hdr *status, void *handle, GEN_oid_t shortOID, char (&buffer)[OID_NAME_SIZE]);

// Appends the same name; false if there is none.
bool addStrippedName(STF_l__hdr *status, void *handle, Text &text, GEN_oid_t shortOID);

// Append the text of a name or text record, or nothing if it has none; addText then returns false.
void addSimpleName(STF_l__hdr *status, Text &text, const GEN_simpleName *ip);
bool addText(STF_l__hdr *status, Text &text, const GEN_text *ip);

} // namespace qvledger

// The name that strippedName returns, as a new string to be released with free; null if there is none or
// memory runs out.
char *ALA__IdentToAsciiStripped(STF_l__hdr *inoutp_status, void *in_handle, GEN_oid_t in_shortOID);

// The text of a name as a new string, to be released with free; null if it has none or memory runs out.
char *ALA__SimpleNameToAscii(STF_l__hdr *inoutp_status, const GEN_simpleName *ip);

void ALA__NameOrOidToAscii(STF_l__hdr *inoutp_status, void *in_handle, qvledger::Text &buf,
                           const GEN_nameOrOid *ip);

// Appends "NULL" for a null record.
void ALA__ObjectIdentToAscii(STF_l__hdr *inoutp_status, void *in_handle, qvledger::Text &buf,
                             const GEN_objectIdent *inp_objectIdent);

// Appends nothing for an unknown choice.
void ALA__CardOrNoidToAscii(STF_l__hdr *inoutp_status, void *in_handle, qvledger::Text &buf,
                            const GEN_cardinalOrNoid *ip);
