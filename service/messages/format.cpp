#include "service/messages/format.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string_view>

using namespace qvledger;

constexpr unsigned kMostArguments = 9; // the number of an argument has a single digit

namespace {

enum class Kind : std::uint8_t { Unused, Int, Long, LongLong, Size, Double, Pointer };

union Value {
    int asInt;
    long asLong;
    long long asLongLong;
    std::size_t asSize;
    double asDouble;
    const void *asPointer;
};

// A positional conversion.  For example, "%2$-5s" prints argument 2 by the plain conversion "%-5s".
struct Conversion {
    unsigned argument; // counted from 0
    Kind kind;
    char plain[24];
    std::size_t length; // characters in the format, including "%"
};

class Arguments {
public:
    // Stores the kind of the conversion's argument.  False if an earlier conversion of the same argument has
    // another kind.
    bool use(const Conversion &conversion) {
        Kind &kind = kinds_[conversion.argument];
        const bool agrees = kind == Kind::Unused || kind == conversion.kind;
        kind = conversion.kind;
        count_ = std::max(count_, conversion.argument + 1);
        return agrees;
    }
    // Reads the values.  False if the format skips an argument, because the type of a skipped argument is
    // unknown.
    bool take(std::va_list values) {
        std::va_list from;
        va_copy(from, values);
        bool known = true;
        for (unsigned i = 0; i < count_ && known; ++i)
            known = takeOne(i, &from);
        va_end(from);
        return known;
    }
    int print(const Conversion &conversion, char *text, std::size_t size) const;

private:
    // Reads one value; false if its type is unknown.  Takes a pointer, because va_list's type differs between
    // systems.
    bool takeOne(unsigned index, std::va_list *from);

    Kind kinds_[kMostArguments] = {};
    Value values_[kMostArguments] = {};
    unsigned count_ = 0;
};

} // namespace

bool Arguments::takeOne(unsigned index, std::va_list *from) {
    Value &value = values_[index];
    switch (kinds_[index]) {
    case Kind::Int:
        value.asInt = va_arg(*from, int);
        return true;
    case Kind::Long:
        value.asLong = va_arg(*from, long);
        return true;
    case Kind::LongLong:
        value.asLongLong = va_arg(*from, long long);
        return true;
    case Kind::Size:
        value.asSize = va_arg(*from, std::size_t);
        return true;
    case Kind::Double:
        value.asDouble = va_arg(*from, double);
        return true;
    case Kind::Pointer:
        value.asPointer = va_arg(*from, const void *);
        return true;
    case Kind::Unused:
        break;
    }
    return false;
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral" // the conversion was parsed and fits the value

int Arguments::print(const Conversion &conversion, char *text, std::size_t size) const {
    const Value &value = values_[conversion.argument];
    switch (conversion.kind) {
    case Kind::Int:
        return std::snprintf(text, size, conversion.plain, value.asInt);
    case Kind::Long:
        return std::snprintf(text, size, conversion.plain, value.asLong);
    case Kind::LongLong:
        return std::snprintf(text, size, conversion.plain, value.asLongLong);
    case Kind::Size:
        return std::snprintf(text, size, conversion.plain, value.asSize);
    case Kind::Double:
        return std::snprintf(text, size, conversion.plain, value.asDouble);
    case Kind::Pointer:
        return std::snprintf(text, size, conversion.plain, value.asPointer);
    case Kind::Unused:
        break;
    }
    return -1;
}

#pragma GCC diagnostic pop

// ---- The format ----

static Kind kindOf(std::string_view lengthLetters, char letter) {
    if (letter == '\0')
        return Kind::Unused;
    if (std::strchr("feg", letter) != nullptr)
        return lengthLetters.empty() ? Kind::Double : Kind::Unused;
    if (std::strchr("csp", letter) != nullptr) {
        if (!lengthLetters.empty())
            return Kind::Unused;
        return letter == 'c' ? Kind::Int : Kind::Pointer;
    }
    if (std::strchr("diuxXo", letter) == nullptr)
        return Kind::Unused;
    return lengthLetters.empty()   ? Kind::Int
           : lengthLetters == "l"  ? Kind::Long
           : lengthLetters == "ll" ? Kind::LongLong
           : lengthLetters == "z"  ? Kind::Size
                                   : Kind::Unused;
}

// Parses the positional conversion at the start of a text; nothing if it is invalid.  REQUIRES: the text
// begins with "%".
static std::optional<Conversion> readConversion(const char *text) {
    if (text[1] < '1' || text[1] > '9' || text[2] != '$')
        return std::nullopt;
    const char *rest = text + 3;
    const std::size_t layout = std::strspn(rest, "-+ #0123456789."); // flags, width and precision
    const std::size_t modifier = std::strspn(rest + layout, "lz");
    const char letter = rest[layout + modifier];
    Conversion found = {static_cast<unsigned>(text[1] - '1'), kindOf({rest + layout, modifier}, letter), "%",
                        0};
    const std::size_t length = layout + modifier + 1;
    if (found.kind == Kind::Unused || length + 2 > sizeof found.plain)
        return std::nullopt;
    std::memcpy(found.plain + 1, rest, length);
    found.plain[1 + length] = '\0';
    found.length = 3 + length;
    return found;
}

// Passes each piece of a format to plain(text, length) or converted(Conversion).  False if a conversion is
// invalid or a function returns false.
template <class Plain, class Converted>
static bool eachPiece(const char *format, Plain plain, Converted converted) {
    for (const char *at = format; *at != '\0';) {
        if (at[0] != '%' || at[1] == '%') {
            const std::size_t length = at[0] == '%' ? 1 : std::strcspn(at, "%");
            if (!plain(at, length))
                return false;
            at += at[0] == '%' ? 2 : length;
            continue;
        }
        const std::optional<Conversion> conversion = readConversion(at);
        if (!conversion || !converted(*conversion))
            return false;
        at += conversion->length;
    }
    return true;
}

// Is the format's first conversion positional?  False if the format has no conversion.
static bool isPositional(const char *format) {
    const char *at = format;
    while (at != nullptr && (at = std::strchr(at, '%')) != nullptr && at[1] == '%')
        at += 2;
    return at != nullptr && at[1] >= '1' && at[1] <= '9' && at[2] == '$';
}

// ---- The text ----

static std::int32_t formatPositional(char *text, std::size_t size, const char *format, std::va_list values) {
    Arguments arguments;
    const auto skip = [](const char *, std::size_t) { return true; };
    if (!eachPiece(format, skip, [&](const Conversion &found) { return arguments.use(found); }) ||
        !arguments.take(values))
        return -1;
    std::size_t length = 0;
    const auto place = [&] { return length < size ? text + length : nullptr; };
    const auto room = [&] { return length < size ? size - length : 0; };
    const auto plain = [&](const char *piece, std::size_t pieceLength) {
        if (room() > 1)
            std::memcpy(place(), piece, std::min(pieceLength, room() - 1));
        length += pieceLength;
        return true;
    };
    const auto converted = [&](const Conversion &found) {
        const int added = arguments.print(found, place(), room());
        length += added < 0 ? 0 : static_cast<std::size_t>(added);
        return added >= 0;
    };
    if (!eachPiece(format, plain, converted))
        return -1;
    if (size != 0)
        text[std::min(length, size - 1)] = '\0';
    return length <= INT32_MAX ? static_cast<std::int32_t>(length) : -1;
}

std::int32_t qvledger::formatText(char *text, std::size_t size, const char *format, std::va_list values) {
    return isPositional(format) ? formatPositional(text, size, format, values)
                                : std::vsnprintf(text, size, format, values);
}
