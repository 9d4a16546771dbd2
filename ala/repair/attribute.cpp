#include "ala/repair/attribute.h"

#include <algorithm>
#include <cstring>

#include "ala/log/open_log.h"
#include "ala/render/value_types.h"
#include "platform/byte_order.h"
#include "service/oid/oid.h"

using namespace qvledger;

constexpr std::int64_t kWord = sizeof(std::uint32_t);
constexpr std::uint32_t kMostAttributes = 1 << 24; // more would take 2.5 GiB for their tags
constexpr std::uint32_t kMostValues = 1 << 24;     // of one, as TagScan has it

// What looking costs, in bytes that are passed over.
constexpr std::int64_t kCostOfTag = 64;
constexpr std::int64_t kCostOfValue = 4;
constexpr std::int64_t kCostOfIdentifier = 300; // that is not known
constexpr std::int64_t kCostOfUnpacking = 100;
constexpr std::uint32_t kBytesUnpackedForOne = 4;

RecordReader::RecordReader(LogBytes &givenBytes, std::uint32_t verNum)
    : bytes(givenBytes), wordsOfHead(verNum < kVersionWithCounts ? 1 : 3) {}

static std::uint32_t netWord(const std::uint8_t *at) {
    return fromNetworkOrder(nativeWord(at));
}

Fit RecordReader::readHead(std::int64_t begin, RecordHead *head) {
    const std::uint8_t *at = bytes.at(begin, static_cast<std::size_t>(headSize()));
    if (at == nullptr)
        return Fit::PastEnd;
    *head = {netWord(at), 0, 0};
    if (head->numAttr == 0)
        return Fit::ZeroCount;
    if (wordsOfHead > 1) {
        head->numJobAttr = netWord(at + kWord);
        head->docAttrPerDoc = netWord(at + 2 * kWord);
    }
    if (head->numAttr >= kMostAttributes || head->numJobAttr > head->numAttr)
        return Fit::BadCounts;
    const std::int64_t left = bytes.size() - begin - headSize();
    return head->numAttr <= left / kTagSize ? Fit::Whole : Fit::PastEnd;
}

// Where an identifier is remembered: by its number, and by the bytes where those of one system differ.
static std::size_t slotOf(const std::uint8_t *tag) {
    std::uint64_t words[2];
    std::memcpy(words, tag + offsetof(attrTag, decoid) + 8, sizeof words);
    const std::uint64_t mixed = words[0] ^ words[1] ^ nativeWord(tag + offsetof(attrTag, attrID));
    return static_cast<std::size_t>(mixed * 0x9e3779b97f4a7c15U >> 58);
}

Fit RecordReader::readIdentifier(const std::uint8_t *tag, std::uint64_t *number) {
    const char *decoid = reinterpret_cast<const char *>(tag + offsetof(attrTag, decoid));
    Identifier &slot = known[slotOf(tag)];
    if (slot.size == 0 || std::memcmp(decoid, slot.decoid, slot.size) != 0) {
        const auto *end = static_cast<const char *>(std::memchr(decoid, '\0', kDecoidSize));
        std::uint8_t binary[OID_BINARY_SIZE];
        if (end == nullptr)
            return Fit::BadIdentifier;
        if (!bytes.pay(kCostOfIdentifier))
            return Fit::TooCostly;
        if (OID_ConvertDecToBin(status, decoid, binary, 0) != 0)
            return Fit::BadIdentifier;
        slot.size = static_cast<std::size_t>(end - decoid) + 1;
        std::memcpy(slot.decoid, decoid, slot.size);
        slot.number = 0xcbf29ce484222325U; // FNV-1a
        for (std::size_t i = 0; i < slot.size; ++i)
            slot.number = (slot.number ^ static_cast<std::uint8_t>(decoid[i])) * 0x100000001b3U;
    }
    *number = slot.number;
    return Fit::Whole;
}

static bool isKnownType(std::uint32_t type) {
    return findValueType(type) != nullptr;
}

Fit RecordReader::checkValue(std::int64_t position, std::uint32_t length, std::uint32_t type) {
    if (!isKnownType(type) || length > kLongestUnpacked)
        return Fit::Whole;
    if (!bytes.pay(kCostOfUnpacking + length / kBytesUnpackedForOne))
        return Fit::TooCostly;
    const std::uint8_t *at = bytes.at(position, length);
    if (at == nullptr)
        return Fit::BadValue;
    void *value = nullptr;
    AS_attrValDesc_t description = {};
    if (ODP_UnpackAV(status, static_cast<std::int32_t>(length), at, type, &value, &description) != 0)
        return Fit::BadValue;
    description.deleteFunc(status, value, nullptr);
    return Fit::Whole;
}

