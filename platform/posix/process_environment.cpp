#include "platform/os.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <mutex>
#include <new>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include <unistd.h>

namespace {

// The environment of the process.  Other threads and the C library read it without a lock and may keep
// pointers into it.  So arrays and texts are never released, and an array in use changes only one pointer at
// a time.  Arrays double in size, so setting n variables takes memory and time proportional to n.
class Environment {
public:
    void set(const std::string &name, const char *assignment);
    void remove(const std::string &name);
    // From now on, set() and remove() do not change the current array.
    void keep() { isKept_ = isKept_ || environ == array_; }

private:
    void adopt(std::size_t room, const std::string &without);

    std::deque<std::vector<char *>> arrays_;
    char **array_ = nullptr; // latest array; null pointers from index size_ to room_
    std::size_t size_ = 0, room_ = 0;
    bool isKept_ = false;
    std::unordered_map<std::string, std::size_t> places_; // index in array_, by name
    std::unordered_set<std::string> texts_;
};

} // namespace

// Replaces environ by a copy with room for `room` more variables.  The copy omits the variable `without` and
// repeated names.
void Environment::adopt(std::size_t room, const std::string &without) {
    std::vector<char *> kept;
    places_.clear();
    array_ = nullptr; // stays null if memory runs out below
    for (char **at = environ; at != nullptr && *at != nullptr; ++at) {
        const std::string name(*at, std::strcspn(*at, "="));
        if (name != without && places_.try_emplace(name, kept.size()).second)
            kept.push_back(*at);
    }
    size_ = kept.size();
    room_ = size_ + room;
    kept.resize(room_ + 1);
    array_ = arrays_.emplace_back(std::move(kept)).data();
    isKept_ = false;
    std::atomic_ref(environ).store(array_, std::memory_order_release);
}

void Environment::set(const std::string &name, const char *assignment) {
    if (environ != array_ || isKept_ || size_ == room_) {
        const char *now = environ != array_ ? std::getenv(name.c_str()) : nullptr;
        if (now != nullptr && std::strcmp(now, assignment + name.size() + 1) == 0)
            return;
        adopt(16 + size_, "");
    }
    auto *text = const_cast<char *>(texts_.insert(assignment).first->c_str());
    const auto [place, isNew] = places_.try_emplace(name, size_);
    std::atomic_ref(array_[place->second]).store(text, std::memory_order_release);
    size_ += isNew ? 1 : 0;
}

void Environment::remove(const std::string &name) {
    if (std::getenv(name.c_str()) != nullptr)
        adopt(16, name);
}

static std::mutex lock;

static Environment &environment() {
    static auto &the = *new Environment;
    return the;
}

static int assign(const char *assignment) {
    const char *equals = std::strchr(assignment, '=');
    if (equals == nullptr || equals == assignment) {
        errno = EINVAL;
        return -1;
    }
    const std::string name(assignment, equals);
    const std::lock_guard guard(lock);
    if (equals[1] != '\0')
        environment().set(name, assignment);
    else
        environment().remove(name);
    return 0;
}

int _putenv(const char *inp_assignment) {
    try {
        return assign(inp_assignment);
    } catch (const std::bad_alloc &) {
        errno = ENOMEM;
        return -1;
    }
}

char **OS_KeepEnvironment() {
    const std::lock_guard guard(lock);
    environment().keep();
    return environ;
}

void OS_RestoreEnvironment(char **kept) {
    std::atomic_ref(environ).store(kept, std::memory_order_release);
}

const char *OS_ProgramVariable(const char *name) {
    return secure_getenv(name);
}
