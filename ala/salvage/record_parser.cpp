#include "ala/salvage/record_parser.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>
#include <string_view>

#include "ala/log/open_log.h"
#include "ala/render/value_types.h"
#include "platform/byte_order.h"
#include "service/oid/oid.h"

using namespace qvledger;

// Counts of attributes or values from this number on are implausible.
constexpr std::uint32_t kMost = 1 << 24;
// Bytes; unpacking longer values would take too much memory.
constexpr std::uint32_t kLongestUnpacked = 1 << 20;

// The costs of steps, in the unit of LogBytes::cost().
constexpr std::int64_t kCostOfTag = 240;
constexpr std::int64_t kCostOfValue = 24;
constexpr std::int64_t kCostOfNewIdentifier = 1500;
constexpr std::int64_t kCostOfUnpacking = 250;

static std::uint32_t netWord(const std::uint8_t *at) {
    return fromNetworkOrder(nativeWord(at));
}

RecordParser::RecordParser(LogBytes &bytes, std::uint32_t verNum)
    : bytes_(bytes), headSize_(verNum < kVersionWithCounts ? kWord : 3 * kWord) {}

Fault RecordParser::readHead(std::int64_t tag, RecordHead *head) {
    const std::uint8_t *at = bytes_.at(tag - headSize_, kWord);
    if (at == nullptr)
        return Fault::PastEnd;
    *head = {netWord(at), netWord(at), 0};
    if (head->numAttr == 0)
        return Fault::ZeroCount;
    at = bytes_.at(tag - headSize_, static_cast<std::size_t>(headSize_));
    if (at != nullptr && headSize_ > kWord)
        *head = {netWord(at), netWord(at + kWord), netWord(at + 2 * kWord)};
    if (head->numAttr >= kMost || head->numJobAttr > head->numAttr)
        return Fault::BadCounts;
    return at != nullptr && head->numAttr <= (bytes_.size() - tag) / kTagSize ? Fault::None : Fault::PastEnd;
}

// Reads the identifier in a tag, and sets *number to its hash.  False if the identifier is not sound.
// Remembers sound identifiers, because logs repeat them.
bool RecordParser::readIdentifier(const std::uint8_t *tag, std::uint64_t *number) {
    constexpr std::size_t kRemembered = 4096;
    const char *decoid = reinterpret_cast<const char *>(tag + offsetof(attrTag, decoid));
    const std::size_t size = strnlen(decoid, kDecoidSize);
    *number = std::hash<std::string_view>{}({decoid, size});
    if (size == kDecoidSize || sound_.contains(*number))
        return size != kDecoidSize;
    bytes_.addCost(kCostOfNewIdentifier);
    std::uint8_t binary[OID_BINARY_SIZE];
    if (OID_ConvertDecToBin(status_, decoid, binary, 0) != 0)
        return false;
    if (sound_.size() < kRemembered)
        sound_.insert(*number);
    return true;
}

// Checks that the value can be unpacked as its type.  A value of an unknown type, or a long value, is always
// accepted.
Fault RecordParser::checkValue(std::int64_t position, std::uint32_t length, const ValueType *known) {
    if (known == nullptr || length > kLongestUnpacked)
        return Fault::None;
    bytes_.addCost(kCostOfUnpacking + length / 2);
    const auto have = static_cast<std::size_t>(std::min<std::int64_t>(length, bytes_.size() - position));
    const std::uint8_t *at = bytes_.at(position, have);
    if (at == nullptr)
        return Fault::BadValue;
    alignas(std::max_align_t) std::byte room[1024]; // enough for most values
    ValueMemory memory(room);
    XdrReader in({at, have}, memory, length - have);
    static_cast<void>(known->form.unpack(in));
    if (in.outOfMemory())
        throw std::bad_alloc();
    if (in.lacksBytes())
        return Fault::CutOff;
    return in.isWhole() && have == length ? Fault::None : Fault::BadValue;
}

// Reads the attribute at the run's end.  Adds it to the run if it is sound; otherwise returns its fault.
Fault RecordParser::addAttribute(Run &run, std::int64_t limit) {
    const std::uint8_t *tag = bytes_.at(run.end, kTagSize);
    if (tag == nullptr)
        return Fault::PastEnd;
    bytes_.addCost(kCostOfTag);
    if (bytes_.cost() > limit)
        return Fault::TooCostly;
    const std::uint32_t numAttrVal = nativeWord(tag + offsetof(attrTag, numAttrVal));
    const std::uint32_t type = nativeWord(tag + offsetof(attrTag, attrValType));
    std::uint64_t identifier = 0;
    if (!readIdentifier(tag, &identifier))
        return Fault::BadIdentifier;
    const ValueType *known = findValueType(type);
    const Fault pastEnd = known != nullptr && numAttrVal < kMost ? Fault::CutOff : Fault::PastEnd;
    std::int64_t at = run.end + kTagSize;
    std::uint32_t length = 0;
    for (std::uint32_t i = 0; i < numAttrVal; ++i) {
        const std::uint8_t *word = bytes_.at(at, kWord);
        if (word == nullptr)
            return pastEnd;
        length = nativeWord(word);
        at += kWord;
        if (!isValueLength(length))
            return Fault::BadLength;
        bytes_.addCost(kCostOfValue);
        if (bytes_.cost() > limit)
            return Fault::TooCostly;
        const Fault fault = checkValue(at, length, known);
        if (length > bytes_.size() - at)
            return fault == Fault::CutOff ? pastEnd : Fault::PastEnd;
        if (fault != Fault::None)
            return fault;
        at += length;
    }
    run.last = run.end;
    run.lastType = type;
    run.end = at;
    ++run.attributes;
    run.values += numAttrVal;
    run.longest = std::max(run.longest, run.end - run.last);
    run.endIsCertain = numAttrVal == 0 || (known != nullptr && length <= kLongestUnpacked);
    if (run.identifiers.size() < kNotedIdentifiers)
        run.identifiers.push_back(identifier);
    return Fault::None;
}

Run RecordParser::follow(std::int64_t tag, std::int64_t limit, std::uint32_t expected) {
    Run run = {};
    run.begin = run.end = run.last = tag;
    while (run.fault == Fault::None)
        run.fault = addAttribute(run, run.attributes <= expected ? INT64_MAX : limit);
    return run;
}

bool RecordParser::isBoundary(std::int64_t position) {
    constexpr std::int64_t kSeen = offsetof(attrTag, decoid) + 2; // bytes of the tag that isBoundary() checks
    const std::int64_t tag = position + headSize_;
    RecordHead head = {};
    if (const Fault fault = readHead(tag, &head); fault != Fault::None && fault != Fault::PastEnd)
        return false;
    const std::uint8_t *at = bytes_.at(tag, kSeen);
    if (at == nullptr)
        return tag + kSeen > bytes_.size();
    const std::uint8_t *decoid = at + offsetof(attrTag, decoid);
    return nativeWord(at) < kMost && decoid[0] >= '0' && decoid[0] <= '2' && decoid[1] == '.';
}
