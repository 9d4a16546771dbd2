// Packs attribute values and access list entries for accounting logs, in XDR (RFC 4506).
//
// The packer shares no code with the reader, so that tests do not compare the reader with itself.  Records
// are small plain structs.  A std::optional is a field that may be absent; a std::vector is a chain.  A union
// is a choice number and a packed member.  The functions below make the usual unions.  Other unions can be
// written directly, such as Text{9, ""}, which has an unknown choice number and no member.  docs/formats.md
// describes the packed forms.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace samples {

using Bytes = std::string;

// Value type numbers, as in an attribute's tag.
enum ValueType : std::uint32_t {
    BOOLEAN = 0,
    INTEGER = 1,
    DELTA_TIME = 4,
    DIST_NAME = 6,
    ACCESS_ENTRY = 7,
    EVENT_PROFILE = 8,
    FONT_REFERENCE = 9,
    OBJECT_IDENTIFIER = 10,
    IGNORED_ATTRIBUTE = 11,
    INTEGER_12 = 12,
    STRING = 14,
    TEXT = 16,
    NAME_OR_OID = 18,
    OCTETS = 20,
    INTEGER_22 = 22,
    REAL = 23,
    SHORT_26 = 26,
    SIMPLE_NAME = 27,
    TEXT_28 = 28,
    CARDINAL_64 = 31,
    CARDINAL_OR_NAME = 34,
    DELIVERY_ADDRESS = 39,
    DIST_NAMES = 42,
    DOCUMENT_FORMAT = 43,
    EDGE = 44,
    FINISHING = 46,
    TIME = 48,
    NAME_OR_OIDS = 60,
    REAL_62 = 62,
    MEDIA_SELECT = 67,
    PAGE_ORDER = 68,
    PAGE_SELECTS = 69,
    SHORT_75 = 75,
    RESULTS_PROFILE = 81,
    MEDIA_CONSUMED = 91,
    OBJECT_IDENTS = 93,
};

// ---- Scalars ----

Bytes packInt(std::int32_t number); // also packs the 16-bit types, in 32 bits
Bytes packUint(std::uint32_t number);
Bytes packCardinal64(std::uint64_t number);
Bytes packDouble(double number);
Bytes packString(std::string_view bytes); // packs the length, then the bytes, padded to a multiple of 4

// ---- Unions ----

template <class Kind>
struct Union {
    std::int32_t choice = 0;
    Bytes member = {}; // packed
};

using Text = Union<struct TextKind>; // a simple name has the same packed form
using NameOrOid = Union<struct NameOrOidKind>;
using CardinalOrName = Union<struct CardinalOrNameKind>;
using FontReference = Union<struct FontReferenceKind>;
using AttributeRef = Union<struct AttributeRefKind>;
using FinishingSpec = Union<struct FinishingSpecKind>;
using PageIdent = Union<struct PageIdentKind>;
using MediaSelect = Union<struct MediaSelectKind>;
using ObjectIdent = Union<struct ObjectIdentKind>;
using DeliveryAddress = Union<struct DeliveryAddressKind>;

// ---- Records ----

struct DistName {
    Text name = {};
    std::optional<NameOrOid> syntax = {};
};

// Fields are wider than the reader's 16 bits, so that values out of range can be written, too.
struct Time {
    std::int32_t year = 0, month = 0, day = 0; // month 1 to 12
    std::int32_t hour = 0, minute = 0, second = 0, millisec = 0;
    std::int32_t mindiff = 0; // minutes west of Greenwich
    std::int32_t utc = 0;     // 1 if year counts from 1900
};

struct DocumentFormat {
    std::uint32_t format = 0; // short OID
    std::optional<Text> variants = {};
    std::optional<Text> version = {};
};

struct IgnoredAttribute {
    std::optional<std::uint32_t> document = {};
    AttributeRef attribute = {};
};

struct Finishing {
    std::optional<Text> message = {};
    FinishingSpec spec = {};
};

struct PageSelect {
    std::optional<PageIdent> first = {}, last = {};
};

struct PageMedium {
    PageSelect pages = {};
    NameOrOid medium = {};
};

struct MediaConsumed {
    NameOrOid printType = {};
    ObjectIdent mediumSize = {};
    std::uint32_t impressions = 0, sheets = 0;
};

struct Locale {
    std::string language = {}, country = {}; // two letters, or empty
    std::uint32_t characterSet = 0;          // short OID
    std::string modifier = {};               // empty: absent
};

