// A fixture: a print system's root, the log of one day, a registration, and the entries of the program's log.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "ala/ala.h"
#include "samples/log_writer.h"
#include "samples/sample_oids.h"
#include "samples/sample_root.h"
#include "tests/support/scripted_os.h"
#include "tests/support/temp_dir.h"

constexpr ALA_time kDay = {2001, 2, 3};
constexpr char kDayTail[] = "20010203";

// While an object of this class exists, the current date is the day after kDay.
class NextDay : Scripted<decltype(::GENU_GetCurrentTime)> {
public:
    NextDay();
};

class Facility : public testing::Test {
protected:
    Facility();
    ~Facility() override;

    void registerAgain();

    // Returns the texts of a level that were logged since the last call.  Discards those of other levels.
    std::vector<std::string> takeLog(char level = '5');
    static void setLogLevel(const char *level);

    // Closes the open log, saves a new log for kDay and opens that log.  Returns the code of ALA_Open().
    ALA_retCode_t open(const samples::Log &log);
    void close();

    std::filesystem::path path(const std::string &tail = kDayTail) const { return root.log("alpha", tail); }

    // Saves a current log that was last changed at 23:30 UTC of kDay.  Each test starts in the zone UTC.
    void layCurrentLog() const;
    static void setTimeZone(const char *zone);

    TempDir folder;
    samples::SampleRoot root{folder.path()};
    ALA_handle_t handle = nullptr;
    ALA_acctLogHandle_t log = nullptr;

private:
    std::vector<std::pair<std::int32_t, std::string>> entries_; // level and text since takeLog()
};
