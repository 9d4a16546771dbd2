#include <cstdlib>
#include <cstring>
#include <ctime>

#include "platform/os.h"
#include "platform/seam/seam.h"

using namespace seam;

static const unsigned char *bytes(const char *text) {
    return reinterpret_cast<const unsigned char *>(text);
}

static std::string sign(int order) {
    return order < 0 ? "before" : order > 0 ? "behind" : "equal";
}

// ---- Characters ----

constexpr char kUpperUmlaut[] = "\xC3\x84RGER"; // "ärger" in capitals
constexpr char kLowerUmlaut[] = "\xC3\xA4rger";

static void tellOfComparisons() {
    tell("`_stricmp`, \"Alpha\" and \"aLPHA\"", sign(_stricmp("Alpha", "aLPHA")));
    tell("`_stricmp`, \"B\" and \"_\"", sign(_stricmp("B", "_")));
    tell("`_stricmp`, \"\u00c4\" and \"\u00e4\"", sign(_stricmp(kUpperUmlaut, kLowerUmlaut)));
    // "Ê" and "Ú", whose second bytes are a letter and its capital in a code page.
    tell("`_stricmp`, \"\u00ca\" and \"\u00da\"", sign(_stricmp("\xC3\x8A", "\xC3\x9A")));
    tell("`_memicmp`, \"a\\0B\" and \"A\\0b\"", sign(_memicmp("a\0B", "A\0b", 3)));
    tell("`_memicmp`, \"\u00c4\" and \"\u00e4\"", sign(_memicmp(kUpperUmlaut, kLowerUmlaut, 2)));
    tell("`_mbsicmp`, \"Corp\" and \"CORP\"", sign(_mbsicmp(bytes("Corp"), bytes("CORP"))));
    tell("`_mbsicmp`, \"ab\" and \"ABC\"", sign(_mbsicmp(bytes("ab"), bytes("ABC"))));
    tell("`_mbsicmp`, \"\u00c4\" and \"\u00e4\"", sign(_mbsicmp(bytes(kUpperUmlaut), bytes(kLowerUmlaut))));
    tell("`_mbsicmp`, the sign of the kelvin and \"k\"",
         _mbsicmp(bytes("\xE2\x84\xAA"), bytes("k")) == 0 ? "equal" : "different");
}

static std::string narrowAnswer(const wchar_t *wide, int size) {
    char room[16] = "";
    SetLastError(0);
    const int got =
        WideCharToMultiByte(CP_OEMCP, 0, wide, -1, size > 0 ? room : nullptr, size, nullptr, nullptr);
    return std::to_string(got) + (got == 0 ? ", " + lastError() : size > 0 ? ", " + std::string(room) : "");
}

static void tellOfCharacters() {
    const unsigned char *text = bytes("\xC3\xA9-x");
    tell("`_mbschr`, a hyphen behind \"\u00e9\"", std::to_string(_mbschr(text, '-') - text));
    tell("`_mbschr`, what is not there", _mbschr(text, '!') == nullptr ? "null" : "found");
    tell("`_mbschr`, NUL", std::to_string(_mbschr(text, 0) - text));
    char *copy = _strdup("copy");
    tell("`_strdup`", copy);
    std::free(copy);
    tell("`WideCharToMultiByte`, the size of \"Ab\"", narrowAnswer(L"Ab", 0));
    tell("`WideCharToMultiByte`, \"Ab\"", narrowAnswer(L"Ab", 16));
    tell("`WideCharToMultiByte`, no room", narrowAnswer(L"Ab", 2));
    tell("`WideCharToMultiByte`, the size of \"\u00e9\"", narrowAnswer(L"\u00e9", 0));
}

void seam::tellOfTexts() {
    tellOfComparisons();
    tellOfCharacters();
}

// ---- Times ----

static std::string calendar(int result, const std::tm &time) {
    return result != 0 ? "refused"
                       : text("%d-%02d-%02d %02d:%02d:%02d", time.tm_year + 1900, time.tm_mon + 1,
                              time.tm_mday, time.tm_hour, time.tm_min, time.tm_sec);
}

void seam::tellOfTimes() {
    _putenv("TZ=EST5EDT");
    _tzset();
    tell("`_timezone`, TZ=EST5EDT", std::to_string(_timezone));
    std::tm time = {};
    const std::time_t summer = 932'040'000;
    const std::time_t winter = 916'401'600;
    const std::time_t before1970 = -1;
    const std::time_t in2100 = 4'102'444'800;
    int result = gmtime_s(&time, &summer);
    tell("`gmtime_s`", calendar(result, time));
    result = gmtime_s(&time, &in2100);
    tell("`gmtime_s`, in 2100", calendar(result, time));
    result = gmtime_s(&time, &before1970);
    tell("`gmtime_s`, before 1970", calendar(result, time));
    result = localtime_s(&time, &summer);
    tell("`localtime_s`, in summer", calendar(result, time) + (time.tm_isdst > 0 ? ", DST" : ""));
    result = localtime_s(&time, &winter);
    tell("`localtime_s`, in winter", calendar(result, time) + (time.tm_isdst > 0 ? ", DST" : ""));
    result = gmtime_s(&time, &summer);
    time.tm_mday += 40; // comes into range
    const std::time_t later = _mkgmtime(&time);
    tell("`_mkgmtime`, 40 days later", result == 0 ? std::to_string(later - summer) : "refused");
}
