// Walking a record: its attributes, its documents and their attributes, and the names of both.
#include <chrono>

#include <gmock/gmock.h>
#include <malloc.h>

#include "ala/base/record.h"
#include "tests/support/facility.h"

using namespace samples;

// Returns "name=value|value" and frees the pair.
static std::string takeText(ALA_attrPair *pair) {
    std::string text = pair->attrName;
    for (const attributeVal *value = pair->attrVal; value != nullptr; value = value->next)
        text += (value == pair->attrVal ? '=' : '|') + std::string(value->value);
    ALA_FreeAttributePair(&pair);
    return text;
}

class Cursor : public Facility {
protected:
    ~Cursor() override { ALA_FreeJobRecord(&job); }

    // Writes an OID table with the names a to h for 1.2.1 to 1.2.8, and two long names.
    void SetUp() override {
        std::string table;
        for (char name = 'a'; name <= 'h'; name++)
            table += "1.2." + std::to_string(name - 'a' + 1) + "\t0\t00\t" + name + '\n';
        table += "1.2.9\t0\t00\t" + longName + "\n1.2.10\t0\t00\t" + longestName + '\n';
        writeFile(root.oids() / "oids", table);
        writeFile(root.oids() / "oids.de", "1.2.1\tgerman-a\n");
        registerAgain();
    }

    // Loads a record with the attributes a=1, b=2, ... and these counts.
    void load(std::uint32_t attributes, std::uint32_t ofJob, std::uint32_t perDocument,
              std::uint32_t version = 3) {
        Job made;
        for (std::uint32_t i = 1; i <= attributes; i++)
            made.attribute("1.2." + std::to_string(i), INTEGER, {packInt(static_cast<std::int32_t>(i))});
        load(made.numJobAttr(ofJob).docAttrPerDoc(perDocument), version);
    }
    void load(const Job &wanted, std::uint32_t version = 3) {
        ALA_FreeJobRecord(&job);
        ASSERT_EQ(open(Log({.verNum = version}).job(wanted)), ALA_N_NORMAL);
        ASSERT_EQ(ALA_GetFirstJobRecord(handle, &log, &job), ALA_N_NORMAL);
    }

    // Calls `first`, then `next` to the end.  Returns the attributes, and each code N other than 0 as "#N".
    template <class Record, class Get>
    std::string walk(Record &record, Get first, Get next) {
        std::string got;
        ALA_retCode_t code = ALA_N_NORMAL;
        for (auto get = first; code != ALA_A_LAST_ATTRIBUTE && code != ALA_A_NO_MORE_JOB_ATTR; get = next) {
            ALA_attrPair *pair = nullptr;
            code = get(handle, &record, nullptr, &pair);
            got += (pair != nullptr ? takeText(pair) + ' ' : "") +
                   (code != 0 ? '#' + std::to_string(code) + ' ' : "");
        }
        return got.substr(0, got.size() - 1);
    }
    std::string walkJob() { return walk(job, ALA_GetFirstAttrFromJob, ALA_GetNextAttrFromJob); }

    // Returns the attributes of one document, or "#N" if the call returns no document but code N.
    std::string document(decltype(ALA_GetNextDocmt) *get) {
        ALA_dRecord_t made = nullptr;
        const ALA_retCode_t code = get(handle, &job, &made);
        if (made == nullptr)
            return '#' + std::to_string(code);
        const std::string text = walk(made, ALA_GetFirstAttrFromDoc, ALA_GetNextAttrFromDoc);
        EXPECT_EQ(ALA_FreeDocmtRecord(&made), ALA_N_NORMAL);
        return text.substr(0, text.rfind("#17"));
    }
    std::string walkDocuments() {
        std::string last = document(ALA_GetFirstDocmt), all = last;
        for (; last[0] != '#' && all.size() < 100; all += "/ " + last)
            last = document(ALA_GetNextDocmt);
        return all;
    }

    std::string names(ALA_recAttrType_t type, const char *locale = nullptr) {
        ALA_attrName *list = nullptr;
        const ALA_retCode_t code = ALA_ListAttributesFromRecord(handle, job, type, locale, &list);
        std::string text = code != ALA_N_NORMAL ? "code " + std::to_string(code) : "";
        for (const ALA_attrName *it = list; it != nullptr; it = it->next)
            text += (text.empty() ? "" : " ") + std::string(it->attrNameStr);
        EXPECT_EQ(ALA_FreeAttributeList(&list), ALA_N_NORMAL);
        return text;
    }

    ALA_record_t job = nullptr;
    const std::string longName = std::string(32, 'l'), longestName = std::string(255, 'm');
};

