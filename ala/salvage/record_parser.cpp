#include "ala/salvage/record_parser.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include "ala/log/open_log.h"
#include "ala/render/value_types.h"
#include "platform/byte_order.h"
#include "service/oid/oid.h"

using namespace qvledger;

constexpr std::uint32_t kMostAttributes = 1 << 24;  // more would take 2.5 GiB for their tags
constexpr std::uint32_t kMostValues = 1 << 24;      // of an attribute, as LogBytes::nextTag has it
constexpr std::uint32_t kLongestUnpacked = 1 << 20; // bytes; longer values take too much memory

// What steps cost, in bytes that are read in order.
constexpr std::int64_t kCostOfTag = 240;
constexpr std::int64_t kCostOfValue = 24;
constexpr std::int64_t kCostOfNewIdentifier = 1500;
constexpr std::int64_t kCostOfUnpacking = 250;
constexpr std::uint32_t kBytesUnpackedForOne = 2;

static std::uint32_t netWord(const std::uint8_t *at) {
    return fromNetworkOrder(nativeWord(at));
}

bool RecordHead::documentsFill() const {
    const std::uint32_t attributes = numAttr - numJobAttr;
    return attributes == 0 || (docAttrPerDoc != 0 && attributes % docAttrPerDoc == 0);
}

RecordParser::RecordParser(LogBytes &bytes, std::uint32_t verNum)
    : bytes_(bytes), headSize_(verNum < kVersionWithCounts ? kWord : 3 * kWord) {}

Fault RecordParser::readHead(std::int64_t tag, RecordHead *head) {
    const std::uint8_t *at = bytes_.at(tag - headSize_, static_cast<std::size_t>(headSize_));
    if (at == nullptr)
        return Fault::PastEnd;
    *head = {netWord(at), netWord(at), 0};
    if (headSize_ > kWord)
        *head = {netWord(at), netWord(at + kWord), netWord(at + 2 * kWord)};
    if (head->numAttr == 0)
        return Fault::ZeroCount;
    if (head->numAttr >= kMostAttributes || head->numJobAttr > head->numAttr)
        return Fault::BadCounts;
    return head->numAttr <= (bytes_.size() - tag) / kTagSize ? Fault::None : Fault::PastEnd;
}

