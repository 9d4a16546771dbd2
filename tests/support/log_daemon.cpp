#include "tests/support/log_daemon.h"

#include <cerrno>
#include <cstring>
#include <system_error>

#include <sys/socket.h>
#include <sys/un.h>

LogDaemon::LogDaemon(const std::filesystem::path &path, int givenType)
    : type(givenType), socket(::socket(AF_UNIX, type | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
    std::filesystem::remove(path);
    sockaddr_un address = {.sun_family = AF_UNIX, .sun_path = {}};
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    if (bind(socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
        (type == SOCK_STREAM && listen(socket.get(), 4) != 0))
        throw std::system_error(errno, std::generic_category(), path);
}

std::vector<std::string> LogDaemon::take() const {
    std::vector<std::string> entries;
    while (true) {
        const qvledger::Descriptor connection(type == SOCK_STREAM ? accept(socket.get(), nullptr, nullptr)
                                                                  : -1);
        char entry[10000];
        const int source = type == SOCK_STREAM ? connection.get() : socket.get();
        const ssize_t size = recv(source, entry, sizeof entry, MSG_DONTWAIT);
        if (size < 0)
            return entries;
        entries.emplace_back(entry, static_cast<std::size_t>(size));
    }
}
