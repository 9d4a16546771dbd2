// A file being written whose failures, a full disk among them, are thrown as std::system_error.
#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string_view>

namespace samples {

class OutputFile {
public:
    // Replaces what the path holds.
    explicit OutputFile(const std::filesystem::path &path);

    void write(std::string_view bytes);
    void close(); // nothing is known to be written before this returns

private:
    struct Closer {
        void operator()(std::FILE *file) const { std::fclose(file); }
    };

    [[noreturn]] void fail() const;

    std::filesystem::path name_;
    std::unique_ptr<std::FILE, Closer> stream_;
};

// A whole file in one go.
void writeFile(const std::filesystem::path &path, std::string_view bytes);

} // namespace samples
