// A temporary folder for a target, with the sample print system's OID tables and no log.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

#include "ala/ala.h"
#include "samples/sample_root.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size);

class Sandbox {
public:
    // Makes the folder, sets the environment to use it, and turns the program's log off.
    Sandbox();
    ~Sandbox();
    Sandbox(const Sandbox &) = delete;
    Sandbox &operator=(const Sandbox &) = delete;

    const samples::SampleRoot &root() const { return tree_; }
    // Returns the handle of the server alpha, which is registered once and never unregistered.
    ALA_handle_t handle() const;

    static void write(const std::filesystem::path &file, std::span<const std::uint8_t> bytes);

private:
    std::filesystem::path folder_;
    samples::SampleRoot tree_;
};
