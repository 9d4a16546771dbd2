// Made-up print jobs for demonstration logs.  The same arguments always give the same job.
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
    std::uint32_t seed = 0; // different seeds give different jobs
    std::uint64_t jobs = 0;
    std::uint32_t failed = 0; // every Nth job fails; 0: jobs have no attribute job-state
};

// Users print office jobs; the print room prints orders.  Orders and office jobs have different attributes.
enum class JobKind { OFFICE, ORDER };

// The sheets that a job's owner pays for.
struct Bill {
    std::string owner;
    std::uint64_t sheets;
};

// Makes the job with this number, from 1 to day.jobs.  Replaces the content of `job`.
Bill makeJob(const Day &day, std::uint64_t number, JobKind kind, Job &job);

} // namespace samples
