// The records of unpacked attribute values.
//
// A pointer field whose name ends in _o is optional: null means absent.  A pointer field whose name ends in
// _d has a default: null means the default.  The number in `choice` selects a member of the union after it;
// an unknown number selects no member.  Chains are linked by next.  The library owns every record, so a
// pointer into a record is invalid after the record's release.
#pragma once

#include <cstdint>

using GEN_boolean_t = std::int32_t;       // 1 true, 0 false
using GEN_deltaTime_t = std::uint32_t;    // seconds
using GEN_oid_t = std::uint32_t;          // short OID
using GEN_edge_t = std::int32_t;          // 0 bottom, 1 right, 2 top, 3 left
using GEN_pageOrderType_t = std::int32_t; // 2 unknown, 3 first to last, 4 last to first

// ---- Strings and names ----

struct GEN_string {
    std::int32_t length;  // bytes
    std::uint8_t *_value; // no terminator
};

struct GEN_octet255 {
    std::int16_t length; // bytes
    std::uint8_t _value[255];
};

struct GEN_otherCodeSet {
    GEN_string octet_string;
    std::uint32_t codeSet; // IANA MIBenum
};

struct GEN_otherCodeSet255 {
    GEN_octet255 octet_string;
    std::uint32_t codeSet;
};

// Choices of GEN_text and GEN_simpleName.
enum GEN_textChoice : std::int32_t {
    GEN_ISO_646_IRV = 1,
    GEN_CCITT_T_61 = 2,
    GEN_ISO_LATIN1 = 3,
    GEN_ISO_UCS_2 = 4,
    GEN_OTHER_CODE_SET = 5,
};

struct GEN_text {
    std::int32_t choice;
    union {
        char *iso_646_irv;
        char *ccitt_t_61;
        GEN_string iso_latin1;
        GEN_string iso_ucs_2;
        GEN_otherCodeSet otherCodeSet;
    } u;
};

struct GEN_simpleName {
    std::int32_t choice;
    union {
        char iso_646_irv[256];
        char ccitt_t_61[256];
        GEN_octet255 iso_latin1;
        GEN_octet255 iso_ucs_2;
        GEN_otherCodeSet255 otherCodeSet;
    } u;
};

enum GEN_nameOrOidChoice : std::int32_t { GEN_GLOBAL_FORM = 1, GEN_LOCAL_FORM = 2 };

struct GEN_nameOrOid {
    std::int32_t choice;
    union {
        GEN_oid_t globalForm;
        GEN_simpleName localForm;
    } u;
};

struct GEN_nameOrOidSeq {
    GEN_nameOrOidSeq *next;
    GEN_nameOrOid _value;
};

struct GEN_setOfOids_t {
    GEN_setOfOids_t *next;
    GEN_oid_t _value;
};

struct GEN_distNameString {
    GEN_text name;
    GEN_nameOrOid *name_syntax_o;
};

struct GEN_distNameStringSeq {
    GEN_distNameStringSeq *next;
    GEN_distNameString *_value;
};

// ---- Numbers and time ----

struct GEN_cardinal64 {
    std::uint32_t msdw; // high word
    std::uint32_t lsdw; // low word
};

enum GEN_cardinalOrNoidChoice : std::int32_t { GEN_CARD_VALUE = 1, GEN_NAMED_VALUE = 2 };

struct GEN_cardinalOrNoid {
    std::int32_t choice;
    union {
        std::uint32_t cardValue;
        GEN_nameOrOid namedValue;
    } u;
};

struct GEN_generalizedTime {
    std::int16_t year, month, day; // month 1 to 12
    std::int16_t hour, minute, second, millisec;
    std::int16_t mindiff; // minutes west of Greenwich
    std::int32_t utc;     // 1 if year counts from 1900, 0 if it is the full year
};

// ---- Job and document values ----

struct GEN_documentFormat {
    GEN_oid_t format;
    GEN_text *formatVariants_o;
    GEN_simpleName *formatVersion_o;
};

enum GEN_fontReferenceChoice : std::int32_t { GEN_SIMPLE_FONT_NAME = 1, GEN_ISO9541_FONT_NAME = 2 };

struct GEN_fontReference {
    std::int32_t choice;
    union {
        GEN_simpleName simpleFontName;
        GEN_string iso9541FontName; // kept as bytes, not decoded
    } u;
};

// A reference to an attribute; only choice 1 has a short identifier.
struct AS_attrRef {
    std::int32_t choice;
    std::uint32_t identifier;
};

struct GEN_ignoredAttribute {
    std::uint32_t *docNumber_o;
    AS_attrRef attribute;
};

enum GEN_finishingChoice : std::int32_t { GEN_FINISHING_NAMED = 1, GEN_FINISHING_SPEC_LIST = 2 };

struct GEN_finishing {
    GEN_text *finishingMessage_o;
    std::int32_t choice;
    union {
        GEN_nameOrOid named;
        GEN_string finishingSpecList; // kept as bytes, not decoded
    } u;
};

enum GEN_pageIdentifierChoice : std::int32_t {
    GEN_NOMINAL_PAGE_NUM = 1,
    GEN_ALPHANUMERIC_PAGE_NUM = 2,
    GEN_PAGE_TAG = 3,
};