// The same identifiers occur again and again, so sound ones are remembered.
bool RecordParser::readIdentifier(const std::uint8_t *tag, std::uint64_t *number) {
    constexpr std::size_t kRemembered = 4096;
    const char *decoid = reinterpret_cast<const char *>(tag + offsetof(attrTag, decoid));
    const std::size_t size = strnlen(decoid, kDecoidSize);
    *number = 0xcbf29ce484222325U; // FNV-1a
    for (std::size_t i = 0; i < size; ++i)
        *number = (*number ^ static_cast<std::uint8_t>(decoid[i])) * 0x100000001b3U;
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

// The bytes of a value that are there, with so many missing after them.
static Fault unpackFault(const ValueType &type, std::span<const std::uint8_t> packed, std::size_t missing) {
    alignas(std::max_align_t) std::byte room[1024]; // enough for most values
    ValueMemory memory(room);
    XdrReader in(packed, memory, missing);
    static_cast<void>(type.form.unpack(in));
    if (in.outOfMemory())
        throw std::bad_alloc();
    if (in.lacksBytes())
        return Fault::PastEnd;
    return in.isWhole() && missing == 0 ? Fault::None : Fault::BadValue;
}

// Values of unknown types, and long ones, may have any bytes.  PastEnd: only bytes past the log's end are
// missing.
Fault RecordParser::checkValue(std::int64_t position, std::uint32_t length, std::uint32_t type) {
    const ValueType *known = findValueType(type);
    if (known == nullptr || length > kLongestUnpacked)
        return Fault::None;
    bytes_.addCost(kCostOfUnpacking + length / kBytesUnpackedForOne);
    const auto have = static_cast<std::size_t>(std::min<std::int64_t>(length, bytes_.size() - position));
    const std::uint8_t *at = bytes_.at(position, have);
    return at != nullptr ? unpackFault(*known, {at, have}, length - have) : Fault::BadValue;
}

// Adds the attribute at the run's end, if it is sound.
Fault RecordParser::addAttribute(Run &run, std::int64_t limit) {
    const std::int64_t begin = run.end;
    const std::int64_t left = bytes_.size() - begin;
    if (left < kTagSize)
        return Fault::PastEnd;
    const std::uint8_t *tag = bytes_.at(begin, static_cast<std::size_t>(std::min(left, kTagSize + kWord)));
    if (tag == nullptr)
        return Fault::PastEnd;
    bytes_.addCost(kCostOfTag);
    const std::uint32_t numAttrVal = nativeWord(tag + offsetof(attrTag, numAttrVal));
    const std::uint32_t type = nativeWord(tag + offsetof(attrTag, attrValType));
    // Few of the bytes that look like a tag have a length where one would be.
    if (numAttrVal != 0 && left >= kTagSize + kWord && !isValueLength(nativeWord(tag + kTagSize)))
        return Fault::BadLength;
    std::uint64_t identifier = 0;
    if (!readIdentifier(tag, &identifier))
        return Fault::BadIdentifier;
    std::int64_t at = begin + kTagSize;
    std::uint32_t length = 0;
    for (std::uint32_t i = 0; i < numAttrVal; ++i) {
        const std::uint8_t *word = bytes_.at(at, kWord);
        run.lacksOnlyBytes = word == nullptr && numAttrVal < kMostValues && findValueType(type) != nullptr;
        if (word == nullptr)
            return Fault::PastEnd;
        length = nativeWord(word);
        at += kWord;
        if (!isValueLength(length))
            return Fault::BadLength;
        bytes_.addCost(kCostOfValue);
        if (bytes_.cost() > limit)
            return Fault::TooCostly;
        const Fault fault = checkValue(at, length, type);
        if (length > bytes_.size() - at) {
            run.lacksOnlyBytes = numAttrVal < kMostValues && fault == Fault::PastEnd;
            return Fault::PastEnd;
        }
        if (fault != Fault::None)
            return fault;
        at += length;
    }
    run.last = begin;
    run.lastType = type;
    run.end = at;
    ++run.attributes;
    run.values += numAttrVal;
    run.longest = std::max(run.longest, at - begin);
    run.endIsCertain = numAttrVal == 0 || (findValueType(type) != nullptr && length <= kLongestUnpacked);
    if (run.identifiers.size() < kNotedIdentifiers)
        run.identifiers.push_back(identifier);
    return Fault::None;
}

Run RecordParser::follow(std::int64_t tag, std::int64_t limit, std::uint32_t expected) {
    constexpr std::int64_t kNoLimit = std::numeric_limits<std::int64_t>::max();
    Run run = {};
    run.begin = run.end = run.last = tag;
    while (run.fault == Fault::None)
        run.fault = run.attributes <= expected || bytes_.cost() <= limit
                        ? addAttribute(run, run.attributes <= expected ? kNoLimit : limit)
                        : Fault::TooCostly;
    return run;
}

bool RecordParser::isBoundary(std::int64_t position) {
    constexpr std::int64_t kSeen = offsetof(attrTag, decoid) + 2; // of the tag
    if (position >= bytes_.size())
        return position == bytes_.size();
    const std::int64_t have = std::min(bytes_.size() - position, headSize_ + kSeen);
    const std::uint8_t *at = bytes_.at(position, static_cast<std::size_t>(have));
    if (at == nullptr)
        return false;
    std::uint8_t head[3 * kWord + kSeen] = {};
    std::memcpy(head, at, static_cast<std::size_t>(have));
    const std::uint32_t numAttr = netWord(head);
    if (numAttr >= kMostAttributes || (have >= kWord && numAttr == 0))
        return false;
    if (headSize_ > kWord && have >= 2 * kWord && netWord(head + kWord) > numAttr)
        return false;
    const std::uint8_t *tag = head + headSize_;
    const std::uint8_t *decoid = tag + offsetof(attrTag, decoid);
    return have < headSize_ + kSeen ||
           (nativeWord(tag) < kMostValues && decoid[0] >= '0' && decoid[0] <= '2' && decoid[1] == '.');
}
