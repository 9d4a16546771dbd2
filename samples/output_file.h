// Writes a file.  Throws std::system_error for failures, such as a full disk.
#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string_view>

namespace samples {

class OutputFile {
public:
    // Creates the file, or truncates an existing one.
    explicit OutputFile(const std::filesystem::path &path);

    void write(std::string_view bytes);
    void close(); // once this returns, all writes have succeeded

private:
    struct Closer {
        void operator()(std::FILE *file) const { std::fclose(file); }
    };

    [[noreturn]] void fail() const;

    std::filesystem::path name_;
    std::unique_ptr<std::FILE, Closer> stream_;
};

// Writes a complete file.
void writeFile(const std::filesystem::path &path, std::string_view bytes);

} // namespace samples