struct EventProfile {
    std::vector<std::uint32_t> events = {}; // short OIDs; empty: absent
    std::optional<std::uint32_t> method = {};
    std::optional<Text> comment = {};
    std::optional<DeliveryAddress> address = {};
    std::optional<Locale> locale = {};
};

struct ResultsProfile {
    std::optional<std::uint32_t> method = {};
    std::optional<Text> comment = {};
    std::optional<DeliveryAddress> address = {};
    std::optional<std::uint32_t> copies = {};
    std::optional<NameOrOid> outputBin = {};
};

struct AccessEntry {
    Text name = {};
    DistName domain = {};
    std::int32_t nameType = 0;  // 0 any user, 1 a user, 2 a group
    std::int32_t privilege = 2; // 1 grants nothing, 2 and 3 grant access
};

// Chains whose elements may be absent.
using DistNames = std::vector<std::optional<DistName>>;
using ObjectIdents = std::vector<std::optional<ObjectIdent>>;

// ---- Making unions ----

Text text(std::string_view ascii);
Text t61Text(std::string_view bytes);
Text latin1Text(std::string_view bytes);
Text ucs2Text(std::string_view bytes); // big-endian
Text codedText(std::string_view bytes, std::uint32_t codeSet);

NameOrOid oid(std::uint32_t shortOid);
NameOrOid name(std::string_view ascii);
NameOrOid name(const Text &local);

CardinalOrName cardinal(std::uint32_t number);
CardinalOrName cardinal(const NameOrOid &named);

FontReference font(const Text &simple);
FontReference isoFont(std::string_view octets);

AttributeRef attributeRef(std::uint32_t shortIdentifier);

FinishingSpec finishing(const NameOrOid &named);
FinishingSpec finishingSpecs(std::string_view octets);

PageIdent page(std::uint32_t nominal);
PageIdent pageNamed(const Text &alphanumeric);
PageIdent pageTagged(const NameOrOid &tag);

MediaSelect mediumForAllPages(const NameOrOid &medium);
MediaSelect mediumForPages(const std::vector<PageMedium> &selected);

ObjectIdent objectJob(std::string_view job);
ObjectIdent objectDocument(std::string_view job, std::optional<std::uint32_t> document);
ObjectIdent objectOid(std::uint32_t shortOid);
ObjectIdent objectDistName(const DistName &distName);
ObjectIdent objectFont(const FontReference &reference);
ObjectIdent objectNameOrOid(const NameOrOid &nameOrOid);
ObjectIdent objectName(const Text &simple);

// Pairs of attribute type and value of an O/R address, such as {"S", "Reed"}.
DeliveryAddress mailAddress(const std::vector<std::pair<std::string, std::string>> &pairs);
DeliveryAddress addressText(const Text &address);
DeliveryAddress addressOctets(std::string_view octets);
DeliveryAddress addressDistName(const DistName &distName);
DeliveryAddress addressUnread(std::int32_t choice, std::string_view octets); // for choices 2, 4 and 7

// ---- Access list entries ----

constexpr std::uint32_t DOMAIN_NT = 3051;
constexpr std::uint32_t DOMAIN_ANY = 3055;

AccessEntry anyUserEntry(); // admits everybody
AccessEntry userEntry(std::string_view user, std::string_view domain, std::uint32_t domainType = DOMAIN_NT);
AccessEntry groupEntry(std::string_view group, std::string_view domain);

// ---- Packing ----

inline Bytes pack(std::uint32_t number) {
    return packUint(number);
}

template <class Kind>
Bytes pack(const Union<Kind> &value) {
    return packInt(value.choice) + value.member;
}

Bytes pack(const DistName &value);
Bytes pack(const Time &value);
Bytes pack(const DocumentFormat &value);
Bytes pack(const IgnoredAttribute &value);
Bytes pack(const Finishing &value);
Bytes pack(const PageSelect &value);
Bytes pack(const PageMedium &value);
Bytes pack(const MediaConsumed &value);
Bytes pack(const Locale &value);
Bytes pack(const EventProfile &value);
Bytes pack(const ResultsProfile &value);
Bytes pack(const AccessEntry &value);

template <class Record>
Bytes pack(const std::optional<Record> &value) {
    return value ? packInt(1) + pack(*value) : packInt(0);
}

// Packs a chain.
template <class Element>
Bytes pack(const std::vector<Element> &elements) {
    Bytes packed;
    for (const Element &element : elements)
        packed += packInt(1) + pack(element);
    return packed + packInt(0);
}

} // namespace samples
