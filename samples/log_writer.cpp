#include "samples/log_writer.h"

#include <algorithm>
#include <stdexcept>

namespace samples {

static constexpr std::size_t kFlushSize = 256 * 1024; // bytes

// Tags and value lengths are in the machine's own byte order, counts in network byte order.
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
    appendTag(attributes, tag);
    for (const Value &value : values)
        appendValue(attributes, value);
    count();
    return *this;
}

void Job::count() {
    attributeCount++;
    if (documents == 0)
        jobCount++;
    else if (documents == 1)
        documentAttrCount++;
}

Job &Job::document() {
    documents++;
    return *this;
}

Job &Job::numAttr(std::uint32_t count) {
    statedNumAttr = count;
    return *this;
}

Job &Job::numJobAttr(std::uint32_t count) {
    statedNumJobAttr = count;
    return *this;
}

Job &Job::docAttrPerDoc(std::uint32_t count) {
    statedDocAttrPerDoc = count;
    return *this;
}

void Job::clear() {
    attributes.clear();
    attributeCount = jobCount = documentAttrCount = documents = 0;
    statedNumAttr.reset();
    statedNumJobAttr.reset();
    statedDocAttrPerDoc.reset();
}

void Job::appendTo(Bytes &out, std::uint32_t verNum) const {
    appendNet(out, statedNumAttr.value_or(attributeCount));
    if (verNum > 2) {
        appendNet(out, statedNumJobAttr.value_or(jobCount));
        appendNet(out, statedDocAttrPerDoc.value_or(documentAttrCount));
    }
    out += attributes;
}

// ---- Log ----

Log::Log(const LogHeader &header) : version(header.verNum) {
    appendHeader(image, header);
}

Log &Log::job(const Job &job) {
    starts.push_back(image.size());
    job.appendTo(image, version);
    return *this;
}

Log &Log::raw(std::string_view bytes) {
    image += bytes;
    return *this;
}

Log &Log::cutTo(std::size_t size) {
    image.resize(std::min(size, image.size()));
    return *this;
}

Log &Log::overwrite(std::size_t at, std::string_view bytes) {
    image.resize(std::max(image.size(), at + bytes.size()));
    image.replace(at, bytes.size(), bytes);
    return *this;
}

// ---- LogWriter ----

LogWriter::LogWriter(const std::filesystem::path &path, const LogHeader &header)
    : file(path), version(header.verNum) {
    appendHeader(buffer, header);
}

LogWriter &LogWriter::job(const Job &job) {
    job.appendTo(buffer, version);
    flushAbove(kFlushSize);
    return *this;
}

LogWriter &LogWriter::raw(std::string_view bytes) {
    buffer += bytes;
    flushAbove(kFlushSize);
    return *this;
}

void LogWriter::close() {
    flushAbove(0);
    file.close();
}

void LogWriter::flushAbove(std::size_t limit) {
    if (buffer.size() <= limit)
        return;
    file.write(buffer);
    buffer.clear();
}

} // namespace samples
