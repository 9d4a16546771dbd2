#include "tool/sum/job_reader.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "tool/missing.h"

using namespace qvledger;

constexpr char kCopiesName[] = "job-copies";
constexpr char kCostName[] = "job-cost";
constexpr char kCompletionName[] = "completion-time";

void JobReader::beginLog(std::string_view server, std::int32_t date) {
    faults_.clear();
    for (std::size_t i = 0; i < parts_.size(); ++i) {
        if (parts_[i].kind == KeyPart::Kind::Server)
            texts_[i].text = server;
        else if (parts_[i].kind != KeyPart::Kind::Attribute)
            texts_[i].text = dateText(date).substr(0, parts_[i].kind == KeyPart::Kind::Month ? 7 : 10);
    }
}

void JobReader::clear() {
    amounts_ = {};
    amounts_[kJobs] = 1;
    completion_.text.clear();
    completed_.reset();
    consumed_.reset();
    for (std::size_t i = 0; i < parts_.size(); ++i) {
        texts_[i].rank = parts_[i].attributes.size();
        if (parts_[i].kind == KeyPart::Kind::Attribute)
            texts_[i].text.clear();
    }
}

void JobReader::takeKey(std::string_view name, const attributeVal *value) {
    for (std::size_t i = 0; i < parts_.size(); ++i) {
        const std::vector<std::string> &attributes = parts_[i].attributes;
        KeyText &key = texts_[i];
        for (std::size_t rank = 0; rank < key.rank; ++rank) {
            if (name != attributes[rank] || (*value->value == '\0' && value->next == nullptr))
                continue;
            key.rank = rank;
            key.text = value->value;
            for (const attributeVal *next = value->next; next != nullptr; next = next->next)
                key.text.append(1, ' ').append(next->value);
        }
    }
}

void JobReader::addValues(std::size_t measure, const char *name, const attributeVal *value) {
    for (; value != nullptr; value = value->next) {
        std::int64_t amount = 0;
        if (parseAmount(value->value, kMeasures[measure].places, &amount))
            amounts_[measure] += amount;
        else if (*value->value != '\0')
            ++faults_[name];
    }
}

void JobReader::take(AlaOwned<ALA_attrPair> &pair, Slot slot) {
    const attributeVal *value = pair->attrVal;
    if (slot.isKey)
        takeKey(pair->attrName, value);
    switch (slot.use) {
    case Use::None:
        break;
    case Use::SheetsCompleted:
        completed_ = std::move(pair);
        break;
    case Use::MediaConsumed:
        consumed_ = std::move(pair);
        break;
    case Use::Copies:
        addValues(kCopies, kCopiesName, value);
        break;
    case Use::Cost:
        addValues(kCost, kCostName, value);
        break;
    case Use::Completion:
        if (*value->value != '\0' && !completion_.set(value->value))
            ++faults_[kCompletionName];
    }
}

JobReader::Slot JobReader::slotOf(std::string_view name) const {
    const auto hasName = [&](const KeyPart &part) { return std::ranges::count(part.attributes, name) != 0; };
    const Use use = name == kSheetsCompleted  ? Use::SheetsCompleted
                    : name == kMediaConsumed  ? Use::MediaConsumed
                    : name == kCopiesName     ? Use::Copies
                    : name == kCostName       ? Use::Cost
                    : name == kCompletionName ? Use::Completion
                                              : Use::None;
    return {use, std::ranges::any_of(parts_, hasName)};
}

void JobReader::setLayout(const ALA_attrName *names) {
    names_.clear();
    layout_.clear();
    for (; names != nullptr; names = names->next) {
        names_.emplace_back(names->attrNameStr);
        const Slot slot = slotOf(names_.back());
        if (!layout_.empty() || slot.isKey || slot.use != Use::None)
            layout_.push_back(slot);
    }
    std::ranges::reverse(layout_);
}

static bool areSame(const std::vector<std::string> &known, const ALA_attrName *names) {
    for (const std::string &name : known) {
        if (names == nullptr || std::strcmp(name.c_str(), names->attrNameStr) != 0)
            return false;
        names = names->next;
    }
    return names == nullptr;
}

