#include "service/text/text.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <type_traits>

#include "service/packed/value_memory.h"
#include "service/text/convert.h"

using namespace qvledger;

constexpr std::int32_t kNoChoice = 1;

using Bytes = std::span<const std::uint8_t>;

// ---- The bytes of a member ----

// Returns the characters in an array or at a pointer; a null pointer means an empty text.
template <class Characters>
static Bytes bytesOf(const Characters &text) {
    static_assert(std::is_array_v<Characters> || std::is_pointer_v<Characters>);
    constexpr std::size_t limit =
        std::is_array_v<Characters> ? sizeof(Characters) : std::numeric_limits<std::ptrdiff_t>::max();
    const char *characters = text;
    if (characters == nullptr)
        return {};
    return {reinterpret_cast<const std::uint8_t *>(characters), strnlen(characters, limit)};
}

static Bytes bytesOf(const GEN_string &string) {
    if (string._value == nullptr || string.length <= 0)
        return {};
    return {string._value, static_cast<std::size_t>(string.length)};
}

static Bytes bytesOf(const GEN_octet255 &octets) {
    const int length = std::clamp<int>(octets.length, 0, sizeof octets._value);
    return {octets._value, static_cast<std::size_t>(length)};
}

// ---- Extraction ----

// Makes the text of a GEN_text or GEN_simpleName.  Both have the same choices and differ only in where they
// store the characters.
template <class Text>
static std::int32_t extract(char **text, const Text *value) {
    *text = nullptr;
    if (value == nullptr)
        return kNoChoice;
    const auto &u = value->u;
    switch (value->choice) {
    case GEN_ISO_646_IRV:
        *text = copyText(bytesOf(u.iso_646_irv));
        break;
    case GEN_CCITT_T_61:
        *text = convertToUtf8(bytesOf(u.ccitt_t_61), CODE_SET_T61);
        break;
    case GEN_ISO_LATIN1:
        *text = convertToUtf8(bytesOf(u.iso_latin1), CODE_SET_LATIN1);
        break;
    case GEN_ISO_UCS_2:
        *text = convertToUtf8(bytesOf(u.iso_ucs_2), CODE_SET_UCS2);
        break;
    case GEN_OTHER_CODE_SET:
        *text = convertToUtf8(bytesOf(u.otherCodeSet.octet_string), u.otherCodeSet.codeSet);
        break;
    default:
        return kNoChoice;
    }
    return *text != nullptr ? 0 : GENU_E_NO_MEMORY;
}

std::int32_t GENU_ExtractText(STF_l__hdr *, char **outpp_text, const GEN_text *inp_value, std::int32_t) {
    return extract(outpp_text, inp_value);
}

std::int32_t GENU_ExtractSimpleName(STF_l__hdr *, char **outpp_text, const GEN_simpleName *inp_value,
                                    std::int32_t) {
    return extract(outpp_text, inp_value);
}

// ---- Names with a domain type ----

constexpr std::uint32_t kNoDomainType = 0;
constexpr std::uint32_t kUnknownDomainType = 1; // matches no domain

static std::uint32_t domainType(const GEN_nameOrOid *syntax) {
    if (syntax == nullptr)
        return kNoDomainType;
    return syntax->choice == GEN_GLOBAL_FORM ? syntax->u.globalForm : kUnknownDomainType;
}

std::int32_t GENU_ExtractDistNameString(STF_l__hdr *, char **outpp_text, std::uint32_t *outp_type,
                                        const GEN_distNameString *inp_value, std::int32_t) {
    if (outp_type != nullptr)
        *outp_type = inp_value != nullptr ? domainType(inp_value->name_syntax_o) : kNoDomainType;
    return extract(outpp_text, inp_value != nullptr ? &inp_value->name : nullptr);
}

namespace {

// The value that GENU_MakeDistNameString2 makes; its text follows in the same block.
struct OwnDistName {
    GEN_distNameString value;
    GEN_nameOrOid syntax;
};

} // namespace

std::int32_t GENU_MakeDistNameString2(STF_l__hdr *, GEN_distNameString **outpp_value, const char *inp_text,
                                      std::uint32_t in_type, std::int32_t) {
    *outpp_value = nullptr;
    const Bytes characters = bytesOf(inp_text);
    const std::size_t size = sizeof(OwnDistName) + characters.size() + 1;
    ValueMemory block;
    void *memory = block.allocate(size);
    if (memory == nullptr)
        return GENU_E_NO_MEMORY;
    block.handOver();
    auto *own = static_cast<OwnDistName *>(std::memset(memory, 0, size));
    char *text = reinterpret_cast<char *>(own + 1);
    std::copy(characters.begin(), characters.end(), text);
    own->value.name.choice = GEN_ISO_646_IRV;
    own->value.name.u.iso_646_irv = text;
    own->value.name_syntax_o = &own->syntax;
    own->syntax.choice = GEN_GLOBAL_FORM;
    own->syntax.u.globalForm = in_type;
    *outpp_value = &own->value;
    return 0;
}

void GEN_DeleteDistNameString(STF_l__hdr *, GEN_distNameString *inp_value, void *) {
    ValueMemory::release(inp_value);
}
