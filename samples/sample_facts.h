// The facts of a made-up print job, from which its attributes are made.
#pragma once

#include <cstdint>
#include <string>

#include "samples/sample_jobs.h"

namespace samples {

struct Person {
    const char *name, *domain;
    std::uint32_t domainType;
};

// The subject of a choice by pick(); each subject has its own sequence of numbers.
enum Subject : std::uint32_t {
    PAGES,
    MANY_COPIES,
    COPIES,
    PRIORITY,
    SIDES,
    OWNER,
    TITLE,
    START,
    PRINTER,
    MEDIUM,
    FORMAT,
    FINISHING_KIND,
    MAIL_FORM,
    LETTERHEAD,
    FINISHED,
    HAS_RESULTS_PROFILE,
    FLOOR,
    HAS_COMMENT,
    COMMENT_FORM,
    IS_COUNTED,
    HAS_ANNEX,
    ACCOUNT,
    HELD,
    BINDING,
    RETRIES,
    SHIFT,
    ORDER_OF_PAGES,
};

struct Facts {
    const Day &day;
    std::uint64_t number;
    std::uint32_t document = 0; // number of the document, from 1; 0 for the job as a whole

    std::uint32_t pages, copies, priority;
    std::int32_t submitted, started, completed; // seconds since midnight
    bool twoSided;
    Person owner;
    std::string identifier, title;
    const char *printer, *medium, *format, *finishing; // all except the printer have a name in the OID table

    Facts(const Day &day, std::uint64_t number);

    // A number below the limit, always the same for the same seed, job number, subject and limit.
    std::uint32_t pick(Subject subject, std::uint32_t limit) const;
    bool oneIn(std::uint32_t limit, Subject subject) const { return pick(subject, limit) == 0; }

    std::uint32_t impressions() const { return pages * copies; }
    std::uint32_t sheets() const { return twoSided ? (pages + 1) / 2 * copies : impressions(); }
    bool hasCover() const { return number % 2 == 0; } // used only for orders
    std::uint32_t documents() const { return number % 4 == 2 ? 2 : 1; }
};

} // namespace samples
