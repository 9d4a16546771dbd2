#include "tool/check/reasons.h"

#include <cstring>

using namespace qvledger;

std::string qvledger::withReason(const char *text, int error) {
    return error != 0 ? std::string(text) + ": " + std::strerror(error) : text;
}

Unread qvledger::whyUnread(const CheckResult &result) {
    switch (result.outcome) {
    case CheckOutcome::CannotOpen:
        return {LogState::Unreadable, withReason("cannot be opened", result.error)};
    case CheckOutcome::NotAFile:
        return {LogState::Unreadable, "not a regular file"};
    case CheckOutcome::NotAdmitted:
        return {LogState::NotAdmitted, "the access list does not admit the caller"};
    case CheckOutcome::CannotRead:
        return {LogState::Unreadable, withReason("cannot be read", result.error)};
    case CheckOutcome::HeaderIsCut:
        return {LogState::Cut, "the file ends inside its header"};
    case CheckOutcome::HeaderIsDamaged:
        return {LogState::Damaged, "the header is damaged: the access list cannot be read"};
    default:
        return {LogState::Unreadable, "cannot be opened or read"};
    }
}

std::string qvledger::whyNotSaved(const CheckResult &result) {
    switch (result.outcome) {
    case CheckOutcome::Failed:
        return "out of memory";
    case CheckOutcome::CannotRead:
        return "it cannot be read to its end";
    case CheckOutcome::NotSynced:
        return withReason("the copy is complete, but its folder cannot be synced to the disk", result.error);
    default:
        return std::strerror(result.error);
    }
}
