#include "samples/log_writer.h"

#include <algorithm>
#include <stdexcept>

namespace samples {

static constexpr std::size_t kFlushSize = 256 * 1024; // bytes

// Tags and value lengths are in the machine's byte order, other numbers in network byte order.
static void appendNative(Bytes &out, std::uint32_t number) {
    out.append(reinterpret_cast<const char *>(&number), sizeof number);
}

static void appendNet(Bytes &out, std::uint32_t number) {
    out += packUint(number);
}

void appendTag(Bytes &out, const Tag &tag) {
    if (tag.decoid.size() > DECOID_SIZE)
        throw std::length_error("an object identifier of more than 137 bytes");
    constexpr std::size_t kFill = 3;
    appendNative(out, tag.numAttrVal);
    appendNative(out, tag.attrID);
    out += tag.decoid;
    out.append(DECOID_SIZE - tag.decoid.size() + kFill, '\0');
    appendNative(out, tag.attrValType);
}

void appendValue(Bytes &out, const Value &value) {
    appendNative(out, value.length);
    out += value.bytes;
}

void appendHeader(Bytes &out, const LogHeader &header) {
    appendNet(out, header.verNum);
    if (header.verNum > 1)
        appendNet(out, header.createDate);
    appendNet(out, header.numAttr);
    const auto entries = static_cast<std::uint32_t>(header.accessList.size());
    appendTag(out, {.numAttrVal = header.numAttrVal.value_or(entries),
                    .attrID = 100,
                    .decoid = "1.3.6.1.4.1.32473.1.100",
                    .attrValType = header.accessListType});
    for (const Value &entry : header.accessList)
        appendValue(out, entry);
}

// ---- Job ----

Job &Job::attribute(std::string_view decoid, std::uint32_t type, const std::vector<Value> &values) {
    return attribute(Tag{.numAttrVal = static_cast<std::uint32_t>(values.size()),
                         .attrID = 0,
                         .decoid = Bytes(decoid),
                         .attrValType = type},
                     values);
}

Job &Job::attribute(const Tag &tag, const std::vector<Value> &values) {
    appendTag(attributes_, tag);
    for (const Value &value : values)
        appendValue(attributes_, value);
    count();
    return *this;
}

void Job::count() {
    attributeCount_++;
    if (documents_ == 0)
        jobCount_++;
    else if (documents_ == 1)
        documentAttrCount_++;
}

Job &Job::document() {
    documents_++;
    return *this;
}

Job &Job::numAttr(std::uint32_t count) {
    statedNumAttr_ = count;
    return *this;
}

Job &Job::numJobAttr(std::uint32_t count) {
    statedNumJobAttr_ = count;
    return *this;
}

Job &Job::docAttrPerDoc(std::uint32_t count) {
    statedDocAttrPerDoc_ = count;
    return *this;
}

void Job::clear() {
    attributes_.clear();
    attributeCount_ = jobCount_ = documentAttrCount_ = documents_ = 0;
    statedNumAttr_.reset();
    statedNumJobAttr_.reset();
    statedDocAttrPerDoc_.reset();
}

void Job::appendTo(Bytes &out, std::uint32_t verNum) const {
    appendNet(out, statedNumAttr_.value_or(attributeCount_));
    if (verNum > 2) {
        appendNet(out, statedNumJobAttr_.value_or(jobCount_));
        appendNet(out, statedDocAttrPerDoc_.value_or(documentAttrCount_));
    }
    out += attributes_;
}

// ---- Log ----

Log::Log(const LogHeader &header) : version_(header.verNum) {
    appendHeader(image_, header);
}

Log &Log::job(const Job &job) {
    starts_.push_back(image_.size());
    job.appendTo(image_, version_);
    return *this;
}

Log &Log::raw(std::string_view bytes) {
    image_ += bytes;
    return *this;
}

Log &Log::cutTo(std::size_t size) {
    image_.resize(std::min(size, image_.size()));
    return *this;
}

Log &Log::overwrite(std::size_t at, std::string_view bytes) {
    image_.resize(std::max(image_.size(), at + bytes.size()));
    image_.replace(at, bytes.size(), bytes);
    return *this;
}

// ---- LogWriter ----

LogWriter::LogWriter(const std::filesystem::path &path, const LogHeader &header)
    : file_(path), version_(header.verNum) {
    appendHeader(buffer_, header);
}

LogWriter &LogWriter::job(const Job &job) {
    job.appendTo(buffer_, version_);
    flushAbove(kFlushSize);
    return *this;
}

LogWriter &LogWriter::raw(std::string_view bytes) {
    buffer_ += bytes;
    flushAbove(kFlushSize);
    return *this;
}

void LogWriter::close() {
    flushAbove(0);
    file_.close();
}

void LogWriter::flushAbove(std::size_t limit) {
    if (buffer_.size() <= limit)
        return;
    file_.write(buffer_);
    buffer_.clear();
}

} // namespace samples
