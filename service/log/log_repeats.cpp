#include "service/log/log_repeats.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <utility>

#include "platform/os.h"

using namespace qvledger;

constexpr std::int64_t kFirstWait = 60;       // seconds
constexpr std::int64_t kLongestWait = 86'400; // seconds
constexpr std::int64_t kWaitGrows = 60;       // times, whenever a count was told

static std::int64_t secondsNow() {
    const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::seconds>(sinceStart).count();
}

// The table is this thread's for a few dozen instructions without a call of the system.  A turn that does not
// come is one that was interrupted for good, by a signal's handler that logs or a fork that this program was
// not told of.
class LogRepeats::Turn {
public:
    explicit Turn(std::atomic_flag &givenFlag) : flag(givenFlag) {
        for (int tries = 0; flag.test_and_set(std::memory_order_acquire); ++tries) {
            if (tries == kTries)
                return;
            OS_Sleep(tries / kShortTries); // at first it only lets others run
        }
        isMine = true;
    }
    ~Turn() {
        if (isMine)
            flag.clear(std::memory_order_release);
    }
    Turn(const Turn &) = delete;
    Turn &operator=(const Turn &) = delete;

    bool hasCome() const { return isMine; }

private:
    static constexpr int kShortTries = 100;
    static constexpr int kTries = 200; // the second half of them a millisecond apart

    std::atomic_flag &flag;
    bool isMine = false;
};

// One file's name may have several addresses.
static bool isSame(const LogPlace &one, const LogPlace &other) {
    return one.line == other.line && one.level == other.level &&
           (one.file == other.file || std::strcmp(one.file, other.file) == 0);
}

LogRepeats::Last *LogRepeats::find(const LogPlace &place) {
    Last *const end = last + known;
    Last *const found = std::find_if(last, end, [&](const Last &it) { return isSame(it.place, place); });
    return found == end ? nullptr : found;
}

LogRepeats::Last &LogRepeats::placeFor(const LogPlace &place) {
    if (Last *const found = find(place); found != nullptr)
        return *found;
    if (known < kRepeatPlaces)
        return last[known++];
    return last[next++ % kRepeatPlaces];
}

void LogRepeats::handOut(Last &it, std::int64_t now, DueRepetitions &due) {
    if (it.times == 0)
        return;
    due.add(it.place, std::exchange(it.times, 0));
    it.toldAt = now;
    it.wait = std::min(it.wait * kWaitGrows, kLongestWait);
}

void LogRepeats::handOutTimely(std::int64_t now, DueRepetitions &due) {
    for (Last *it = last; it != last + known; ++it)
        if (now - it->toldAt >= it->wait)
            handOut(*it, now, due);
}

bool LogRepeats::count(const LogPlace &place, std::string_view text, DueRepetitions &due) {
    const Turn turn(taken);
    Last *const it = turn.hasCome() ? find(place) : nullptr;
    if (it == nullptr || !it->isKept || std::string_view(it->text, it->length) != text)
        return false;
    ++it->times;
    if (const std::int64_t now = secondsNow(); now - it->toldAt >= it->wait)
        handOutTimely(now, due);
    return true;
}

void LogRepeats::enter(const LogPlace &place, std::string_view text, DueRepetitions &due) {
    const Turn turn(taken);
    if (!turn.hasCome())
        return;
    const std::int64_t now = secondsNow();
    handOutTimely(now, due);
    Last &it = placeFor(place);
    handOut(it, now, due); // the place's count, or that of the one that gives way to it
    it.place = place;
    it.toldAt = now;
    it.wait = kFirstWait;
    it.isKept = text.size() <= kLongestText;
    it.length = it.isKept ? text.size() : 0;
    std::memcpy(it.text, text.data(), it.length);
}

std::uint64_t LogRepeats::forget(const LogPlace &place) {
    const Turn turn(taken);
    Last *const it = turn.hasCome() ? find(place) : nullptr;
    if (it == nullptr)
        return 0;
    it->isKept = false;
    return std::exchange(it->times, 0);
}

void LogRepeats::takeAll(DueRepetitions &due) {
    const Turn turn(taken);
    if (!turn.hasCome())
        return;
    for (Last *it = last; it != last + known; ++it)
        handOut(*it, secondsNow(), due);
}

void LogRepeats::startAnew() {
    known = 0;
    next = 0;
    for (Last &it : last)
        it.times = 0;
    taken.clear(std::memory_order_release);
}
