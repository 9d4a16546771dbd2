// The logs that a writer has handled.
#pragma once

#include <map>
#include <string>
#include <utility>

#include "tool/log_output.h"

namespace qvledger {

// Recognises a file that is opened twice.  Logs are opened by date, so one file is opened for two listed logs
// if they have the same date, or if today's log and a current log of another day exist.
class OpenedLogs {
public:
    // Adds a log.  True if its file was opened before; unread() is then the listed name of the log that was
    // never opened.
    bool isRepeated(const LogName &name) {
        const auto [first, isNew] = listed_.try_emplace({name.server, name.file}, name.listed);
        unread_ = name.listed == first->first.second ? first->second : name.listed;
        return !isNew;
    }
    const std::string &unread() const { return unread_; }

private:
    std::map<std::pair<std::string, std::string>, std::string> listed_; // listed name, by server and file
    std::string unread_;
};

} // namespace qvledger
