#include "tool/check/log_table.h"

#include <cstdio>
#include <ctime>

#include "service/calendar.h"
#include "tool/check/fields.h"

using namespace qvledger;

void qvledger::writeLogHeader() {
    std::fputc('\n', stdout);
    writeFields({"server", "log", "version", "created", "access-entries", "admitted", "records", "documents",
                 "values", "bytes", "state", "first-damage", "stray-bytes", "reason"});
}

static const char *textOf(LogState state) {
    switch (state) {
    case LogState::Whole:
        return "whole";
    case LogState::Cut:
        return "cut";
    case LogState::Damaged:
        return "damaged";
    case LogState::Empty:
        return "empty";
    case LogState::NotAdmitted:
        return "not admitted";
    case LogState::Unreadable:
        return "unreadable";
    case LogState::NotALog:
        return "not a log";
    case LogState::Missing:
        return "missing";
    }
    return "";
}

LogState qvledger::stateOf(const LogSummary &summary) {
    if (summary.strayBytes == 0)
        return summary.records == 0 ? LogState::Empty : LogState::Whole;
    return summary.isCut && !summary.headerIsDamaged ? LogState::Cut : LogState::Damaged;
}

static std::string dateText(const LogSummary &summary) {
    char text[sizeof "2000-01-01T00:00:00Z"] = "";
    if (summary.created != 0) {
        const std::tm utc = calendarOf(summary.created);
        std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
    }
    return text;
}

static void addPart(std::string &text, const std::string &part) {
    text += text.empty() ? part : "; " + part;
}

// Describes the damage of the log, and counts the values that a report would skip, by reason.
static std::string reasonText(const LogSummary &summary) {
    constexpr const char *kReasons[kSkipReasons] = {"value does not match its type",
                                                    "no name for an object identifier",
                                                    "invalid time",
                                                    "no memory",
                                                    "in a record too long to be rendered",
                                                    "not rendered"};
    std::string text;
    if (summary.headerIsDamaged)
        addPart(text, "the version in the header is not that of the records");
    else if (summary.fault != nullptr)
        addPart(text, summary.fault);
    if (summary.unsearched != 0)
        addPart(text, std::to_string(summary.unsearched) +
                          " bytes were not searched for records, because that would take too long");
    for (std::size_t i = 0; i < kSkipReasons; ++i)
        if (summary.skipped[i] != 0)
            addPart(text, "skipped " + std::to_string(summary.skipped[i]) + ": " + kReasons[i]);
    return text;
}

void qvledger::writeLogLine(const char *server, const char *log, LogState state, const LogSummary &summary) {
    const std::string damage = summary.firstDamage >= 0 ? std::to_string(summary.firstDamage) : "";
    writeFields({server, log, std::to_string(summary.version), dateText(summary),
                 std::to_string(summary.accessEntries), "yes", std::to_string(summary.records),
                 std::to_string(summary.documents), std::to_string(summary.values),
                 std::to_string(summary.bytes), textOf(state), damage, std::to_string(summary.strayBytes),
                 reasonText(summary)});
}

void qvledger::writeUnreadLogLine(const char *server, const char *log, LogState state, const char *reason) {
    const char *admitted = state == LogState::NotAdmitted ? "no" : "";
    writeFields({server, log, "", "", "", admitted, "", "", "", "", textOf(state), "", "", reason});
}
