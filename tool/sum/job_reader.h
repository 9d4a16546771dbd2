// Reads the key and the amounts of each job from a log, only through ala/ala.h.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ala/ala.h"
#include "tool/sum/sheets.h"
#include "tool/sum/sum_options.h"
#include "tool/sum/sums.h"

namespace qvledger {

struct AlaDeleter {
    void operator()(ALA_attrPair *pair) const { ALA_FreeAttributePair(&pair); }
    void operator()(ALA_attrName *names) const { ALA_FreeAttributeList(&names); }
    void operator()(record *jobRecord) const { ALA_FreeJobRecord(&jobRecord); }
    void operator()(docRecord *document) const { ALA_FreeDocmtRecord(&document); }
};
template <class Thing>
using AlaOwned = std::unique_ptr<Thing, AlaDeleter>;

class JobReader {
public:
    // REQUIRES: the parts outlive this object.
    explicit JobReader(std::span<const KeyPart> parts) : parts_(parts), texts_(parts.size()) {}

    // Sets the server and the date (YYYYMMDD) of the following jobs, and clears faults().
    void beginLog(std::string_view server, std::int32_t date);
    // Reads a job, and sets the results below.  Returns ALA_N_NORMAL, or the code of the first failure: the
    // results then lack values of the job.
    ALA_retCode_t read(ALA_handle_t handle, ALA_record_t jobRecord);

    // The results for the last job.
    const Key &key() const { return key_; }
    const std::array<Amount, kNumMeasures> &amounts() const { return amounts_; }
    const Moment &completion() const { return completion_; }

    // The number of values since beginLog() that could not be counted, by attribute name.  For an attribute
    // with sheets, the number of jobs with such values.
    const std::map<std::string_view, std::uint64_t> &faults() const { return faults_; }

private:
    // The use of an attribute, besides being part of the key.
    enum class Use : std::uint8_t { None, SheetsCompleted, MediaConsumed, Copies, Cost, Completion };
    struct Slot {
        Use use;
        bool isKey;
    };
    struct KeyText {
        std::string text;
        // Index of the text's attribute in KeyPart::attributes; the number of attributes if none has a value.
        std::size_t rank = 0;
    };

    Slot slotOf(std::string_view name) const;
    bool findLayout(ALA_handle_t handle, ALA_record_t jobRecord);
    void setLayout(const ALA_attrName *names);
    ALA_retCode_t readAttributes(ALA_handle_t handle, ALA_record_t jobRecord, ALA_retCode_t *failure);
    ALA_retCode_t countDocuments(ALA_handle_t handle, ALA_record_t jobRecord);
    void clear();
    void take(AlaOwned<ALA_attrPair> &pair, Slot slot);
    void takeKey(std::string_view name, const attributeVal *value);
    void addValues(std::size_t measure, const char *name, const attributeVal *value);
    void makeKey();

    std::span<const KeyPart> parts_;
    std::vector<KeyText> texts_;     // indexed like parts_
    std::vector<std::string> names_; // names of the last job's attributes, last attribute first
    std::vector<Slot> layout_;       // attributes in record order, up to the last one that is used
    Key key_;
    std::array<Amount, kNumMeasures> amounts_{};
    Moment completion_;
    AlaOwned<ALA_attrPair> completed_, consumed_; // the job's attributes kSheetsCompleted and kMediaConsumed
    std::map<std::string_view, std::uint64_t> faults_;
};

} // namespace qvledger
