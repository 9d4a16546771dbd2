// What the jobs of a log add to the sums.  For the logs it uses nothing but ala/ala.h.
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

    // The server and the date of the jobs that follow.
    void beginLog(std::string_view server, std::int32_t date);
    // Reads a job.  ALA_N_NORMAL, or the code of the first failure, which cost the job some of its values.
    ALA_retCode_t read(ALA_handle_t handle, ALA_record_t jobRecord);

    // Of the job that was read last.
    const Key &key() const { return key_; }
    const std::array<Amount, kNumMeasures> &amounts() const { return amounts_; }
    const Moment &completion() const { return completion_; }

    // How many values of an attribute could not be counted, since the beginning of the log.
    const std::map<std::string_view, std::uint64_t> &faults() const { return faults_; }

private:
    // What an attribute is used for, besides the key.
    enum class Use : std::uint8_t { None, SheetsCompleted, MediaConsumed, Copies, Cost, Completion };
    struct Slot {
        Use use;
        bool isKey;
    };
    struct KeyText {
        std::string text;
        std::size_t rank = 0; // of the attribute that it is from; their number if the job has none of them
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
    std::vector<KeyText> texts_;     // one a part
    std::vector<std::string> names_; // of the job's attributes, last attribute first
    std::vector<Slot> layout_;       // of its attributes, up to the last one that is used
    Key key_;
    std::array<Amount, kNumMeasures> amounts_{};
    Moment completion_;
    AlaOwned<ALA_attrPair> completed_, consumed_; // the attributes that have the sheets
    std::map<std::string_view, std::uint64_t> faults_;
};

} // namespace qvledger
