// The socket that a daemon of the system's log listens at; it reads only when it is told to.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "platform/descriptor.h"

class LogDaemon {
public:
    // SOCK_DGRAM or SOCK_STREAM.
    LogDaemon(const std::filesystem::path &path, int givenType);

    // The entries that it was sent since the last call.
    std::vector<std::string> take() const;

private:
    const int type;
    const qvledger::Descriptor socket;
};
