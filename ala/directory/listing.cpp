// Finds the oldest log, and makes the lists of logs.
#include "ala/directory/listing.h"

#include <utility>

#include "ala/base/handle.h"
#include "ala/base/owners.h"
#include "ala/base/trace.h"
#include "ala/directory/scan.h"
#include "ala/driver/session.h"

using namespace qvledger;

constexpr ScanRules kOldestRules = {
    "Return code from ALA__GetOldestLogName is ALA_A_INVALID_ARG.",
    "Return code from ALA__GetOldestLogName is ALA_A_OUT_OF_MEMORY.",
    "Return code from ALA__GetOldestLogName is ALA_A_UNKNOWN_ERR. FA_ConvertFilePath failed",
    "Return code from ALA__GetOldestLogName is ALA_A_FAIL_OPEN_DIR.",
    ALA_A_FAIL_OPEN_DIR,
    "ALA__GetDateFromStat failed in ALA__GetOldestLogName",
};

constexpr ScanRules kSortedRules = {
    "Return code from ALA__GetSortedLogList is ALA_A_INVALID_ARG.",
    "Return code from ALA__GetSortedLogList is ALA_A_OUT_OF_MEMORY.",
    "Return code from ALA__GetSortedLogList is ALA_A_UNKNOWN_ERR.",
    "Return code from ALA__GetSortedLogList is ALA_A_INVALID_LOG_PATH_NAME.",
    ALA_A_INVALID_LOG_PATH_NAME,
    nullptr,
};

namespace {

template <class List, ALA_retCode_t (*Free)(List **)>
struct ListDeleter {
    void operator()(List *list) const { Free(&list); }
};
using DateList = std::unique_ptr<dateNode, ListDeleter<dateNode, ALA_FreeDateList>>;
using NameList = std::unique_ptr<ALA_name, ListDeleter<ALA_name, ALA_FreeNameList>>;

struct NameNodeDeleter {
    void operator()(nameNode *list) const { ALA__FreeNameNodeList(&list); }
};
using NameNodeList = std::unique_ptr<nameNode, NameNodeDeleter>;

} // namespace

namespace {

// Keeps the oldest log.  If several logs have the oldest date, keeps the first of them that is visited.
class OldestLog final : public LogVisitor {
public:
    ALA_retCode_t visit(const FoundLog &log) override {
        const bool first = name == nullptr;
        if (!first && log.date >= date)
            return ALA_N_NORMAL;
        date = log.date;
        name.reset(_strdup(log.name));
        if (name != nullptr)
            return ALA_N_NORMAL;
        return first ? ALA_FAIL(ALA_A_OUT_OF_MEMORY, "%s", kOldestRules.noMemory)
                     : ALA_FAIL(ALA_A_OUT_OF_MEMORY,
                                "Return code from ALA__GetOldestLogName is ALA_A_OUT_OF_MEMORY");
    }

    Malloced<char> name;
    std::int32_t date = -1;
};

// Prepends every log to a list.
class LogList final : public LogVisitor {
public:
    explicit LogList(ListingWatch *watch) : watch_(watch) {}

    ALA_retCode_t visit(const FoundLog &log) override {
        Malloced<nameNode> node = makeZeroed<nameNode>();
        Malloced<char> logName(_strdup(log.name));
        if (node == nullptr || logName == nullptr)
            return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "%s", kSortedRules.noMemory);
        *node = {logName.release(), log.date, list.release()};
        list.reset(node.release());
        return ALA_N_NORMAL;
    }

    void aside(const char *name) override {
        if (watch_ != nullptr)
            watch_->aside(name);
    }
    void cut(int error) override {
        if (watch_ != nullptr)
            watch_->cut(error);
    }

    NameNodeList list;

private:
    ListingWatch *const watch_; // may be null
};

} // namespace

ALA_retCode_t ALA__GetOldestLogName(const char *inp_svrName, const char *inp_acctLogPath,
                                    char **outpp_logName, std::int32_t *outp_dateInNum) {
    OldestLog oldest;
    const ALA_retCode_t result = scanLogs(inp_svrName, inp_acctLogPath, kOldestRules, oldest);
    if (result != ALA_N_NORMAL)
        return result;
    if (oldest.name == nullptr)
        return ALA_FAIL(ALA_A_FAIL_GET_LOG_NAME_FROM_DIR,
                        "Return code from ALA__GetOldestLogName is ALA_A_FAIL_GET_LOG_NAME_FROM_DIR.");
    *outpp_logName = oldest.name.release();
    *outp_dateInNum = oldest.date;
    return ALA_N_NORMAL;
}

static ALA_retCode_t sortedLogs(const char *svrName, const char *acctLogPath, ListingWatch *watch,
                                nameNode **sorted) {
    LogList logs(watch);
    const ALA_retCode_t result = scanLogs(svrName, acctLogPath, kSortedRules, logs);
    if (result != ALA_N_NORMAL)
        return result;
    nameNode *list = logs.list.release();
    ALA__SortList(&list);
    *sorted = list;
    return ALA_N_NORMAL;
}

ALA_retCode_t ALA__GetSortedLogList(const char *inp_svrName, const char *inp_acctLogPath,
                                    nameNode **outp_nameList) {
    return sortedLogs(inp_svrName, inp_acctLogPath, nullptr, outp_nameList);
}

// ---- Sorting ----

// Merges two sorted lists; if dates are equal, the nodes of the first list come first.
static nameNode *merge(nameNode *first, nameNode *second) {
    nameNode *merged = nullptr;
    nameNode **end = &merged;
    while (first != nullptr && second != nullptr) {
        nameNode *&taken = second->date > first->date ? second : first;
        *end = taken;
        end = &taken->next;
        taken = taken->next;
    }
    *end = first != nullptr ? first : second;
    return merged;
}

