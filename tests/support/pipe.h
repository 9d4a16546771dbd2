// A small pipe.  Only take() and drain() read it.
#pragma once

#include <algorithm>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "platform/descriptor.h"

class Pipe {
public:
    Pipe() {
        int ends[2] = {-1, -1};
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        reader_.reset(ends[0]);
        writer_.reset(ends[1]);
        size_ = fcntl(writer_.get(), F_SETPIPE_SZ, 8192);
    }

    // The writing end, for a program to be started.  waitUntilFull(), take() and drain() close it.
    int writer() const { return writer_.get(); }

    // Fills the pipe, so that the next write blocks.
    void fill() const {
        EXPECT_EQ(fcntl(writer_.get(), F_SETFL, O_NONBLOCK), 0);
        while (write(writer_.get(), "x", 1) == 1)
            continue;
        EXPECT_EQ(fcntl(writer_.get(), F_SETFL, 0), 0);
    }

    // Waits up to 10 s until the pipe has room for less than this many bytes; otherwise the test fails.
    void waitUntilFull(int room) {
        writer_.reset(-1);
        int waiting = 0;
        for (int tries = 0; waiting + room <= size_ && tries < 10'000; ++tries) {
            EXPECT_EQ(ioctl(reader_.get(), FIONREAD, &waiting), 0);
            usleep(1000);
        }
        EXPECT_GT(waiting + room, size_);
    }
    // Reads this many bytes, or fewer if all writers close the pipe.
    std::string take(std::size_t size) {
        writer_.reset(-1);
        std::string taken;
        char bytes[4096];
        for (ssize_t got = 1; got > 0 && taken.size() < size;) {
            got = read(reader_.get(), bytes, std::min(sizeof bytes, size - taken.size()));
            taken.append(bytes, static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
        }
        return taken;
    }
    std::string drain() { return take(std::string::npos); }

private:
    qvledger::Descriptor reader_, writer_;
    int size_ = 0;
};
