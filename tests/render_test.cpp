// Values of every type through ALA__GetAttribute: texts, failures and ownership.
#include <algorithm>
#include <fstream>

#include <gtest/gtest.h>

#include "ala/base/handle.h"
#include "ala/base/lock.h"
#include "ala/render/pair.h"
#include "platform/os.h"
#include "tests/support/temp_dir.h"
#include "tests/support/value_cases.h"

using namespace qvledger;

using namespace samples;

static int releases = 0;
static void (*realDelete)(STF_l__hdr *, void *, void *) = nullptr;

class Rendered : public testing::Test {
protected:
    Rendered() {
        std::ofstream(folder / "oids")
            << "1.3.1\t1\t20\tattribute\n1.3.10\t10\t00\ta4\n1.3.11\t11\t40\t12-abc\n"
               "1.3.12\t12\t10\t1-2-3\n1.3.13\t13\t4F\t12-\n1.3.14\t14\t40\t12abc\n"
               "1.3.15\t15\t1F\tabc-def\n1.3.16\t16\t20\t7-staple\n";
        EXPECT_EQ(OID_Init(nullptr, folder.path().c_str(), 0), 0);
        EXPECT_EQ(OID_OpenDb(nullptr, folder.path().c_str(), 0, 0, &oids), 0);
        ALA__InitMutex();
        setenv("TZ", "UTC0", 1);
        _tzset();
    }
    ~Rendered() override {
        if (pair != nullptr)
            ALA_FreeAttributePair(&pair);
        OID_CloseDb(nullptr, &oids);
        OID_Term();
        THR_TermMutex(&timeLock);
        THR_TermMutex(&localeLock);
        unsetenv("TZ");
        _tzset();
    }

    // Adds a value to the pair.  If packed is null, the attribute has no value.
    ALA_retCode_t render(std::uint32_t type, const Bytes *packed) {
        attrValNode node = {};
        node.attrValType = type;
        node.oid = node.oidBytes;
        EXPECT_EQ(OID_ConvertDecToBin(nullptr, "1.3.1", node.oid, 0), 0);
        void *value = nullptr;
        AS_attrValDesc_t description = {};
        if (packed != nullptr) {
            EXPECT_EQ(ODP_UnpackAV(nullptr, static_cast<std::int32_t>(packed->size()), packed->data(), type,
                                   &value, &description),
                      0);
        }
        realDelete = description.deleteFunc;
        description.deleteFunc = [](STF_l__hdr *status, void *record, void *allocator) {
            releases++;
            realDelete(status, record, allocator);
        };
        releases = 0;
        const ALA_retCode_t result = ALA__GetAttribute(&node, value, description, nullptr, &oids, &pair);
        EXPECT_EQ(releases, value != nullptr ? 1 : 0);
        return result;
    }
    ALA_retCode_t render(std::uint32_t type, const Bytes &packed) { return render(type, &packed); }

    // Renders packed bytes directly, as the cursors do when they know the attribute's name.
    ALA_retCode_t renderPacked(std::uint32_t type, const Bytes &packed) {
        attrValNode node = {};
        node.attrValType = type;
        const auto *bytes = reinterpret_cast<const std::uint8_t *>(packed.data());
        return getPackedAttribute(node, {bytes, packed.size()}, "attribute", {.oidHandle = &oids}, &pair);
    }

    // Returns the pair's texts, separated by "|", and frees the pair.
    std::string take() {
        if (pair == nullptr)
            return "(no pair)";
        std::string texts;
        for (const attributeVal *value = pair->attrVal; value != nullptr; value = value->next)
            texts.append(value->value).append(value->next != nullptr ? "|" : "");
        ALA_FreeAttributePair(&pair);
        return texts;
    }

    TempDir folder;
    void *oids = nullptr;
    ALA_attrPair *pair = nullptr;
};

TEST_F(Rendered, EachValueIsRenderedAloneAndBetweenOthers) {
    for (const ValueCase &c : valueCases()) {
        SCOPED_TRACE("value type " + std::to_string(c.type) + ", " + c.label);
        EXPECT_EQ(render(c.type, c.packed), c.code);
        EXPECT_EQ(take(), c.code == 0 ? c.text : "(no pair)");
        EXPECT_EQ(renderPacked(c.type, c.packed), c.code);
        EXPECT_EQ(take(), c.code == 0 ? c.text : "(no pair)") << "rendered from the packed bytes";

        ASSERT_EQ(render(STRING, packString("first")), 0);
        EXPECT_EQ(render(c.type, c.packed), c.code);
        ASSERT_EQ(render(STRING, packString("last")), 0);
        // A value that cannot be rendered adds an empty text, or no text if its type is DIST_NAMES.
        const bool addsNone = c.code != 0 && c.type == DIST_NAMES;
        EXPECT_EQ(take(), "first|" + (addsNone ? "" : c.text + "|") + "last");
    }
}

TEST_F(Rendered, UnknownTypesAndMissingValuesAreEmpty) {
    for (std::uint32_t type = 0; type < 100; type++) {
        SCOPED_TRACE(type);
        EXPECT_EQ(render(type, nullptr), 0);
        EXPECT_EQ(take(), "");
        const auto &cases = valueCases();
        if (std::any_of(cases.begin(), cases.end(), [type](const ValueCase &c) { return c.type == type; }))
            continue;
        EXPECT_EQ(render(type, "\1\2\3"), 0);
        EXPECT_EQ(take(), "");
    }
    EXPECT_EQ(render(0xFFFFFFFF, "\1\2\3"), 0);
    EXPECT_EQ(take(), "");
}
