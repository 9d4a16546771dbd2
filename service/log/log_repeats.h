// Entries of the log that repeat the last one of their place in the source: they are counted instead of
// written.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qvledger {

struct LogPlace {
    std::int32_t level;
    const char *file; // stays as long as the program runs
    std::int32_t line;
};

// A place's last entry came so often again.
struct LogRepetition {
    LogPlace place;
    std::uint64_t times;
};

constexpr std::size_t kRepeatPlaces = 16; // whose last entries are known at a time

// Repetitions that are to be told now.
class DueRepetitions {
public:
    void add(const LogPlace &place, std::uint64_t times) { items[size++] = {place, times}; }
    const LogRepetition *begin() const { return items; }
    const LogRepetition *end() const { return items + size; }

private:
    LogRepetition items[kRepeatPlaces];
    std::size_t size = 0;
};

// The last entry of each of the places that made entries lately.  Every call that is counted is handed out
// once, in a LogRepetition.
//
// Threads share it.  It never waits for long, so a signal's handler or a fork cannot lock it up: who finds it
// taken for too long does without it, and the entry is written like a new one.  It is in order from before
// the first constructor to behind the last destructor.
class LogRepeats {
public:
    // Counts an entry that repeats its place's last one, false for any other.  What repeats for long is due
    // after a minute, after an hour more, and then once a day.  Due are the counts of all places whose time
    // has come when that of this one has.
    bool count(const LogPlace &place, std::string_view text, DueRepetitions &due);

    // An entry that is to be written is its place's last one from now on; what its place counted is due
    // before it, and so are the counts of other places whose time has come.  An entry that is too long is not
    // kept, and written each time.
    void enter(const LogPlace &place, std::string_view text, DueRepetitions &due);

    // The place's last entry could not be written, so nothing must count as its repetition: how often it was
    // counted meanwhile.
    std::uint64_t forget(const LogPlace &place);

    // All that was counted.
    void takeAll(DueRepetitions &due);

    // Forgets everything, in the process that a fork made: what was counted is the other process's.
    void startAnew();

private:
    static constexpr std::size_t kLongestText = 5000; // a path of the greatest length, and what is said of it

    struct Last {
        LogPlace place = {};
        std::uint64_t times = 0; // counted, and not handed out
        std::int64_t toldAt = 0; // seconds
        std::int64_t wait = 0;   // seconds after toldAt until it is due
        bool isKept = false;     // the text is
        std::size_t length = 0;
        char text[kLongestText] = {};
    };
    class Turn;

    Last *find(const LogPlace &place);
    Last &placeFor(const LogPlace &place);
    static void handOut(Last &it, std::int64_t now, DueRepetitions &due);
    void handOutTimely(std::int64_t now, DueRepetitions &due);

    std::atomic_flag taken;
    std::size_t known = 0; // of the last entries
    std::size_t next = 0;  // the one to give way when all are in use
    Last last[kRepeatPlaces];
};

} // namespace qvledger
