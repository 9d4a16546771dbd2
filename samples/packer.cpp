#include "samples/packer.h"

#include <bit>

namespace samples {

// ---- Scalars ----

Bytes packUint(std::uint32_t number) {
    return {static_cast<char>(number >> 24), static_cast<char>(number >> 16), static_cast<char>(number >> 8),
            static_cast<char>(number)};
}

Bytes packInt(std::int32_t number) {
    return packUint(static_cast<std::uint32_t>(number));
}

Bytes packCardinal64(std::uint64_t number) {
    return packUint(static_cast<std::uint32_t>(number >> 32)) + packUint(static_cast<std::uint32_t>(number));
}

Bytes packDouble(double number) {
    return packCardinal64(std::bit_cast<std::uint64_t>(number));
}

Bytes packString(std::string_view bytes) {
    Bytes packed = packUint(static_cast<std::uint32_t>(bytes.size()));
    packed.append(bytes);
    packed.append((4 - bytes.size() % 4) % 4, '\0');
    return packed;
}

// ---- Making unions ----

Text text(std::string_view ascii) {
    return {1, packString(ascii)};
}
Text t61Text(std::string_view bytes) {
    return {2, packString(bytes)};
}
Text latin1Text(std::string_view bytes) {
    return {3, packString(bytes)};
}
Text ucs2Text(std::string_view bytes) {
    return {4, packString(bytes)};
}
Text codedText(std::string_view bytes, std::uint32_t codeSet) {
    return {5, packString(bytes) + packUint(codeSet)};
}

NameOrOid oid(std::uint32_t shortOid) {
    return {1, packUint(shortOid)};
}
NameOrOid name(std::string_view ascii) {
    return name(text(ascii));
}
NameOrOid name(const Text &local) {
    return {2, pack(local)};
}

CardinalOrName cardinal(std::uint32_t number) {
    return {1, packUint(number)};
}
CardinalOrName cardinal(const NameOrOid &named) {
    return {2, pack(named)};
}

FontReference font(const Text &simple) {
    return {1, pack(simple)};
}
FontReference isoFont(std::string_view octets) {
    return {2, packString(octets)};
}

AttributeRef attributeRef(std::uint32_t shortIdentifier) {
    return {1, packUint(shortIdentifier)};
}

FinishingSpec finishing(const NameOrOid &named) {
    return {1, pack(named)};
}
FinishingSpec finishingSpecs(std::string_view octets) {
    return {2, packString(octets)};
}

PageIdent page(std::uint32_t nominal) {
    return {1, packUint(nominal)};
}
PageIdent pageNamed(const Text &alphanumeric) {
    return {2, pack(alphanumeric)};
}
PageIdent pageTagged(const NameOrOid &tag) {
    return {3, pack(tag)};
}

MediaSelect mediumForAllPages(const NameOrOid &medium) {
    return {1, pack(medium)};
}
MediaSelect mediumForPages(const std::vector<PageMedium> &selected) {
    return {2, pack(selected)};
}

ObjectIdent objectJob(std::string_view job) {
    return {1, packString(job)};
}
ObjectIdent objectDocument(std::string_view job, std::optional<std::uint32_t> document) {
    return {2, packString(job) + pack(document)};
}
ObjectIdent objectOid(std::uint32_t shortOid) {
    return {3, packUint(shortOid)};
}
ObjectIdent objectDistName(const DistName &distName) {
    return {4, pack(distName)};
}
ObjectIdent objectFont(const FontReference &reference) {
    return {5, pack(reference)};
}
ObjectIdent objectNameOrOid(const NameOrOid &nameOrOid) {
    return {6, pack(nameOrOid)};
}
ObjectIdent objectName(const Text &simple) {
    return {7, pack(simple)};
}

DeliveryAddress mailAddress(const std::vector<std::pair<std::string, std::string>> &pairs) {
    Bytes chain;
    for (const auto &[type, value] : pairs)
        chain += packInt(1) + packString(type) + packString(value);
    return {1, chain + packInt(0)};
}
DeliveryAddress addressText(const Text &address) {
    return {3, pack(address)};
}
DeliveryAddress addressOctets(std::string_view octets) {
    return {5, packString(octets)};
}
DeliveryAddress addressDistName(const DistName &distName) {
    return {6, pack(distName)};
}
DeliveryAddress addressUnread(std::int32_t choice, std::string_view octets) {
    return {choice, packString(octets)};
}

// ---- Access list entries ----

AccessEntry anyUserEntry() {
    return {.name = text(""), .domain = {text(""), oid(DOMAIN_ANY)}, .nameType = 0, .privilege = 2};
}

AccessEntry userEntry(std::string_view user, std::string_view domain, std::uint32_t domainType) {
    return {.name = text(user), .domain = {text(domain), oid(domainType)}, .nameType = 1, .privilege = 2};
}

AccessEntry groupEntry(std::string_view group, std::string_view domain) {
    return {.name = text(group), .domain = {text(domain), oid(DOMAIN_NT)}, .nameType = 2, .privilege = 2};
}

// ---- Packing ----

Bytes pack(const DistName &value) {
    return pack(value.name) + pack(value.syntax);
}

Bytes pack(const Time &value) {
    Bytes packed;
    for (const std::int32_t field : {value.year, value.month, value.day, value.hour, value.minute,
                                     value.second, value.millisec, value.mindiff, value.utc})
        packed += packInt(field);
    return packed;
}

Bytes pack(const DocumentFormat &value) {
    return packUint(value.format) + pack(value.variants) + pack(value.version);
}

Bytes pack(const IgnoredAttribute &value) {
    return pack(value.document) + pack(value.attribute);
}

Bytes pack(const Finishing &value) {
    return pack(value.message) + pack(value.spec);
}

Bytes pack(const PageSelect &value) {
    return pack(value.first) + pack(value.last);
}

Bytes pack(const PageMedium &value) {
    return pack(value.pages) + pack(value.medium);
}

Bytes pack(const MediaConsumed &value) {
    return pack(value.printType) + pack(value.mediumSize) + packUint(value.impressions) +
           packUint(value.sheets);
}

Bytes pack(const Locale &value) {
    return packString(value.language) + packString(value.country) + packUint(value.characterSet) +
           packString(value.modifier);
}

Bytes pack(const EventProfile &value) {
    return pack(value.events) + pack(value.method) + pack(value.comment) + pack(value.address) +
           pack(value.locale);
}

Bytes pack(const ResultsProfile &value) {
    return pack(value.method) + pack(value.comment) + pack(value.address) + pack(value.copies) +
           pack(value.outputBin);
}

Bytes pack(const AccessEntry &value) {
    return pack(value.name) + pack(value.domain) + packInt(value.nameType) + packInt(value.privilege);
}

} // namespace samples
