// Names: of attributes, of values that are object identifiers, and of records that hold one or the other.
//
// The operations that take a Text append to it.  When they have nothing to say they leave it as it was; when
// memory runs out they make it fail.
#pragma once

#include <cstring>

#include "ala/render/value_text.h"
#include "service/oid/oid.h"
#include "service/packed/values.h"

namespace qvledger {

// Copies a name and its NUL from one buffer to another, which both have room for OID_NAME_SIZE bytes, or for
// kUsualName if the name is shorter.  That many at once cost less than counting.
constexpr std::size_t kUsualName = 32;
inline void copyName(const char *name, std::size_t length, char *buffer) {
    std::memcpy(buffer, name, kUsualName);
    if (length >= kUsualName)
        std::memcpy(buffer + kUsualName, name + kUsualName, length + 1 - kUsualName);
}

// The name of a short identifier; a name of class 4 or 1 that begins with a digit loses everything up to its
// first hyphen.  The pointer lies in buffer, and is null when the database does not know the identifier.
const char *strippedName(STF_l__hdr *status, void *handle, GEN_oid_t shortOID, char (&buffer)[OID_NAME_SIZE]);

// Appends that name; false if there is none.
bool addStrippedName(STF_l__hdr *status, void *handle, Text &text, GEN_oid_t shortOID);

// Append the text of a record, or nothing if it has none; addText then gives false.
void addSimpleName(STF_l__hdr *status, Text &text, const GEN_simpleName *ip);
bool addText(STF_l__hdr *status, Text &text, const GEN_text *ip);

} // namespace qvledger

// The name that strippedName gives as a new string, or null.
char *ALA__IdentToAsciiStripped(STF_l__hdr *inoutp_status, void *in_handle, GEN_oid_t in_shortOID);

// The text of a name as a new string, or null.
char *ALA__SimpleNameToAscii(STF_l__hdr *inoutp_status, const GEN_simpleName *ip);

void ALA__NameOrOidToAscii(STF_l__hdr *inoutp_status, void *in_handle, qvledger::Text &buf,
                           const GEN_nameOrOid *ip);

// "NULL" for a null record.
void ALA__ObjectIdentToAscii(STF_l__hdr *inoutp_status, void *in_handle, qvledger::Text &buf,
                             const GEN_objectIdent *inp_objectIdent);

// Nothing for a choice outside the members.
void ALA__CardOrNoidToAscii(STF_l__hdr *inoutp_status, void *in_handle, qvledger::Text &buf,
                            const GEN_cardinalOrNoid *ip);
