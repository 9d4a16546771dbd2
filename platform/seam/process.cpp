#include <chrono>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "platform/os.h"
#include "platform/registry_key.h"
#include "platform/seam/seam.h"

using namespace qvledger;
using namespace seam;

// ---- Registry: the keys of seam.reg ----

constexpr char kKey[] = "SOFTWARE\\Kelmo\\Seam";
constexpr DWORD kRoom = 260;

static std::string enumerated(HKEY key, DWORD index, DWORD nameSize, DWORD dataSize) {
    char name[kRoom] = "";
    BYTE data[kRoom] = {};
    DWORD type = 0;
    const LONG result = RegEnumValueA(key, index, name, &nameSize, nullptr, &type, data, &dataSize);
    if (result != ERROR_SUCCESS)
        return std::to_string(result);
    return text("0, %s, %u, type %u, %u", name, static_cast<unsigned>(nameSize), static_cast<unsigned>(type),
                static_cast<unsigned>(dataSize));
}

static std::string queried(HKEY key, const char *name, BYTE *data, DWORD size) {
    DWORD type = 0;
    const LONG result = RegQueryValueExA(key, name, nullptr, &type, data, &size);
    return text("%d, type %u, size %u", static_cast<int>(result), static_cast<unsigned>(type),
                static_cast<unsigned>(size));
}

static std::string placeAnswer(const char *path) {
    char place[512] = "";
    const int result = OS_PlaceOfKey(path, place, sizeof place);
    return text("%s, %s",
                result == OS_DONE    ? "OS_DONE"
                : result == OS_TAKEN ? "OS_TAKEN"
                                     : "OS_REFUSED",
                *place != '\0' ? "a place" : "no place");
}

void seam::tellOfRegistry() {
    OpenKey key;
    tell("`RegOpenKeyExA`, no key", std::to_string(openKey("SOFTWARE\\Kelmo\\None", KEY_READ, key)));
    tell("`RegOpenKeyExA`, other letters' case",
         std::to_string(openKey("software\\KELMO\\seam", KEY_READ, key)));
    tell("`RegOpenKeyExA`, a backslash at the end",
         std::to_string(openKey("SOFTWARE\\Kelmo\\Seam\\", KEY_READ, key)));
    if (openKey(kKey, KEY_READ, key) != ERROR_SUCCESS)
        return tell("`RegOpenKeyExA`", "no key of seam.reg");
    for (const DWORD index : {0U, 1U, 2U})
        tell(text("`RegEnumValueA`, value %u", static_cast<unsigned>(index)).c_str(),
             enumerated(key.get(), index, kRoom, kRoom));
    tell("`RegEnumValueA`, behind the last one", enumerated(key.get(), 99, kRoom, kRoom));
    tell("`RegEnumValueA`, no room for the name", enumerated(key.get(), 0, 2, kRoom));
    tell("`RegEnumValueA`, no room for the data", enumerated(key.get(), 0, kRoom, 1));
    BYTE data[kRoom] = {};
    tell("`RegQueryValueExA`, a text", queried(key.get(), "Zone", data, kRoom));
    tell("`RegQueryValueExA`, other letters' case", queried(key.get(), "zONE", data, kRoom));
    tell("`RegQueryValueExA`, a number", queried(key.get(), "Flags", data, kRoom));
    tell("`RegQueryValueExA`, no room", queried(key.get(), "Zone", data, 1));
    tell("`RegQueryValueExA`, its size alone", queried(key.get(), "Zone", nullptr, 0));
    tell("`RegQueryValueExA`, no value", queried(key.get(), "None", data, kRoom));
    tell("`RegCloseKey`, null", std::to_string(RegCloseKey(nullptr)));
    tell("`OS_PlaceOfKey`", placeAnswer(kKey));
    tell("`OS_PlaceOfKey`, no key", placeAnswer("SOFTWARE\\Kelmo\\None"));
    tell("`OS_RegistryTrouble`", *OS_RegistryTrouble() == '\0' ? "none" : "some");
}

// ---- Environment ----

static std::string variable(const char *name) {
    const char *value = std::getenv(name);
    return value != nullptr ? value : "not set";
}

static std::string assigned(const char *assignment) {
    const std::string result = std::to_string(_putenv(assignment));
    return result + ", " + variable("SEAM");
}

static void tellOfEnvironment() {
    tell("`_putenv`, a variable", assigned("SEAM=one"));
    char **kept = OS_KeepEnvironment();
    tell("`_putenv`, another value", assigned("SEAM=two"));
    static_cast<void>(_putenv("SEAM_NEW=x")); // which the return takes away
    OS_RestoreEnvironment(kept);
    tell("`OS_RestoreEnvironment`", variable("SEAM") + ", " + variable("SEAM_NEW"));
    tell("`_putenv`, an empty value", assigned("SEAM="));
    tell("`_putenv`, no assignment", std::to_string(_putenv("SEAM")));
    static_cast<void>(_putenv("Seam=small")); // told by the next line
    tell("`_putenv`, the name in other letters' case", variable("SEAM"));
    tell("`OS_ProgramVariable`", OS_ProgramVariable("Seam") != nullptr ? "set" : "not set");
}

// ---- Heap, errors, process ----

static void tellOfHeap() {
    const HANDLE heap = GetProcessHeap();
    void *block = HeapAlloc(heap, 0, 4);
    std::memcpy(block, "abc", 4);
    block = HeapReAlloc(heap, 0, block, 4096);
    tell("`HeapReAlloc`, the bytes", static_cast<const char *>(block));
    tell("`HeapFree`", HeapFree(heap, 0, block) != 0 ? "true" : "false");
    SetLastError(1234);
    tell("`SetLastError`, `GetLastError`", lastError());
}

void seam::tellOfProcess() {
    tellOfEnvironment();
    tellOfHeap();
    tell("`_getpid`", _getpid() > 0 ? "a number" : "none");
    tell("`OS_ProgramName`",
         std::string_view(OS_ProgramName()).starts_with("seam") ? "seam" : "another name");
    tell("`OS_HasLentRights`", std::to_string(OS_HasLentRights()));
    tell("`OS_WatchForks`", std::to_string(OS_WatchForks([] {})));
    OS_NoteEndSignals();
    tell("`OS_NotedSignal`", std::to_string(OS_NotedSignal()));
    const auto start = std::chrono::steady_clock::now();
    OS_Sleep(30);
    const bool slept = std::chrono::steady_clock::now() - start >= std::chrono::milliseconds(29);
    tell("`OS_Sleep`, 30 ms", slept ? "at least that long" : "shorter");
}