TEST_F(Cursor, WalksStayWithinTheRecordWhateverItsCounts) {
    constexpr std::uint32_t huge = 0xFFFFFFFF;
    const struct {
        const char *label;
        std::uint32_t attributes, ofJob, perDocument, version;
        const char *job, *documents, *names[3];
    } cases[] = {
        {"no documents", 2, 2, 0, 3, "a=1 b=2 #17", "#0", {"b a", "b a", ""}},
        {"two documents", 6, 2, 2, 3, "a=1 b=2 #33", "c=3 d=4 / e=5 f=6 / #32", {"d c b a", "b a", "d c"}},
        {"short last document", 4, 1, 2, 3, "a=1 #33", "b=2 c=3 / d=4 / #32", {"c b a", "a", "c b"}},
        {"empty documents", 3, 1, 0, 3, "a=1 #33", "/ #32", {"a", "a", ""}},
        {"fewer attributes than the job's count", 2, 5, 1, 3, "a=1 b=2 #17", "#31", {"b a", "b a", ""}},
        {"huge document", 3, 1, huge, 3, "a=1 #33", "b=2 c=3 / #32", {"c b a", "a", "c b"}},
        {"huge counts", 2, huge, huge, 3, "a=1 b=2 #17", "#31", {"b a", "b a", ""}},
        {"documents only", 2, 0, 1, 3, "a=1 #33", "a=1 / b=2 / #32", {"a", "", "a"}},
        {"version 2", 2, 0, 0, 2, "a=1 #33", "/ #32", {"", "", ""}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.label);
        load(c.attributes, c.ofJob, c.perDocument, c.version);
        for (int round = 0; round < 2; round++) {
            EXPECT_EQ(walkJob(), c.job);
            EXPECT_EQ(walkDocuments(), c.documents);
        }
        for (const ALA_recAttrType_t type : {0, 1, 2})
            EXPECT_EQ(names(type), c.names[type]) << type;
    }
}

TEST_F(Cursor, RestartingTheJobRestartsTheDocuments) {
    load(4, 1, 1);
    ALA_attrPair *pair = nullptr;
    EXPECT_EQ(ALA_GetNextAttrFromJob(handle, &job, nullptr, &pair), ALA_A_LAST_ATTRIBUTE) << "not started";
    EXPECT_EQ(document(ALA_GetNextDocmt), "b=2 ") << "Next works without First";
    EXPECT_EQ(document(ALA_GetFirstDocmt), "b=2 ");
    EXPECT_EQ(document(ALA_GetNextDocmt), "d=4 ") << "First counts as a delivery";
    EXPECT_EQ(document(ALA_GetNextDocmt), "#32");
    walkJob();
    EXPECT_EQ(document(ALA_GetNextDocmt), "b=2 ");
    for (const ALA_retCode_t code : {ALA_A_NO_MORE_JOB_ATTR, ALA_A_NO_MORE_JOB_ATTR, ALA_A_LAST_ATTRIBUTE})
        EXPECT_EQ(ALA_GetNextAttrFromJob(handle, &job, nullptr, &pair), code) << "the index keeps rising";
    ALA_dRecord_t made = nullptr;
    ASSERT_EQ(ALA_GetFirstDocmt(handle, &job, &made), ALA_N_NORMAL);
    ALA_FreeJobRecord(&job);
    EXPECT_EQ(walk(made, ALA_GetFirstAttrFromDoc, ALA_GetNextAttrFromDoc), "b=2 #17") << "without its job";
    ALA_FreeDocmtRecord(&made);
}

TEST_F(Cursor, FailingAttributesDoNotEndTheWalk) {
    const Bytes bad = "...";
    load(Job()
             .attribute("1.2.1", INTEGER)
             .attribute("1.2.2", INTEGER, {packInt(1), bad, packInt(3)})
             .attribute("1.2.x", INTEGER, {packInt(1)})
             .attribute("1.2.99", INTEGER, {packInt(1)})
             .attribute("1.2.3", INTEGER, {bad})
             .attribute("1.2.4", INTEGER, {packInt(1), packInt(2), packInt(3)})
             .document()
             .attribute("1.2.5", INTEGER, {bad})
             .attribute("1.2.6", INTEGER, {packInt(6)}));
    EXPECT_EQ(walkJob(), "a= b=1 #14 #4 #4 #14 d=1|2|3 #33");
    EXPECT_EQ(takeLog()[0],
              "ODP_UnpackAV failed for attr val type 1 in ALA_GetNextAttrFromJob; ALA_A_ODPUNPACK_ERROR");
    EXPECT_EQ(document(ALA_GetFirstDocmt), "#14 f=6 ");
    EXPECT_EQ(names(1), "code 4");
}

