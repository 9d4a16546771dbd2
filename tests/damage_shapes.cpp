#include "tests/damage_shapes.h"

#include <algorithm>
#include <numeric>

#include "tests/support/value_cases.h"

using namespace samples;

constexpr std::uint32_t kUnknownType = 999;
constexpr std::size_t kLongestCopied = 2000; // bytes; a longer record is not copied into a text

namespace {

using Attributes = std::vector<Tag>;

struct Kind {
    Attributes ofJob, ofDocument;
};

enum Damage { Zero512, Zero4096, Swap512, Swap4096, Remove, Insert, Overwrite, Flip, Cut };
constexpr const char *kNames[] = {"zero 512", "zero 4096", "swap 512", "swap 4096", "remove",
                                  "insert",   "overwrite", "flip",     "cut"};

} // namespace

static Bytes randomBytes(std::size_t size, Random &random) {
    Bytes bytes(size, '\0');
    std::ranges::generate(bytes, [&] { return static_cast<char>(pick(random, 256)); });
    return bytes;
}

// Returns a valid value of the type, or of any type for kUnknownType.
static const ValueCase &pickCase(std::uint32_t type, Random &random) {
    std::vector<const ValueCase *> values;
    for (const ValueCase &value : valueCases())
        if (value.code == 0 && (type == kUnknownType || value.type == type))
            values.push_back(&value);
    return *values[pick(random, values.size())];
}

static Bytes makeValue(std::uint32_t type, const Bytes &copied, Random &random) {
    const Bytes text(pick(random, 30), 'x');
    switch (type) {
    case kUnknownType:
        return randomBytes(1 + pick(random, 40), random);
    case INTEGER:
        return packInt(static_cast<std::int32_t>(pick(random, 10)));
    case STRING:
        return packString(text);
    case TEXT: // a user can put a copy of a record into a text
        return pack(latin1Text(pick(random, 20) == 0 ? randomBytes(pick(random, 8), random) + copied : text));
    default:
        return pickCase(type, random).packed;
    }
}

static void addAttributes(const Attributes &attributes, const Bytes &copied, Random &random, Job &job) {
    for (const Tag &tag : attributes) {
        std::vector<Value> values;
        for (std::size_t choice = pick(random, 16); values.size() < (choice < 3 ? choice : 1);)
            values.push_back(makeValue(tag.attrValType, copied, random));
        job.attribute(tag.decoid, tag.attrValType, values);
    }
}

static std::vector<Kind> makeKinds(Random &random) {
    constexpr std::uint32_t kFrequent[] = {TEXT, TEXT, INTEGER, STRING, kUnknownType};
    Attributes all(5 + pick(random, 50));
    for (Tag &tag : all) {
        tag.decoid = "1.3.6.1.4.1.32473.1." + std::to_string(&tag - all.data() + 1);
        const std::size_t choice = pick(random, 2 * std::size(kFrequent));
        tag.attrValType =
            choice < std::size(kFrequent) ? kFrequent[choice] : pickCase(kUnknownType, random).type;
    }
    std::vector<Kind> kinds(1 + pick(random, 5));
    for (Kind &kind : kinds) {
        const bool isSmall = pick(random, 4) == 0;
        kind.ofJob.resize(isSmall ? 1 : 1 + pick(random, 1 + pick(random, 30)));
        kind.ofDocument.resize(isSmall || pick(random, 3) != 0 ? 0 : 1 + pick(random, 6));
        for (Attributes *attributes : {&kind.ofJob, &kind.ofDocument})
            std::ranges::generate(*attributes, [&] { return all[pick(random, all.size())]; });
    }
    return kinds;
}