// A stable merge sort: runs[i] is empty or has 2^i nodes.
static nameNode *sortStably(nameNode *list) {
    nameNode *runs[64] = {};
    while (list != nullptr) {
        nameNode *run = std::exchange(list, list->next);
        run->next = nullptr;
        std::size_t i = 0;
        for (; runs[i] != nullptr; ++i)
            run = merge(std::exchange(runs[i], nullptr), run);
        runs[i] = run;
    }
    for (nameNode *run : runs)
        list = merge(run, list);
    return list;
}

// The result is that of an insertion sort, which builds a sorted list node by node.  The insertion sort puts
// a node before all listed nodes of its date, but after the list's head if the head has the same date.  So
// nodes of one date end up in reverse order, except a node that was the head: it stays before all nodes of
// its date that were inserted while it was the head.
//
// This function gets the same result in three steps.  It moves each head to the place in the input where a
// newer node replaces it as the head, or to the input's end.  Then it reverses the input and sorts it stably.
void ALA__SortList(nameNode **inoutp_head) {
    if (inoutp_head == nullptr || *inoutp_head == nullptr)
        return;
    nameNode *reversed = nullptr;
    const auto push = [&](nameNode *node) {
        node->next = reversed;
        reversed = node;
    };
    nameNode *head = *inoutp_head;
    for (nameNode *node = head->next; node != nullptr;) {
        nameNode *const next = node->next;
        push(node->date > head->date ? std::exchange(head, node) : node);
        node = next;
    }
    push(head);
    *inoutp_head = sortStably(reversed);
}

void ALA__FreeNameNodeList(nameNode **inoutp_list) {
    if (inoutp_list == nullptr)
        return;
    while (*inoutp_list != nullptr) {
        nameNode *node = *inoutp_list;
        *inoutp_list = node->next;
        std::free(node->logName);
        std::free(node);
    }
}

static ALA_time dateFromNumber(std::int32_t number) {
    return {static_cast<std::int16_t>(number / 10000), static_cast<std::int16_t>(number / 100 % 100),
            static_cast<std::int16_t>(number % 100)};
}

static ALA_retCode_t listLogs(ALA_handle_t alaHandle, ListingWatch *watch, dateNode **dateList,
                              ALA_name **nameList) {
    *dateList = nullptr;
    *nameList = nullptr;
    if (const ALA_retCode_t valid = checkHandle(alaHandle, "ALA_ListExistingLogsByDate");
        valid != ALA_N_NORMAL)
        return valid;
    nameNode *sorted = nullptr;
    if (const ALA_retCode_t result = sortedLogs(alaHandle->svrName, alaHandle->acctLogPath, watch, &sorted);
        result != ALA_N_NORMAL)
        return ALA_FAIL(result, "ALA__GetSortedLogList failed in ALA_ListExistingLogsByDate");

    // The input is newest first; prepending reverses it.
    const NameNodeList newestFirst(sorted);
    DateList dates;
    NameList names;
    for (nameNode *log = sorted; log != nullptr; log = log->next) {
        Malloced<dateNode> date = makeZeroed<dateNode>();
        if (date == nullptr)
            return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "Could not allocate memory for dateNode in "
                                                 "ALA_ListExistingLogsByDate; ALA_A_OUT_OF_MEMORY");
        *date = {dateFromNumber(log->date), dates.release()};
        dates.reset(date.release());
        Malloced<ALA_name> node = makeZeroed<ALA_name>();
        if (node == nullptr)
            return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "Could not allocate memory for nameNode in "
                                                 "ALA_ListExistingLogsByDate; ALA_A_OUT_OF_MEMORY");
        char *logName = _strdup(log->logName);
        if (logName == nullptr)
            return ALA_FAIL(ALA_A_OUT_OF_MEMORY, "Could not allocate memory for nameNode->logName in "
                                                 "ALA_ListExistingLogsByDate; ALA_A_OUT_OF_MEMORY");
        *node = {logName, names.release()};
        names.reset(node.release());
    }
    if (names == nullptr)
        return ALA_FAIL(ALA_A_LOG_FILES_NOT_FOUND,
                        "nameList is NULL in ALA_ListExistingLogsByDate; ALA_A_LOG_FILES_NOT_FOUND");
    *dateList = dates.release();
    *nameList = names.release();
    return ALA_N_NORMAL;
}

ALA_retCode_t ALA_ListExistingLogsByDate(ALA_handle_t in_alaHandle, dateNode **outp_dateList,
                                         ALA_name **outp_nameList) {
    const FuncTrace trace("ALA_ListExistingLogsByDate");
    return listLogs(in_alaHandle, nullptr, outp_dateList, outp_nameList);
}

ALA_retCode_t qvledger::listLogsByDate(ALA_handle_t handle, ListingWatch &watch, dateNode **dateList,
                                       ALA_name **nameList) {
    const FuncTrace trace("ALA_ListExistingLogsByDate");
    return listLogs(handle, &watch, dateList, nameList);
}

ALA_retCode_t ALA_FreeDateList(dateNode **inoutp_dateList) {
    while (*inoutp_dateList != nullptr) {
        dateNode *node = *inoutp_dateList;
        *inoutp_dateList = node->next;
        std::free(node);
    }
    return ALA_N_NORMAL;
}

ALA_retCode_t ALA_FreeNameList(ALA_name **inoutp_nameList) {
    while (*inoutp_nameList != nullptr) {
        ALA_name *node = *inoutp_nameList;
        *inoutp_nameList = node->next;
        std::free(node->logName);
        std::free(node);
    }
    return ALA_N_NORMAL;
}
