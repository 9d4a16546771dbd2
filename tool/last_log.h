// The log that a writer handled last.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tool/log_output.h"

namespace qvledger {

// Recognises a file that is opened twice: for two listed logs with the same date, the same file is opened.
class LastLog {
public:
    // Makes the log the last one.  True if its file also was the last one; unread() is then the listed name
    // of the log that was never opened.
    bool isRepeated(const LogName &name) {
        const bool isSame = name.date == date_ && name.file == file_ && name.server == server_;
        if (!isSame || name.file != std::string_view(name.listed))
            unread_ = name.listed;
        server_ = name.server;
        file_ = name.file;
        date_ = name.date;
        return isSame;
    }
    const std::string &unread() const { return unread_; }

private:
    std::string server_, file_, unread_;
    std::int32_t date_ = 0;
};

} // namespace qvledger
