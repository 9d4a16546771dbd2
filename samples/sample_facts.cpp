#include "samples/sample_facts.h"

#include <cstdio>

namespace samples {

static constexpr Person kPeople[] = {
    {"anna", "SALES", 3051},     {"ben", "SALES", 3051},          {"chloe", "lab.example.com", 3045},
    {"david", "workshop", 3044}, {"elif", "plant.example", 3048}, {"farid", "FRONTDESK", 3049},
};

static constexpr const char *kTitles[] = {
    "Quarterly figures", "Offer 4711",   "Minutes of the board", "Floor plan",
    "Invoice",           "Caf\xe9 menu", "User's guide",         "Travel expenses",
};

static constexpr const char *kPrinters[] = {"lobby", "second-floor", "print-room"};
static constexpr const char *kMedia[] = {"iso-a4-white", "iso-a4-coloured", "iso-a3-white",
                                         "na-letter-white"};
static constexpr const char *kFormats[] = {"page-description", "plain-text", "raster-image"};
static constexpr const char *kFinishings[] = {"12-staple-top-left", "14-punch-two-holes", "3-fold-letter"};

template <class Item, std::size_t Size>
static const Item &pickOne(const Facts &facts, Subject subject, const Item (&items)[Size]) {
    return items[facts.pick(subject, Size)];
}

Facts::Facts(const Day &jobDay, std::uint64_t jobNumber) : day(jobDay), number(jobNumber) {
    constexpr std::uint64_t kOpening = 7 * 3600, kOpenFor = 11 * 3600; // seconds
    pages = 1 + pick(PAGES, 40);
    copies = oneIn(3, MANY_COPIES) ? 1 + pick(COPIES, 20) : 1;
    priority = 10 * (1 + pick(PRIORITY, 9));
    twoSided = oneIn(2, SIDES);
    owner = pickOne(*this, OWNER, kPeople);
    title = pickOne(*this, TITLE, kTitles);
    printer = pickOne(*this, PRINTER, kPrinters);
    medium = pickOne(*this, MEDIUM, kMedia);
    format = pickOne(*this, FORMAT, kFormats);
    finishing = pickOne(*this, FINISHING_KIND, kFinishings);
    submitted = static_cast<std::int32_t>(kOpening + (number - 1) * kOpenFor / day.jobs);
    started = submitted + 2 + static_cast<std::int32_t>(pick(START, 600));
    completed = started + static_cast<std::int32_t>(8 + 2 * impressions());
    char digits[32];
    std::snprintf(digits, sizeof digits, ".%06llu", static_cast<unsigned long long>(number));
    identifier = day.server + digits;
}

// The mixing step of splitmix64: neighbouring numbers and subjects give unrelated results.
std::uint32_t Facts::pick(Subject subject, std::uint32_t limit) const {
    std::uint64_t mix = (number * 64 + subject) * 0x9e3779b97f4a7c15U + day.seed * 0xd1b54a32d192ed03U;
    mix = (mix ^ (mix >> 30)) * 0xbf58476d1ce4e5b9U;
    mix = (mix ^ (mix >> 27)) * 0x94d049bb133111ebU;
    return static_cast<std::uint32_t>((mix >> 33) % limit);
}

} // namespace samples
