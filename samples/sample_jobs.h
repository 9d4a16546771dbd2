// Made-up print jobs for demonstration logs.  The same facts give the same job.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>

#include "samples/log_writer.h"

namespace samples {

// A day's log, and how many jobs it holds.
struct Day {
    std::string server;
    std::tm date;
    std::uint32_t seed = 0; // other jobs for another number
    std::uint64_t jobs = 0;
};

// Office jobs come to the spooler, orders to the print room, which accounts for them under other names.
enum class JobKind { OFFICE, ORDER };

// What a job's owner has to pay for.
struct Bill {
    std::string owner;
    std::uint64_t sheets;
};

// The job of that number, from 1 to day.jobs, in place of what was in the record.
Bill makeJob(const Day &day, std::uint64_t number, JobKind kind, Job &job);

} // namespace samples
