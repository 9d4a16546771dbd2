#include "samples/output_file.h"

#include <cerrno>
#include <system_error>

namespace samples {

OutputFile::OutputFile(const std::filesystem::path &path)
    : name_(path), stream_(std::fopen(path.string().c_str(), "wb")) {
    if (!stream_)
        fail();
    // Each write is large: a buffer would only delay the error of a failed write.
    std::setvbuf(stream_.get(), nullptr, _IONBF, 0);
}

void OutputFile::write(std::string_view bytes) {
    if (!bytes.empty() && std::fwrite(bytes.data(), 1, bytes.size(), stream_.get()) != bytes.size())
        fail();
}

void OutputFile::close() {
    if (stream_ && std::fclose(stream_.release()) != 0)
        fail();
}

void OutputFile::fail() const {
    throw std::system_error(errno, std::generic_category(), name_.string());
}

void writeFile(const std::filesystem::path &path, std::string_view bytes) {
    OutputFile file(path);
    file.write(bytes);
    file.close();
}

} // namespace samples
