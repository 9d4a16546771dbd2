#include "ala/render/name_lookup.h"

#include <cctype>
#include <cstring>

#include "ala/base/owners.h"
#include "service/text/text.h"

using namespace qvledger;

constexpr std::uint8_t kClassMask = 0xF0;
// Names in these classes may begin with a number and a hyphen.
constexpr std::uint8_t kNumberedClasses[] = {0x40, 0x10};

static bool isNumberedClass(std::uint8_t classNumber) {
    for (const std::uint8_t numbered : kNumberedClasses)
        if ((classNumber & kClassMask) == numbered)
            return true;
    return false;
}

const char *qvledger::strippedName(STF_l__hdr *status, void *handle, GEN_oid_t shortOID,
                                   char (&buffer)[OID_NAME_SIZE]) {
    std::uint8_t tmp_out_chars[OID_CLASS_SIZE] = {};
    if (OID_LookupShort(status, handle, shortOID, buffer, tmp_out_chars) != 0)
        return nullptr;
    if (!isNumberedClass(tmp_out_chars[1]) || std::isdigit(static_cast<unsigned char>(buffer[0])) == 0)
        return buffer;
    const auto *hyphen = _mbschr(reinterpret_cast<const unsigned char *>(buffer), '-');
    return hyphen != nullptr ? reinterpret_cast<const char *>(hyphen) + 1 : buffer;
}

char *ALA__IdentToAsciiStripped(STF_l__hdr *inoutp_status, void *in_handle, GEN_oid_t in_shortOID) {
    char tempName[OID_NAME_SIZE];
    const char *name = strippedName(inoutp_status, in_handle, in_shortOID, tempName);
    return name != nullptr ? _strdup(name) : nullptr;
}

bool qvledger::addStrippedName(STF_l__hdr *status, void *handle, Text &text, GEN_oid_t shortOID) {
    char tempName[OID_NAME_SIZE];
    const char *name = strippedName(status, handle, shortOID, tempName);
    if (name != nullptr)
        text.add(name);
    return name != nullptr;
}

// Appends the text that an extraction returned.  False if the extraction failed; if memory ran out, the Text
// fails, too.
static bool addExtracted(std::int32_t result, const Malloced<char> &extracted, Text &text) {
    if (result == GENU_E_NO_MEMORY)
        text.fail();
    if (result != 0)
        return false;
    text.add(extracted.get());
    return true;
}

char *ALA__SimpleNameToAscii(STF_l__hdr *inoutp_status, const GEN_simpleName *ip) {
    char *name = nullptr;
    return GENU_ExtractSimpleName(inoutp_status, &name, ip, 0) == 0 ? name : nullptr;
}

void qvledger::addSimpleName(STF_l__hdr *status, Text &text, const GEN_simpleName *ip) {
    const Malloced<char> name(ALA__SimpleNameToAscii(status, ip));
    if (name != nullptr)
        text.add(name.get());
    else if (ip->choice >= GEN_ISO_646_IRV && ip->choice <= GEN_OTHER_CODE_SET)
        text.fail(); // the choice is valid, so memory ran out
}

bool qvledger::addText(STF_l__hdr *status, Text &text, const GEN_text *ip) {
    Malloced<char> extracted;
    const std::int32_t result = GENU_ExtractText(status, TextOut(extracted), ip, 0);
    return addExtracted(result, extracted, text);
}

void ALA__NameOrOidToAscii(STF_l__hdr *inoutp_status, void *in_handle, Text &buf, const GEN_nameOrOid *ip) {
    // An identifier without a name adds nothing.
    if (ip->choice == GEN_GLOBAL_FORM)
        static_cast<void>(addStrippedName(inoutp_status, in_handle, buf, ip->u.globalForm));
    else if (ip->choice == GEN_LOCAL_FORM)
        addSimpleName(inoutp_status, buf, &ip->u.localForm);
}

static void addDistName(STF_l__hdr *status, const GEN_distNameString *ip, Text &buf) {
    Malloced<char> name;
    const std::int32_t result = GENU_ExtractDistNameString(status, TextOut(name), nullptr, ip, 0);
    addExtracted(result, name, buf); // adds nothing if the name has no text
}

void ALA__ObjectIdentToAscii(STF_l__hdr *inoutp_status, void *in_handle, Text &buf,
                             const GEN_objectIdent *inp_objectIdent) {
    if (inp_objectIdent == nullptr)
        return buf.add("NULL");
    const auto &u = inp_objectIdent->u;
    switch (inp_objectIdent->choice) {
    case GEN_OBJ_ID_JOB:
        return buf.addUpToNul(u.objIdJob, sizeof u.objIdJob);
    case GEN_OBJ_ID_DOCUMENT:
        buf.addUpToNul(u.objIdDocument.job_identifier, sizeof u.objIdDocument.job_identifier);
        if (u.objIdDocument.document_number_o != nullptr) {
            buf.add(':');
            buf.addNumber(static_cast<std::int32_t>(*u.objIdDocument.document_number_o));
        }
        return;
    case GEN_OBJ_ID_OID:
        // An identifier without a name adds nothing.
        static_cast<void>(addStrippedName(inoutp_status, in_handle, buf, u.objIdOID));
        return;
    case GEN_OBJ_ID_DIST_NAME:
        return addDistName(inoutp_status, &u.objIdDistName, buf);
    case GEN_OBJ_ID_FONT:
        return;
    case GEN_OBJ_ID_NAME_OR_OID:
        return ALA__NameOrOidToAscii(inoutp_status, in_handle, buf, &u.objIdNameOrOid);
    case GEN_OBJ_ID_SIMPLE_NAME:
        return addSimpleName(inoutp_status, buf, &u.objIdSimpleName);
    default:
        return buf.add("unknown object identification choice");
    }
}

void ALA__CardOrNoidToAscii(STF_l__hdr *inoutp_status, void *in_handle, Text &buf,
                            const GEN_cardinalOrNoid *ip) {
    if (ip->choice == GEN_CARD_VALUE)
        buf.addNumber(static_cast<std::int32_t>(ip->u.cardValue));
    else if (ip->choice == GEN_NAMED_VALUE)
        ALA__NameOrOidToAscii(inoutp_status, in_handle, buf, &ip->u.namedValue);
}
