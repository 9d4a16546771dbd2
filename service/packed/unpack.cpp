#include "service/packed/unpack.h"

#include <algorithm>

// The readers are overloads of unpack() that call each other, so all of them are in one namespace.
namespace qvledger {

// ---- Building blocks ----

static void unpack(XdrReader &in, char *&text) {
    text = in.characters();
}
void unpack(XdrReader &in, GEN_string &string) {
    string._value = in.copyOfBytes(&string.length);
}

// Reads characters into an array of the record; the array's last character remains NUL.
static void unpack(XdrReader &in, char (&text)[256]) {
    const auto bytes = in.text(sizeof text - 1);
    std::copy(bytes.begin(), bytes.end(), text);
}

// Reads bytes into an array of the record, and sets their number.
template <class Octets>
static void unpackOctets(XdrReader &in, Octets &octets) {
    const auto bytes = in.bytes(sizeof octets._value);
    std::copy(bytes.begin(), bytes.end(), octets._value);
    octets.length = static_cast<std::int16_t>(bytes.size());
}
static void unpack(XdrReader &in, GEN_octet255 &octets) {
    unpackOctets(in, octets);
}
static void unpack(XdrReader &in, GEN_octet64 &octets) {
    unpackOctets(in, octets);
}
static void unpack(XdrReader &in, GEN_octet2 &octets) {
    unpackOctets(in, octets);
}

static void unpack(XdrReader &in, GEN_pageIdentifier &value);
static void unpack(XdrReader &in, GEN_locale &value);

template <class... Fields>
static void unpackAll(XdrReader &in, Fields &...fields) {
    (unpack(in, fields), ...);
}

// ---- Strings and names ----

static void unpack(XdrReader &in, GEN_otherCodeSet &value) {
    unpackAll(in, value.octet_string, value.codeSet);
}
static void unpack(XdrReader &in, GEN_otherCodeSet255 &value) {
    unpackAll(in, value.octet_string, value.codeSet);
}

template <class Text>
static void unpackText(XdrReader &in, Text &value) {
    value.choice = in.integer();
    switch (value.choice) {
    case GEN_ISO_646_IRV:
        return unpack(in, value.u.iso_646_irv);
    case GEN_CCITT_T_61:
        return unpack(in, value.u.ccitt_t_61);
    case GEN_ISO_LATIN1:
        return unpack(in, value.u.iso_latin1);
    case GEN_ISO_UCS_2:
        return unpack(in, value.u.iso_ucs_2);
    case GEN_OTHER_CODE_SET:
        return unpack(in, value.u.otherCodeSet);
    default:
        return; // nothing follows a number that selects no member
    }
}
void unpack(XdrReader &in, GEN_text &value) {
    unpackText(in, value);
}
void unpack(XdrReader &in, GEN_simpleName &value) {
    unpackText(in, value);
}

void unpack(XdrReader &in, GEN_nameOrOid &value) {
    value.choice = in.integer();
    if (value.choice == GEN_GLOBAL_FORM)
        unpack(in, value.u.globalForm);
    else if (value.choice == GEN_LOCAL_FORM)
        unpack(in, value.u.localForm);
}

void unpack(XdrReader &in, GEN_distNameString &value) {
    unpackAll(in, value.name, value.name_syntax_o);
}

// ---- Numbers and time ----

void unpack(XdrReader &in, GEN_cardinal64 &value) {
    unpackAll(in, value.msdw, value.lsdw);
}

void unpack(XdrReader &in, GEN_cardinalOrNoid &value) {
    value.choice = in.integer();
    if (value.choice == GEN_CARD_VALUE)
        unpack(in, value.u.cardValue);
    else if (value.choice == GEN_NAMED_VALUE)
        unpack(in, value.u.namedValue);
}

void unpack(XdrReader &in, GEN_generalizedTime &value) {
    unpackAll(in, value.year, value.month, value.day, value.hour, value.minute, value.second, value.millisec,
              value.mindiff, value.utc);
}

// ---- Job and document values ----

void unpack(XdrReader &in, GEN_documentFormat &value) {
    unpackAll(in, value.format, value.formatVariants_o, value.formatVersion_o);
}

void unpack(XdrReader &in, GEN_fontReference &value) {
    value.choice = in.integer();
    if (value.choice == GEN_SIMPLE_FONT_NAME)
        unpack(in, value.u.simpleFontName);
    else if (value.choice == GEN_ISO9541_FONT_NAME)
        unpack(in, value.u.iso9541FontName);
}

void unpack(XdrReader &in, GEN_ignoredAttribute &value) {
    unpackAll(in, value.docNumber_o, value.attribute.choice);
    if (value.attribute.choice == 1)
        unpack(in, value.attribute.identifier);
}

void unpack(XdrReader &in, GEN_finishing &value) {
    unpackAll(in, value.finishingMessage_o, value.choice);
    if (value.choice == GEN_FINISHING_NAMED)
        unpack(in, value.u.named);
    else if (value.choice == GEN_FINISHING_SPEC_LIST)
        unpack(in, value.u.finishingSpecList);
}

static void unpack(XdrReader &in, GEN_pageIdentifier &value) {
    value.choice = in.integer();
    if (value.choice == GEN_NOMINAL_PAGE_NUM)
        unpack(in, value.u.nominalPageNum);
    else if (value.choice == GEN_ALPHANUMERIC_PAGE_NUM)
        unpack(in, value.u.alphanumericPageNum);
    else if (value.choice == GEN_PAGE_TAG)
        unpack(in, value.u.pageTag);
}

void unpack(XdrReader &in, GEN_pageSelect &value) {
    unpackAll(in, value.beginningPage_o, value.endingPage_o);
}

static void unpack(XdrReader &in, GEN_pageMediaSelect &value) {
    unpackAll(in, value.pageRange, value.mediumId);
}

void unpack(XdrReader &in, GEN_mediaSelect &value) {
    value.choice = in.integer();
    if (value.choice == GEN_MEDIUM_FOR_ALL_PAGES)
        unpack(in, value.u.mediumForAllPages);
    else if (value.choice == GEN_MEDIUM_FOR_SEL_PAGES)
        value.u.mediumForSelPages = unpackChain(in, &GEN_seqOfPageMediaSelect::_value);
}

void unpack(XdrReader &in, GEN_objectIdent &value) {
    value.choice = in.integer();
    switch (value.choice) {
    case GEN_OBJ_ID_JOB:
        return unpack(in, value.u.objIdJob);
    case GEN_OBJ_ID_DOCUMENT:
        return unpackAll(in, value.u.objIdDocument.job_identifier, value.u.objIdDocument.document_number_o);
    case GEN_OBJ_ID_OID:
        return unpack(in, value.u.objIdOID);
    case GEN_OBJ_ID_DIST_NAME:
        return unpack(in, value.u.objIdDistName);
    case GEN_OBJ_ID_FONT:
        return unpack(in, value.u.objIdFont);
    case GEN_OBJ_ID_NAME_OR_OID:
        return unpack(in, value.u.objIdNameOrOid);
    case GEN_OBJ_ID_SIMPLE_NAME:
        return unpack(in, value.u.objIdSimpleName);
    default:
        return;
    }
}

void unpack(XdrReader &in, GEN_mediaConsumed &value) {
    unpackAll(in, value.printType, value.mediumSize, value.printedImpressions, value.consumedMediaSheets);
}

// ---- Profiles and addresses ----

// Reads an attribute of an O/R address.
static void unpack(XdrReader &in, ODP_orPair &value) {
    unpackAll(in, value.type, value.value);
}

void unpack(XdrReader &in, GEN_deliveryAddress &value) {
    value.choice = in.integer();
    switch (value.choice) {
    case GEN_MHS_ADDRESS:
        value.u.mhsAddress.attributes = unpackChain(in, &ODP_orAttribute::_value);
        return;
    case GEN_DISTINGUISHED_NAME:
        return unpack(in, value.u.distinguishedName);
    case GEN_ADDRESS_TEXT:
        return unpack(in, value.u.text);
    case GEN_DOR:
        return unpack(in, value.u.dor);
    case GEN_ADDRESS_OCTET_STRING:
        return unpack(in, value.u.octetString);
    case GEN_DIST_NAME_STRING:
        return unpack(in, value.u.distNameString);
    case GEN_RPC_ADDRESS:
        return unpack(in, value.u.rpcAddress);
    default:
        return;
    }
}

static void unpack(XdrReader &in, GEN_locale &value) {
    unpackAll(in, value.language, value.country, value.character_set, value.modifier_o);
}

void unpack(XdrReader &in, GEN_eventHandlingProfile &value) {
    value.ehpEventIdentifiers_o = unpackChain(in, &GEN_setOfOids_t::_value);
    unpackAll(in, value.ehpDeliveryMethod_o, value.ehpEventComment_o, value.ehpDeliveryAddr_o,
              value.ehpLocale_o);
}

void unpack(XdrReader &in, GEN_resultsProfile &value) {
    unpackAll(in, value.deliveryMethod_o, value.resultsSetComment_o, value.deliveryAddress_o,
              value.jobCopies_d, value.outputBin_o);
}

void unpack(XdrReader &in, GEN_eACL &value) {
    unpackAll(in, value.name, value.domain, value.nameType_d, value.privilegeLevel_d);
}

} // namespace qvledger
