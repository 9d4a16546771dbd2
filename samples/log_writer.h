// Writes accounting logs: LogWriter streams a log of any size to a file; Log keeps a small log in memory,
// where tests can cut and overwrite it.
//
// By default, logs are well formed; every count and length, and each field of a tag, can also be set
// explicitly.  docs/formats.md describes the format.
//
//     Log log;
//     log.job(Job().attribute("1.3.6.1.4.1.32473.1.1", STRING, {packString("alpha.1")})
//                 .document()
//                 .attribute("1.3.6.1.4.1.32473.1.40", INTEGER, {packInt(3), packInt(4)}));
#pragma once

#include "samples/output_file.h"
#include "samples/packer.h"

namespace samples {

constexpr std::size_t TAG_SIZE = 152;
constexpr std::size_t DECOID_SIZE = 137;

// A packed value and the length that is written before it.
struct Value {
    Value(Bytes packed) : bytes(std::move(packed)), length(static_cast<std::uint32_t>(bytes.size())) {}
    Value(Bytes packed, std::uint32_t statedLength) : bytes(std::move(packed)), length(statedLength) {}

    Bytes bytes;
    std::uint32_t length;
};

struct Tag {
    std::uint32_t numAttrVal = 0;
    std::uint32_t attrID = 0;
    Bytes decoid = {}; // padded with NULs to 137 bytes; a longer text throws std::length_error
    std::uint32_t attrValType = 0;
};

void appendTag(Bytes &out, const Tag &tag);
void appendValue(Bytes &out, const Value &value);

struct LogHeader {
    std::uint32_t verNum = 3;
    std::uint32_t createDate = 0; // seconds since 1970; not written in versions 0 and 1
    std::uint32_t numAttr = 1;
    std::vector<Value> accessList = {pack(anyUserEntry())};
    std::uint32_t accessListType = ACCESS_ENTRY;
    std::optional<std::uint32_t> numAttrVal = {}; // default: the size of accessList
};

void appendHeader(Bytes &out, const LogHeader &header);

// A job record.  Attributes belong to the job until document() opens the first document.
class Job {
public:
    Job &attribute(std::string_view decoid, std::uint32_t type, const std::vector<Value> &values = {});
    Job &attribute(const Tag &tag, const std::vector<Value> &values); // the tag is written unchanged
    Job &document();

    // Set a count explicitly.  By default, the counts are those of the attributes, and docAttrPerDoc is the
    // count of the first document.
    Job &numAttr(std::uint32_t count);
    Job &numJobAttr(std::uint32_t count);
    Job &docAttrPerDoc(std::uint32_t count);

    // Empties the record and keeps its memory.
    void clear();

    // Appends the record in the form of format version verNum.
    void appendTo(Bytes &out, std::uint32_t verNum = 3) const;

private:
    void count();

    Bytes attributes_;
    std::uint32_t attributeCount_ = 0, jobCount_ = 0, documentAttrCount_ = 0;
    std::uint32_t documents_ = 0;
    std::optional<std::uint32_t> statedNumAttr_, statedNumJobAttr_, statedDocAttrPerDoc_;
};

// A log in memory.
class Log {
public:
    explicit Log(const LogHeader &header = {});

    Log &job(const Job &job);
    Log &raw(std::string_view bytes);
    Log &cutTo(std::size_t size);
    Log &overwrite(std::size_t at, std::string_view bytes); // grows the log if needed

    const Bytes &bytes() const { return image_; }
    std::size_t size() const { return image_.size(); }
    // Offsets of the records that job() wrote.
    const std::vector<std::size_t> &records() const { return starts_; }

    void save(const std::filesystem::path &path) const { writeFile(path, image_); }

private:
    std::uint32_t version_;
    Bytes image_;
    std::vector<std::size_t> starts_;
};

// Writes a log to a file, in bounded memory.  Throws std::system_error if the file cannot be written.
class LogWriter {
public:
    explicit LogWriter(const std::filesystem::path &path, const LogHeader &header = {});

    LogWriter &job(const Job &job);
    LogWriter &raw(std::string_view bytes);
    void close(); // once this returns, the log is complete

private:
    void flushAbove(std::size_t limit);

    OutputFile file_;
    std::uint32_t version_;
    Bytes buffer_;
};

} // namespace samples
