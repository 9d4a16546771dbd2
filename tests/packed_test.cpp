// Invalid and oversized packed values are refused without a crash or a large allocation.
#include <cstring>
#include <memory>

#include <gtest/gtest.h>

#include "ala/render/value_types.h"
#include "service/clock.h"
#include "service/text/text.h"
#include "tests/support/value_cases.h"

using namespace samples;

static std::size_t allocated = 0; // bytes requested from malloc since the last reset

extern "C" void *__real_malloc(std::size_t size);
extern "C" void *__wrap_malloc(std::size_t size);
void *__wrap_malloc(std::size_t size) {
    allocated += size;
    return __real_malloc(size);
}

// Unpacks a copy in a block of exactly its size, so that the sanitizer detects reads past the end.
static std::int32_t unpack(AS_attrValType_t type, const Bytes &bytes) {
    const auto block = std::make_unique<char[]>(bytes.size());
    std::memcpy(block.get(), bytes.data(), bytes.size());
    void *value = nullptr;
    AS_attrValDesc_t description;
    allocated = 0;
    const std::int32_t result = ODP_UnpackAV(nullptr, static_cast<std::int32_t>(bytes.size()), block.get(),
                                             type, &value, &description);
    EXPECT_TRUE(result == 0 || value == nullptr);
    if (value != nullptr)
        description.deleteFunc(nullptr, value, nullptr);
    return result;
}

// kFactor: the most bytes that unpacking may allocate for each byte of a value, besides kBasis.
TEST(Packed, CutAndExtendedValuesAreRefusedAndDamagedOnesTakeLittleMemory) {
    constexpr std::size_t kBasis = 4096, kFactor = 100;
    for (const auto &[label, type, packed, text, code] : valueCases()) {
        SCOPED_TRACE("value type " + std::to_string(type) + ", " + label);
        EXPECT_EQ(unpack(type, packed), 0);
        EXPECT_EQ(unpack(type, packed + '\0'), ODP_E_REFUSED);
        EXPECT_EQ(unpack(type, packed + Bytes(4, '\0')), ODP_E_REFUSED);
        // Tries every byte, or at most 400 bytes of a long value.
        for (std::size_t at = 0; at < packed.size(); at += 1 + packed.size() / 400) {
            EXPECT_EQ(unpack(type, packed.substr(0, at)), ODP_E_REFUSED) << "cut to " << at;
            for (int change : {1, 2, 3, 4, 8, 0x7F, 0x80, 0xFF}) {
                Bytes bytes = packed;
                bytes[at] = static_cast<char>(bytes[at] ^ change);
                ASSERT_NE(unpack(type, bytes), ODP_E_NO_MEMORY) << "byte " << at << " ^ " << change;
                ASSERT_LE(allocated, kBasis + kFactor * bytes.size()) << "byte " << at << " ^ " << change;
            }
        }
    }
}

TEST(Packed, EachRuleOfTheFormatIsEnforced) {
    const Bytes huge = packUint(0xFFFFFFFF), one = packInt(1), none = packInt(0);
    const struct {
        const char *label;
        std::uint32_t type;
        Bytes bytes;
        bool accepted;
    } cases[] = {
        {"short, highest", SHORT_26, packInt(32767), true},
        {"short, too high", SHORT_26, packInt(32768), false},
        {"time, one field too high", TIME, pack(Time{.minute = 40000}), false},
        {"fill byte", STRING, packUint(3) + "abc\1", false},
        {"first fill byte of two", STRING, packUint(2) + Bytes("ab\1\0", 4), false},
        {"NUL inside characters", STRING, packString(Bytes("a\0b", 3)), false},
        {"NUL inside a simple name", SIMPLE_NAME, pack(text(Bytes("a\0b", 3))), false},
        {"NUL at the end of a name in T.61", SIMPLE_NAME, pack(t61Text(Bytes("ab\0", 3))), false},
        {"NUL inside a job identifier", OBJECT_IDENTS, one + one + pack(objectJob(Bytes("a\0b", 3))) + none,
         false},
        {"NUL inside octets", OCTETS, packString(Bytes("a\0b", 3)), true},
        {"presence 2", DIST_NAME, pack(text("x")) + packInt(2) + pack(oid(1)), false},
        {"presence 2 in a chain", NAME_OR_OIDS, packInt(2) + pack(oid(1)) + none, false},
        {"chain of no elements", NAME_OR_OIDS, none, true},
        {"simple name of 255", SIMPLE_NAME, pack(text(Bytes(255, 'x'))), true},
        {"simple name of 256", SIMPLE_NAME, pack(text(Bytes(256, 'x'))), false},
        {"simple name of 256 octets", SIMPLE_NAME, pack(latin1Text(Bytes(256, 'x'))), false},
        {"job identifier of 256", OBJECT_IDENTS, one + one + pack(objectJob(Bytes(256, 'x'))) + none, false},
        {"language of three", EVENT_PROFILE, pack(EventProfile{.locale = Locale{.language = "deu"}}), false},
        {"modifier of 64", EVENT_PROFILE, pack(EventProfile{.locale = Locale{.modifier = Bytes(64, 'm')}}),
         true},
        {"modifier of 65", EVENT_PROFILE, pack(EventProfile{.locale = Locale{.modifier = Bytes(65, 'm')}}),
         false},
        {"characters of 2^32-1", STRING, huge + Bytes(64, 'x'), false},
        {"name of 2^32-1", SIMPLE_NAME, one + huge + Bytes(64, 'x'), false},
        {"choice without a member, with one", NAME_OR_OID, packInt(3) + one, false},
        {"choice without a member", NAME_OR_OID, packInt(-1), true},
        {"reference in another form, with a number", IGNORED_ATTRIBUTE, none + packInt(2) + one, false},
        {"unknown type", 2, "any", true},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(unpack(c.type, c.bytes), c.accepted ? 0 : ODP_E_REFUSED) << c.label;
        EXPECT_LE(allocated, 4096U) << c.label;
    }
    EXPECT_EQ(ODP_UnpackAV(nullptr, -1, "", STRING, std::make_unique<void *>().get(),
                           std::make_unique<AS_attrValDesc_t>().get()),
              ODP_E_REFUSED);
}