// Sets layout_ for the record.  Most records have the same names as the previous record, and so the same
// layout.  False if the record's names cannot be listed.
bool JobReader::findLayout(ALA_handle_t handle, ALA_record_t jobRecord) {
    ALA_attrName *names = nullptr;
    if (ALA_ListAttributesFromRecord(handle, jobRecord, ALA_JOB_ATTRIBUTES, nullptr, &names) != ALA_N_NORMAL)
        return false;
    const AlaOwned<ALA_attrName> owner(names);
    if (!areSame(names_, names))
        setLayout(names);
    return true;
}

// True if the code concerns one attribute, so that the next attribute can still be read.
static bool isOfOneAttribute(ALA_retCode_t code) {
    return code == ALA_A_ODPUNPACK_ERROR || code == ALA_A_OID_ERROR || code == ALA_A_FAIL_TO_GET_TIME;
}

// Reads the attributes up to the last one that is used, or all attributes if their names cannot be listed.
// Returns ALA_N_NORMAL after the last attribute in use, otherwise the code that ended the loop.  Sets
// *failure to the code of the first attribute that could not be read.
ALA_retCode_t JobReader::readAttributes(ALA_handle_t handle, ALA_record_t jobRecord, ALA_retCode_t *failure) {
    const bool isKnown = findLayout(handle, jobRecord);
    for (std::size_t place = 0; !isKnown || place < layout_.size(); ++place) {
        // Rendering a time in ISO 8601 is slow, so only a possible completion time is rendered in this form.
        const bool isTime = !isKnown || layout_[place].use == Use::Completion;
        if (isTime)
            ALA_SetTimeForm(handle, ALA_TIME_ISO_8601);
        ALA_attrPair *read = nullptr;
        const ALA_retCode_t result = place == 0 ? ALA_GetFirstAttrFromJob(handle, &jobRecord, nullptr, &read)
                                                : ALA_GetNextAttrFromJob(handle, &jobRecord, nullptr, &read);
        if (isTime)
            ALA_SetTimeForm(handle, ALA_TIME_AS_REPORTED);
        AlaOwned<ALA_attrPair> pair(read);
        if (result == ALA_N_NORMAL)
            take(pair, isKnown ? layout_[place] : slotOf(pair->attrName));
        else if (!isOfOneAttribute(result))
            return result;
        else if (*failure == ALA_N_NORMAL)
            *failure = result;
    }
    return ALA_N_NORMAL;
}

ALA_retCode_t JobReader::countDocuments(ALA_handle_t handle, ALA_record_t jobRecord) {
    ALA_dRecord_t read = nullptr;
    ALA_retCode_t result = ALA_GetFirstDocmt(handle, &jobRecord, &read);
    while (result == ALA_N_NORMAL && read != nullptr) {
        AlaOwned<docRecord>(read).reset();
        ++amounts_[kDocuments];
        result = ALA_GetNextDocmt(handle, &jobRecord, &read);
    }
    return result == ALA_A_NO_MORE_DOCMT_ATTR ? ALA_N_NORMAL : result;
}

void JobReader::makeKey() {
    key_.clear();
    for (const KeyText &key : texts_)
        key_.append(key.text).append(1, '\0');
}

ALA_retCode_t JobReader::read(ALA_handle_t handle, ALA_record_t jobRecord) {
    clear();
    ALA_retCode_t failure = ALA_N_NORMAL;
    ALA_retCode_t ended = readAttributes(handle, jobRecord, &failure);
    if (ended == ALA_N_NORMAL || ended == ALA_A_NO_MORE_JOB_ATTR)
        ended = countDocuments(handle, jobRecord);
    else if (ended == ALA_A_LAST_ATTRIBUTE)
        ended = ALA_N_NORMAL;
    const auto valuesOf = [](const AlaOwned<ALA_attrPair> &pair) {
        return pair != nullptr ? pair->attrVal : nullptr;
    };
    if (const char *fault = countSheets(valuesOf(completed_), valuesOf(consumed_), &amounts_[kSheets]))
        ++faults_[fault];
    makeKey();
    return failure != ALA_N_NORMAL ? failure : ended;
}