struct GEN_pageIdentifier {
    std::int32_t choice;
    union {
        std::uint32_t nominalPageNum;
        GEN_simpleName alphanumericPageNum;
        GEN_nameOrOid pageTag;
    } u;
};

struct GEN_pageSelect {
    GEN_pageIdentifier *beginningPage_o;
    GEN_pageIdentifier *endingPage_o;
};

struct GEN_pageSelectSeq {
    GEN_pageSelectSeq *next;
    GEN_pageSelect value;
};

struct GEN_pageMediaSelect {
    GEN_pageSelect pageRange;
    GEN_nameOrOid mediumId;
};

struct GEN_seqOfPageMediaSelect {
    GEN_seqOfPageMediaSelect *next;
    GEN_pageMediaSelect _value;
};

enum GEN_mediaSelectChoice : std::int32_t { GEN_MEDIUM_FOR_ALL_PAGES = 1, GEN_MEDIUM_FOR_SEL_PAGES = 2 };

struct GEN_mediaSelect {
    std::int32_t choice;
    union {
        GEN_nameOrOid mediumForAllPages;
        GEN_seqOfPageMediaSelect *mediumForSelPages;
    } u;
};

struct GEN_documentIdentifier {
    char job_identifier[256];
    std::uint32_t *document_number_o;
};

enum GEN_objectIdentChoice : std::int32_t {
    GEN_OBJ_ID_JOB = 1,
    GEN_OBJ_ID_DOCUMENT = 2,
    GEN_OBJ_ID_OID = 3,
    GEN_OBJ_ID_DIST_NAME = 4,
    GEN_OBJ_ID_FONT = 5,
    GEN_OBJ_ID_NAME_OR_OID = 6,
    GEN_OBJ_ID_SIMPLE_NAME = 7,
};

struct GEN_objectIdent {
    std::int32_t choice;
    union {
        char objIdJob[256];
        GEN_documentIdentifier objIdDocument;
        GEN_oid_t objIdOID;
        GEN_distNameString objIdDistName;
        GEN_fontReference objIdFont;
        GEN_nameOrOid objIdNameOrOid;
        GEN_simpleName objIdSimpleName;
    } u;
};

struct GEN_setOfObjId {
    GEN_setOfObjId *next;
    GEN_objectIdent *value;
};

struct GEN_mediaConsumed {
    GEN_nameOrOid printType;
    GEN_objectIdent mediumSize;
    std::uint32_t printedImpressions;
    std::uint32_t consumedMediaSheets;
};

struct GEN_mediaConsumedSeq {
    GEN_mediaConsumedSeq *next;
    GEN_mediaConsumed _value;
};

// ---- Profiles and addresses ----

// One attribute of an O/R address: its type ("C", "O", "S", "DDA:RFC-822", ...) and its value.
struct ODP_orPair {
    char *type;
    char *value;
};

struct ODP_orAttribute {
    ODP_orAttribute *next;
    ODP_orPair _value;
};

struct ODP_orName {
    ODP_orAttribute *attributes;
};

enum GEN_deliveryAddressChoice : std::int32_t {
    GEN_MHS_ADDRESS = 1,
    GEN_DISTINGUISHED_NAME = 2,
    GEN_ADDRESS_TEXT = 3,
    GEN_DOR = 4,
    GEN_ADDRESS_OCTET_STRING = 5,
    GEN_DIST_NAME_STRING = 6,
    GEN_RPC_ADDRESS = 7,
};

struct GEN_deliveryAddress {
    std::int32_t choice;
    union {
        ODP_orName mhsAddress;
        GEN_string distinguishedName; // kept as bytes, not decoded
        GEN_text text;
        GEN_string dor; // kept as bytes, not decoded
        GEN_string octetString;
        GEN_distNameString distNameString;
        GEN_string rpcAddress; // kept as bytes, not decoded
    } u;
};

struct GEN_octet2 {
    std::int16_t length;
    std::uint8_t _value[2];
};

struct GEN_octet64 {
    std::int16_t length;
    std::uint8_t _value[64];
};

struct GEN_locale {
    GEN_octet2 language;
    GEN_octet2 country;
    GEN_oid_t character_set;
    GEN_octet64 modifier_o; // length 0 means absent
};

struct GEN_eventHandlingProfile {
    GEN_setOfOids_t *ehpEventIdentifiers_o;
    GEN_oid_t *ehpDeliveryMethod_o;
    GEN_text *ehpEventComment_o;
    GEN_deliveryAddress *ehpDeliveryAddr_o;
    GEN_locale *ehpLocale_o;
};

struct GEN_resultsProfile {
    GEN_oid_t *deliveryMethod_o;
    GEN_text *resultsSetComment_o;
    GEN_deliveryAddress *deliveryAddress_o;
    std::uint32_t *jobCopies_d; // default 1
    GEN_nameOrOid *outputBin_o;
};

// ---- Access list entry ----

struct GEN_eACL {
    GEN_simpleName name;
    GEN_distNameString domain;
    std::int32_t nameType_d;       // 0 any user, 1 a user, 2 a group
    std::int32_t privilegeLevel_d; // 1 grants nothing, 2 and 3 grant access
};