static Original makeOriginal(Random &random) {
    const LogHeader header{.verNum = static_cast<std::uint32_t>(pick(random, 4)), .createDate = 1000000000};
    Original original{Log(header), header.verNum, Log(header).size()};
    const std::vector<Kind> kinds = makeKinds(random);
    const std::size_t shape = pick(random, 10), rarity = 2 + pick(random, 20);
    std::size_t records = shape == 0 ? 1 + pick(random, 50) : 160 + pick(random, shape == 1 ? 251 : 51);
    Bytes copied;
    for (; records > 0; --records) {
        std::size_t kind = 0;
        while (kind + 1 < kinds.size() && pick(random, rarity) == 0)
            ++kind; // each kind is rarer than the previous kind
        Job job;
        addAttributes(kinds[kind].ofJob, copied, random, job);
        for (std::size_t documents = kinds[kind].ofDocument.empty() ? 0 : pick(random, 4); documents > 0;
             --documents)
            addAttributes(kinds[kind].ofDocument, copied, random, job.document());
        original.log.job(job);
        const std::size_t begin = original.log.records().back();
        if (original.log.size() - begin <= kLongestCopied)
            copied = original.log.bytes().substr(begin);
    }
    return original;
}

static std::string apply(Damage damage, Damaged &log, std::size_t headerEnd, Random &random) {
    const std::size_t unit = damage == Zero512 || damage == Swap512 ? 512 : damage < Remove ? 4096 : 1;
    const std::size_t first = (headerEnd + unit - 1) / unit, end = log.bytes.size() / unit;
    if (end <= first)
        return "nothing";
    const std::size_t at = (first + pick(random, end - first)) * unit;
    const std::size_t other = (first + pick(random, end - first)) * unit;
    const std::size_t most = pick(random, 2) == 0 ? 16 : 1024;
    const std::size_t size = unit > 1 ? unit : std::min(1 + pick(random, most), log.bytes.size() - at);
    const auto origin = log.origins.begin() + static_cast<std::ptrdiff_t>(at);
    switch (damage) {
    case Zero512:
    case Zero4096:
        log.bytes.replace(at, size, size, '\0');
        break;
    case Swap512:
    case Swap4096:
        std::swap_ranges(&log.bytes[at], &log.bytes[at] + size, &log.bytes[other]);
        std::swap_ranges(&log.origins[at], &log.origins[at] + size, &log.origins[other]);
        break;
    case Remove:
        log.bytes.erase(at, size);
        log.origins.erase(origin, origin + static_cast<std::ptrdiff_t>(size));
        break;
    case Insert:
        log.bytes.insert(at, randomBytes(size, random));
        log.origins.insert(origin, size, kNew);
        break;
    case Overwrite:
        log.bytes.replace(at, size, randomBytes(size, random));
        break;
    case Flip: // flips 1 to 4 bits close to each other
        for (std::size_t bits = 1 + pick(random, 4); bits > 0; --bits)
            log.bytes[at + pick(random, size)] ^= static_cast<char>(1 << pick(random, 8));
        break;
    case Cut:
        log.bytes.resize(std::max(at, other));
        log.origins.resize(log.bytes.size());
        break;
    }
    return std::string(kNames[damage]) + " at " + std::to_string(at) +
           (damage < Remove || damage == Cut ? " or " + std::to_string(other)
                                             : " size " + std::to_string(size));
}

ShapedLog makeShapedLog(unsigned number) {
    Random random(number);
    ShapedLog log{makeOriginal(random), {}, {}, {}};
    log.damaged.bytes = log.original.log.bytes();
    log.damaged.origins.resize(log.damaged.bytes.size());
    std::iota(log.damaged.origins.begin(), log.damaged.origins.end(), 0);
    const bool isCutAlone = pick(random, 8) == 0;
    for (std::size_t count = isCutAlone ? 1 : 1 + pick(random, 3); count > 0; --count) {
        const Damage damage = isCutAlone ? Cut : static_cast<Damage>(pick(random, Cut + 1));
        log.kind = log.kind.empty() ? kNames[damage] : "several";
        log.damages += ", " + apply(damage, log.damaged, log.original.headerEnd, random);
    }
    return log;
}
