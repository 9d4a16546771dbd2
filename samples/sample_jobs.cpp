#include "samples/sample_jobs.h"

#include <algorithm>
#include <iterator>

#include "samples/sample_facts.h"
#include "samples/sample_oids.h"

namespace samples {

namespace {

// ---- Values ----

using Values = std::vector<Value>;

Text titleText(const Facts &facts) {
    const bool plain =
        std::all_of(facts.title.begin(), facts.title.end(), [](char c) { return (c & 0x80) == 0; });
    return plain ? text(facts.title) : latin1Text(facts.title);
}

Bytes time(const Facts &facts, std::int32_t second) {
    const std::tm &date = facts.day.date;
    // Logs count years either from 0 or from 1900; use both.
    const std::int32_t utc = facts.number % 2 == 0 ? 1 : 0;
    return pack(Time{.year = date.tm_year + (utc == 1 ? 0 : 1900),
                     .month = date.tm_mon + 1,
                     .day = date.tm_mday,
                     .hour = second / 3600,
                     .minute = second / 60 % 60,
                     .second = second % 60,
                     .utc = utc});
}

DistName owner(const Facts &facts) {
    return {text(std::string(facts.owner.domain) + "/" + facts.owner.name), oid(facts.owner.domainType)};
}

DeliveryAddress ownersMail(const Facts &facts) {
    const std::string user = facts.owner.name;
    if (facts.oneIn(2, MAIL_FORM))
        return mailAddress({{"C", "DE"}, {"ADMD", "EXAMPLE"}, {"O", "Office"}, {"S", user}});
    return mailAddress({{"DDA:RFC-822", user + "(a)example.com"}});
}

Values printersUsed(const Facts &facts) {
    DistNames used = {DistName{text(facts.printer), oid(shortOid("dns-domain"))}};
    if (facts.impressions() > 60)
        used.push_back(DistName{text("overflow")});
    return {pack(used)};
}

Values mediaUsed(const Facts &facts) {
    std::vector<NameOrOid> used = {oid(shortOid(facts.medium))};
    if (facts.oneIn(4, LETTERHEAD))
        used.push_back(name("letterhead"));
    return {pack(used)};
}

Values sidesAndFinishing(const Facts &facts) {
    Values values = {packUint(shortOid(facts.twoSided ? "2-two-sided-long-edge" : "1-one-sided"))};
    if (facts.oneIn(3, FINISHED))
        values.push_back(packUint(shortOid(facts.finishing)));
    return values;
}

Values resultsProfile(const Facts &facts) {
    if (facts.oneIn(3, HAS_RESULTS_PROFILE))
        return {pack(ResultsProfile{})};
    return {pack(ResultsProfile{.method = shortOid("internal-mail"),
                                .comment = text("floor " + std::to_string(facts.pick(FLOOR, 5))),
                                .address = addressOctets("pigeon-hole 12"),
                                .copies = facts.copies,
                                .outputBin = oid(shortOid("mailbox-bin"))})};
}

Values comment(const Facts &facts) {
    if (!facts.oneIn(3, HAS_COMMENT))
        return {};
    return {pack(facts.oneIn(2, COMMENT_FORM) ? text("please hurry")
                                              : codedText("eilt \xe2\x80\x93 danke", 106))};
}

Values notificationProfiles(const Facts &facts) {
    Values values = {pack(EventProfile{.events = {shortOid("job-completed"), shortOid("job-aborted")},
                                       .method = shortOid("electronic-mail"),
                                       .comment = text("about " + facts.identifier),
                                       .address = ownersMail(facts),
                                       .locale = Locale{"de", "DE", shortOid("utf-8"), "euro"}})};
    if (facts.number % 3 == 0)
        values.push_back(pack(EventProfile{.events = {shortOid("printer-needs-attention")},
                                           .method = shortOid("pop-up-message")}));
    return values;
}

Values mediaConsumed(const Facts &facts) {
    std::vector<MediaConsumed> consumed = {{.printType = oid(shortOid("printed")),
                                            .mediumSize = objectOid(shortOid(facts.medium)),
                                            .impressions = facts.impressions(),
                                            .sheets = facts.sheets()}};
    if (facts.hasCover())
        consumed.push_back({.printType = oid(shortOid("cover-page")),
                            .mediumSize = objectName(text("coloured card")),
                            .impressions = 1,
                            .sheets = 1});
    return {pack(consumed)};
}

Values objectsAffected(const Facts &facts) {
    return {pack(ObjectIdents{objectJob(facts.identifier), objectDocument(facts.identifier, 1),
                              objectDistName(owner(facts)), objectNameOrOid(name(facts.printer))})};
}

Values ignoredAttributes(const Facts &facts) {
    Values values = {pack(IgnoredAttribute{.attribute = attributeRef(shortOid("job-hold"))})};
    if (facts.documents() > 1)
        values.push_back(
            pack(IgnoredAttribute{.document = 2, .attribute = attributeRef(shortOid("page-order"))}));
    return values;
}

Values finishings(const Facts &facts) {
    return {pack(Finishing{.message = facts.number % 2 == 0 ? std::optional(text("loosely")) : std::nullopt,
                           .spec = finishing(oid(shortOid(facts.finishing)))})};
}

Values impressions(const Facts &facts) {
    const bool counted = !facts.oneIn(4, IS_COUNTED);
    return {pack(counted ? cardinal(facts.impressions()) : cardinal(oid(shortOid("not-counted"))))};
}

Values documentMedia(const Facts &facts) {
    const NameOrOid medium = oid(shortOid(facts.medium));
    if (facts.pages < 3)
        return {pack(mediumForAllPages(medium))};
    return {pack(
        mediumForPages({{{page(1), page(1)}, name("letterhead")}, {{page(2), page(facts.pages)}, medium}}))};
}

Values pageSelects(const Facts &facts) {
    std::vector<PageSelect> selected = {{.first = page(1), .last = page(facts.pages)}};
    if (facts.oneIn(2, HAS_ANNEX))
        selected.push_back({.first = pageNamed(text("A-1"))});
    return {pack(selected)};
}

std::string documentName(const Facts &facts) {
    return facts.document == 1 ? facts.title : "Appendix " + std::to_string(facts.document - 1);
}

// ---- The attributes of each kind of job ----

struct Column {
    const char *attribute;
    std::uint32_t type;
    Values (*values)(const Facts &);
};

using F = const Facts &;

constexpr Column kOfficeJob[] = {
    {"job-identifier", STRING, [](F f) -> Values { return {packString(f.identifier)}; }},
    {"job-name", TEXT, [](F f) -> Values { return {pack(titleText(f))}; }},
    {"job-owner", SIMPLE_NAME, [](F f) -> Values { return {pack(text(f.owner.name))}; }},
    {"user-name-and-domain", DIST_NAME, [](F f) -> Values { return {pack(owner(f))}; }},
    {"printer-name-requested", NAME_OR_OID, [](F f) -> Values { return {pack(name(f.printer))}; }},
    {"printers-used", DIST_NAMES, printersUsed},
    {"submission-time", TIME, [](F f) -> Values { return {time(f, f.submitted)}; }},
    {"started-printing-time", TIME, [](F f) -> Values { return {time(f, f.started)}; }},
    {"completion-time", TIME, [](F f) -> Values { return {time(f, f.completed)}; }},
    {"processing-duration", DELTA_TIME, [](F f) -> Values { return {packInt(f.completed - f.started)}; }},
    {"job-priority", INTEGER, [](F f) -> Values { return {packUint(f.priority)}; }},
    {"job-copies", INTEGER_12, [](F f) -> Values { return {packUint(f.copies)}; }},
    {"media-sheets-completed", INTEGER_22, [](F f) -> Values { return {packUint(f.sheets())}; }},
    {"total-job-octets", CARDINAL_64,
     [](F f) -> Values { return {packCardinal64(f.pages * 4096ULL * 123457)}; }},
    {"media-used", NAME_OR_OIDS, mediaUsed},
    {"sides-and-finishing", OBJECT_IDENTIFIER, sidesAndFinishing},
    {"results-profile", RESULTS_PROFILE, resultsProfile},
    {"job-comment", TEXT, comment},
};

constexpr Column kOfficeDocument[] = {
    {"document-name", TEXT, [](F f) -> Values { return {pack(latin1Text(documentName(f)))}; }},
    {"document-format", DOCUMENT_FORMAT,
     [](F f) -> Values { return {pack(DocumentFormat{.format = shortOid(f.format)})}; }},
    {"document-page-count", INTEGER, [](F f) -> Values { return {packUint(f.document == 1 ? f.pages : 1)}; }},
    {"document-sides", OBJECT_IDENTIFIER, sidesAndFinishing},
};

constexpr Column kOrder[] = {
    {"job-identifier", STRING, [](F f) -> Values { return {packString(f.identifier)}; }},
    {"order-title", TEXT_28, [](F f) -> Values { return {pack(titleText(f))}; }},
    {"job-owner", SIMPLE_NAME, [](F f) -> Values { return {pack(text(f.owner.name))}; }},
    {"account-code", OCTETS,
     [](F f) -> Values { return {packString("K-" + std::to_string(f.pick(ACCOUNT, 900)))}; }},
    {"completion-time", TIME, [](F f) -> Values { return {time(f, f.completed)}; }},
    {"job-hold", BOOLEAN, [](F f) -> Values { return {packInt(f.oneIn(2, HELD) ? 1 : 0)}; }},
    {"impressions-completed", CARDINAL_OR_NAME, impressions},
    {"media-consumed", MEDIA_CONSUMED, mediaConsumed},
    {"notification-profile", EVENT_PROFILE, notificationProfiles},
    {"notification-addresses", DELIVERY_ADDRESS,
     [](F f) -> Values {
         return {pack(ownersMail(f)), pack(addressOctets("desk 7"))};
     }},
    {"objects-affected", OBJECT_IDENTS, objectsAffected},
    {"ignored-attributes", IGNORED_ATTRIBUTE, ignoredAttributes},
    {"default-font", FONT_REFERENCE, [](F) -> Values { return {pack(font(text("Grotesk-Regular")))}; }},
    {"binding-edge", EDGE, [](F f) -> Values { return {packUint(f.pick(BINDING, 4))}; }},
    {"job-finishing", FINISHING, finishings},
    {"job-cost", REAL, [](F f) -> Values { return {packDouble(0.04 * f.sheets())}; }},
    {"toner-used-grams", REAL_62, [](F f) -> Values { return {packDouble(0.015625 * f.impressions())}; }},
    {"retry-count", SHORT_26, [](F f) -> Values { return {packUint(f.pick(RETRIES, 3))}; }},
    {"x-image-shift", SHORT_75,
     [](F f) -> Values {
         return {packInt(-2), packUint(f.pick(SHIFT, 5))};
     }},
    {"job-comment", TEXT, comment},
};

constexpr Column kOrderDocument[] = {
    {"document-name", TEXT, [](F f) -> Values { return {pack(latin1Text(documentName(f)))}; }},
    {"document-media", MEDIA_SELECT, documentMedia},
    {"page-select", PAGE_SELECTS, pageSelects},
    {"page-order", PAGE_ORDER, [](F f) -> Values { return {packUint(2 + f.pick(ORDER_OF_PAGES, 3))}; }},
};

constexpr Column kState[] = {
    {"job-state", OBJECT_IDENTIFIER,
     [](F f) -> Values {
         return {packUint(shortOid(f.number % f.day.failed == 0 ? "aborted" : "completed"))};
     }},
};

template <std::size_t Size>
void addColumns(Job &job, const Column (&columns)[Size], const Facts &facts) {
    for (const Column &column : columns) {
        const OidEntry &entry = findOid(column.attribute);
        const Values values = column.values(facts);
        job.attribute(Tag{.numAttrVal = static_cast<std::uint32_t>(values.size()),
                          .attrID = entry.shortIdentifier,
                          .decoid = entry.dotted,
                          .attrValType = column.type},
                      values);
    }
}

} // namespace

Bill makeJob(const Day &day, std::uint64_t number, JobKind kind, Job &job) {
    Facts facts(day, number);
    job.clear();
    if (kind == JobKind::OFFICE)
        addColumns(job, kOfficeJob, facts);
    else
        addColumns(job, kOrder, facts);
    if (day.failed != 0)
        addColumns(job, kState, facts);
    for (facts.document = 1; facts.document <= facts.documents(); facts.document++) {
        job.document();
        if (kind == JobKind::OFFICE)
            addColumns(job, kOfficeDocument, facts);
        else
            addColumns(job, kOrderDocument, facts);
    }
    const bool hasCover = kind == JobKind::ORDER && facts.hasCover();
    return {facts.owner.name, facts.sheets() + std::uint64_t{hasCover}};
}

} // namespace samples
