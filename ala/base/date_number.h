// Dates of logs as numbers.
#pragma once

#include <cstdint>

#include "ala/ala.h"

// Returns the date as a number whose decimal digits are YYYYMMDD.
inline std::int32_t ALA__NumFromDate(const ALA_time *inp_date) {
    return inp_date->year * 10000 + inp_date->month * 100 + inp_date->day;
}
