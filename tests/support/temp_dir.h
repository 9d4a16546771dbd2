// A temporary folder, which the destructor removes.
#pragma once

#include <filesystem>
#include <string>

class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir &) = delete;
    TempDir &operator=(const TempDir &) = delete;

    const std::filesystem::path &path() const { return folder_; }
    std::filesystem::path operator/(const std::string &name) const { return folder_ / name; }

private:
    std::filesystem::path folder_;
};

std::string readFile(const std::filesystem::path &path);