// The length of a value, from a word that is null beyond the log's end, and with so many bytes left behind
// it.
static Fit takeLength(const std::uint8_t *word, std::int64_t left, std::uint32_t *length) {
    if (word == nullptr)
        return Fit::PastEnd;
    *length = nativeWord(word);
    if (!isValueLength(*length))
        return Fit::BadLength;
    return *length <= left ? Fit::Whole : Fit::PastEnd;
}

Fit RecordReader::walkAttribute(std::int64_t begin, bool withValues, FoundAttribute *attribute) {
    const std::int64_t left = bytes.size() - begin;
    const std::uint8_t *tag = bytes.at(begin, static_cast<std::size_t>(std::min(left, kTagSize + kWord)));
    if (tag == nullptr || left < kTagSize)
        return Fit::PastEnd;
    if (!bytes.pay(kCostOfTag))
        return Fit::TooCostly;
    const std::uint32_t numAttrVal = nativeWord(tag + offsetof(attrTag, numAttrVal));
    std::uint32_t length = 0;
    // Few of the bytes that look like a tag have a length where one would be.
    if (numAttrVal != 0)
        if (const Fit fit = takeLength(left > kTagSize + kWord ? tag + kTagSize : nullptr,
                                       left - kTagSize - kWord, &length);
            fit != Fit::Whole)
            return fit;
    const std::uint32_t type = nativeWord(tag + offsetof(attrTag, attrValType));
    if (const Fit fit = readIdentifier(tag, &attribute->identifier); fit != Fit::Whole)
        return fit;
    Fit sound = Fit::Whole;
    std::int64_t at = begin + kTagSize;
    for (std::uint32_t i = 0; i < numAttrVal; ++i) {
        if (const Fit fit = takeLength(bytes.at(at, kWord), bytes.size() - at - kWord, &length);
            fit != Fit::Whole)
            return fit;
        if (!bytes.pay(kCostOfValue))
            return Fit::TooCostly;
        if (withValues && sound == Fit::Whole)
            sound = checkValue(at + kWord, length, type);
        at += kWord + length;
    }
    attribute->numAttrVal = numAttrVal;
    attribute->end = at;
    attribute->endIsCertain = numAttrVal == 0 || (isKnownType(type) && length <= kLongestUnpacked);
    return sound;
}

bool RecordReader::measuresAsRecord(std::int64_t begin) {
    RecordHead head = {};
    if (readHead(begin, &head) != Fit::Whole)
        return false;
    FoundAttribute attribute = {};
    std::int64_t at = begin + headSize();
    for (std::uint32_t i = 0; i < head.numAttr; ++i) {
        if (measureAttribute(at, &attribute) != Fit::Whole)
            return false;
        at = attribute.end;
    }
    return true;
}

Fit RecordReader::readRecord(std::int64_t begin, FoundRecord *record) {
    record->begin = record->end = begin;
    if (const Fit fit = readHead(begin, &record->head); fit != Fit::Whole)
        return fit;
    record->values = 0;
    record->longestAttribute = 0;
    record->identifiers.clear();
    std::int64_t at = begin + headSize();
    FoundAttribute attribute = {};
    for (std::uint32_t i = 0; i < record->head.numAttr; ++i) {
        if (const Fit fit = readAttribute(at, &attribute); fit != Fit::Whole)
            return fit;
        record->lastAttribute = at;
        record->longestAttribute = std::max(record->longestAttribute, attribute.end - at);
        record->end = at = attribute.end;
        record->values += attribute.numAttrVal;
        if (record->identifiers.size() < kNotedIdentifiers)
            record->identifiers.push_back(attribute.identifier);
    }
    record->endIsCertain = attribute.endIsCertain;
    FoundAttribute further = {};
    const Fit behind = readAttribute(at, &further);
    if (behind == Fit::TooCostly)
        return behind; // for what is not looked at may be there
    record->further = further.identifier;
    return behind == Fit::Whole ? Fit::MoreBehind : Fit::Whole;
}

bool RecordReader::looksLikeRecord(std::int64_t begin) {
    constexpr std::int64_t kSeen = offsetof(attrTag, decoid) + 2; // of the tag
    const std::int64_t have = std::min(bytes.size() - begin, headSize() + kSeen);
    std::uint8_t head[3 * kWord + kSeen] = {};
    const std::uint8_t *at = have > 0 ? bytes.at(begin, static_cast<std::size_t>(have)) : nullptr;
    if (at == nullptr)
        return false;
    std::memcpy(head, at, static_cast<std::size_t>(have));
    const std::uint32_t numAttr = netWord(head);
    if (numAttr >= kMostAttributes || (have >= kWord && numAttr == 0))
        return false;
    if (wordsOfHead > 1 && have >= 2 * kWord && netWord(head + kWord) > numAttr)
        return false;
    const std::uint8_t *tag = head + headSize();
    const std::uint8_t *decoid = tag + offsetof(attrTag, decoid);
    return have < headSize() + kSeen ||
           (nativeWord(tag) < kMostValues && decoid[0] >= '0' && decoid[0] <= '2' && decoid[1] == '.');
}
