// A socket like the system log daemon's.  Only take() reads it.
#pragma once

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>

#include <sys/socket.h>
#include <sys/un.h>

#include "platform/descriptor.h"

class LogDaemon {
public:
    // The type is SOCK_DGRAM or SOCK_STREAM.
    LogDaemon(const std::filesystem::path &path, int type)
        : type_(type), socket_(::socket(AF_UNIX, type_ | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
        std::filesystem::remove(path);
        sockaddr_un address = {.sun_family = AF_UNIX, .sun_path = {}};
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        if (bind(socket_.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
            (type_ == SOCK_STREAM && listen(socket_.get(), 4) != 0))
            throw std::runtime_error("no socket at " + path.string());
    }

    // Returns the next entry, or an empty text if no entry is waiting.
    std::string take() const {
        const qvledger::Descriptor connection(type_ == SOCK_STREAM ? accept(socket_.get(), nullptr, nullptr)
                                                                   : -1);
        char entry[10000];
        const int source = type_ == SOCK_STREAM ? connection.get() : socket_.get();
        return {entry, static_cast<std::size_t>(std::max<ssize_t>(recv(source, entry, sizeof entry, 0), 0))};
    }

private:
    const int type_;
    const qvledger::Descriptor socket_;
};
