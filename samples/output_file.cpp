#include "samples/output_file.h"

#include <cerrno>
#include <system_error>

namespace samples {

OutputFile::OutputFile(const std::filesystem::path &path)
    : name(path), stream(std::fopen(path.string().c_str(), "wb")) {
    if (!stream)
        fail();
    // Callers write in large pieces: a buffer between would only delay what a failed write has to say.
    std::setvbuf(stream.get(), nullptr, _IONBF, 0);
}

void OutputFile::write(std::string_view bytes) {
    if (!bytes.empty() && std::fwrite(bytes.data(), 1, bytes.size(), stream.get()) != bytes.size())
        fail();
}

void OutputFile::close() {
    if (stream && std::fclose(stream.release()) != 0)
        fail();
}

void OutputFile::fail() const {
    throw std::system_error(errno, std::generic_category(), name.string());
}

void writeFile(const std::filesystem::path &path, std::string_view bytes) {
    OutputFile file(path);
    file.write(bytes);
    file.close();
}

} // namespace samples
