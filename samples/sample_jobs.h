// Made-up print jobs for demonstration logs.  The same facts give the same job.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>

#include "samples/log_writer.h"

namespace samples {

// A day's log and its number of jobs.
struct Day {
    std::string server;
    std::tm date;
    std::uint32_t seed = 0; // another seed gives other jobs
    std::uint64_t jobs = 0;
};

// Office jobs are printed by users; orders, by the print room, whose jobs have other attributes.
enum class JobKind { OFFICE, ORDER };

// The sheets that a job's owner pays for.
struct Bill {
    std::string owner;
    std::uint64_t sheets;
};

// Makes the job with that number, from 1 to day.jobs.  Replaces the content of `job`.
Bill makeJob(const Day &day, std::uint64_t number, JobKind kind, Job &job);

} // namespace samples