TEST_F(Cursor, NamesFollowTheLocale) {
    load(2, 2, 0);
    EXPECT_EQ(names(1, "de_DE.UTF-8"), "b german-a");
    EXPECT_EQ(names(1, "C"), "b a");
    EXPECT_EQ(walkJob(), "a=1 b=2 #17") << "the last locale applies";
    ALA_attrPair *pair = nullptr;
    for (const char *locale : {"de", static_cast<const char *>(nullptr)}) { // null: the last locale applies
        EXPECT_EQ(ALA_GetFirstAttrFromJob(handle, &job, locale, &pair), ALA_N_NORMAL);
        EXPECT_EQ(takeText(pair), "german-a=1");
    }
    EXPECT_EQ(names(3), "code 31");
    writeFile(root.oids() / "oids.xx", "broken\n");
    EXPECT_EQ(names(1, "xx"), "code 4");
}

TEST_F(Cursor, ManyAndLongNamesAreDelivered) {
    for (const std::size_t last : {1U, 2U}) { // the two records differ only in the 300th attribute
        Job made;
        std::string walked, listed;
        for (std::size_t i = 0; i < 300; i++) {
            const std::size_t name = i < 299 ? i % 4 + 7 : last;
            made.attribute("1.2." + std::to_string(name), INTEGER, {packInt(7)});
            const std::string shown = name == 10  ? longestName
                                      : name == 9 ? longName
                                                  : std::string(1, static_cast<char>('a' + name - 1));
            walked += shown + "=7 ";
            listed = shown + (i > 0 ? ' ' + listed : "");
        }
        load(made);
        for (const char *round : {"looked up", "cached"}) {
            EXPECT_EQ(walkJob(), walked + "#17") << round;
            EXPECT_EQ(names(1), listed) << round;
        }
    }
}

TEST_F(Cursor, MissingRecordsAreRefused) {
    ALA_attrPair *pair = nullptr;
    ALA_dRecord_t made = nullptr;
    EXPECT_EQ(ALA_GetFirstAttrFromJob(handle, nullptr, nullptr, &pair), ALA_A_INVALID_RECORD);
    EXPECT_EQ(ALA_GetNextAttrFromDoc(handle, &made, nullptr, &pair), ALA_A_INVALID_RECORD);
    EXPECT_EQ(ALA_GetNextAttrFromDoc(handle, nullptr, nullptr, &pair), ALA_A_INVALID_RECORD);
    EXPECT_EQ(takeLog().back(), "inoutp_curRecord is NULL in ALA_GetNextAttrFromDoc; ALA_A_INVALID_RECORD");
    EXPECT_EQ(ALA_GetNextDocmt(handle, &job, &made), ALA_A_INVALID_RECORD);
    EXPECT_EQ(names(1), "code 13");
}

// Measures time and memory for a record, a document, and the texts of the document's first attribute.
TEST_F(Cursor, ARecordTakesAtMostSixteenTimesItsBytesAndLinearTime) {
    const struct {
        const char *label;
        std::uint32_t type;
        int attributes;
        std::size_t values;
        Bytes packed;
    } cases[] = {
        {"values of one byte", 2, 1, 262'146, "x"},
        {"numbers", INTEGER, 1, 200'000, packInt(-2147483647)},
        {"attributes of many values", 2, 10, 20'000, "x"},
        {"attributes without a value", STRING, 20'000, 0, ""},
        {"lists of names", DIST_NAMES, 1, 2, pack(DistNames(100'000, DistName{text(""), oid(1)}))},
    };
    for (const auto &[label, type, attributes, values, packed] : cases) {
        Job made = Job().attribute("1.2.1", STRING).document();
        for (int i = 0; i < attributes; ++i)
            made.attribute("1.2.2", type, std::vector<Value>(values, packed));
        const auto allocated = [] { return mallinfo2().uordblks + mallinfo2().hblkhd; }; // 0 under sanitizers
        const std::size_t before = allocated();
        const auto start = std::chrono::steady_clock::now();
        load(made);
        ALA_dRecord_t document = nullptr;
        ASSERT_EQ(ALA_GetFirstDocmt(handle, &job, &document), ALA_N_NORMAL);
        ALA_attrPair *pair = nullptr;
        EXPECT_EQ(ALA_GetFirstAttrFromDoc(handle, &document, nullptr, &pair), ALA_N_NORMAL);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20)) << label;
        EXPECT_LE(allocated() - before, 16 * Log().job(made).size() + (1U << 20)) << label;
        ALA_FreeAttributePair(&pair);
        ALA_FreeDocmtRecord(&document);
        ALA_FreeJobRecord(&job);
    }
}
