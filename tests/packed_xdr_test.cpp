// A second opinion on packed values: the routines that rpcgen makes of service/packed/values.x, with the XDR
// of the C library, pack random values; ours must read the same fields, and samples/packer must write the
// same bytes.
#include <cmath>
#include <concepts>
#include <cstring>
#include <memory>
#include <random>
#include <string>

#include <gtest/gtest.h>
#include <rpc/rpc.h>

#include "ala/render/value_types.h"
#include "tests/support/value_cases.h"

// The generated records have the names and fields of our own.  Only their unions are named after them.
#define GEN_text_u u
#define GEN_simpleName_u u
#define GEN_nameOrOid_u u
#define GEN_cardinalOrNoid_u u
#define GEN_fontReference_u u
#define AS_attrRef_u u
#define GEN_finishingSpec_u u
#define GEN_pageIdentifier_u u
#define GEN_mediaSelect_u u
#define GEN_objectIdent_u u
#define GEN_deliveryAddress_u u
namespace xdr {
#include "xdr/values.h"
} // namespace xdr

template <class T, class... Kinds>
concept Either = (std::same_as<std::remove_const_t<T>, Kinds> || ...);

// ---- Two visitors of a record's fields ----

// Fills a generated record.
class Randomizer {
public:
    explicit Randomizer(std::mt19937 &givenRandom) : random(givenRandom) {}

    void number(Either<int, u_int> auto &x) {
        x = static_cast<std::decay_t<decltype(x)>>(edgeOr(static_cast<std::uint32_t>(random())));
    }
    void number(double &x) { x = std::ldexp(static_cast<double>(random()), below(2000) - 1000) - below(2); }
    void small(int &x) { x = static_cast<std::int16_t>(edgeOr(static_cast<std::uint32_t>(random()))); }
    void choice(int &x, int members) { x = below(20) == 0 ? -1 : below(members + 2); }
    void text(char *&x, int limit) {
        const int length = size(limit);
        x = make<char>(length + 1);
        for (int i = 0; i < length; i++)
            x[i] = static_cast<char>(1 + below(255));
    }
    void octets(auto &x, int limit) {
        auto &[length, bytes] = x;
        length = static_cast<u_int>(size(limit));
        bytes = make<char>(static_cast<int>(length));
        for (u_int i = 0; i < length; i++)
            bytes[i] = static_cast<char>(below(256));
    }
    template <class T>
    bool present(T *&x) {
        x = below(3) == 0 ? nullptr : make<T>(1);
        return x != nullptr;
    }

private:
    int below(int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }
    int size(int limit) { return below(20) == 0 ? limit : below(std::min(limit, 9) + 1); }
    std::uint32_t edgeOr(std::uint32_t any) {
        constexpr std::uint32_t kEdges[] = {0, 1, 0x7FFF, 0x8000, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
        return below(2) == 0 ? any : kEdges[below(std::size(kEdges))];
    }
    template <class T>
    T *make(int count) {
        memory.push_back(std::make_unique<std::byte[]>(sizeof(T) * static_cast<std::size_t>(count)));
        return reinterpret_cast<T *>(memory.back().get());
    }

    std::mt19937 &random;
    std::vector<std::unique_ptr<std::byte[]>> memory;
};

// Writes down all that a record holds.
class Describer {
public:
    void number(auto x) { description += std::to_string(x) + ' '; }
    void small(int x) { number(x); }
    void choice(int x, int) { number(x); }
    void text(const char *x, int) { quote(x, std::strlen(x)); }
    void octets(const auto &x, int) {
        const auto &[length, bytes] = x;
        quote(reinterpret_cast<const char *>(bytes), static_cast<std::size_t>(length));
    }
    bool present(const void *x) {
        description += x != nullptr ? "+ " : "- ";
        return x != nullptr;
    }
    std::string description;

private:
    void quote(const char *bytes, std::size_t length) {
        description += testing::PrintToString(std::string(bytes, length)) + ' ';
    }
};

// ---- The fields of each record, generated or ours ----

static constexpr int kLong = 2000; // stands for "no limit"

// Characters that are 256 in place in our records.
template <class Characters>
struct ShortText {
    Characters &shortText;
};
template <class Characters>
static ShortText<Characters> brief(Characters &text) {
    return {text};
}

template <class V, class T>
static void walk(V &v, T &x);

// A chain, or what may be absent.
static void walkPointer(auto &v, auto &x) {
    if constexpr (requires { x->next; }) {
        for (auto *node = &x; v.present(*node); node = &(*node)->next)
            if constexpr (requires { x->_value; })
                walk(v, (*node)->_value);
            else
                walk(v, (*node)->value);
    } else if (v.present(x)) {
        walk(v, *x);
    }
}

// One row a record, which its first member tells from all others.
template <class V, class T>
static void walk(V &v, T &x) {
    const auto all = [&v](auto &&...fields) { (walk(v, fields), ...); };
    const auto oneOf = [&v](int &choice, auto &&...members) {
        v.choice(choice, sizeof...(members));
        int number = 0;
        ((++number == choice ? walk(v, members) : void()), ...);
    };
    const auto small = [&v](auto &...fields) { (v.small(fields), ...); };
    if constexpr (std::is_arithmetic_v<T>) {
        v.number(x);
    } else if constexpr (std::same_as<T, char *>) {
        v.text(x, kLong);
    } else if constexpr (requires { x.shortText; }) {
        v.text(x.shortText, 255);
    } else if constexpr (Either<T, xdr::GEN_string, GEN_string>) {
        v.octets(x, kLong);
    } else if constexpr (Either<T, xdr::GEN_octet255, GEN_octet255>) {
        v.octets(x, 255);
    } else if constexpr (std::is_pointer_v<T>) {
        walkPointer(v, x);
    } else if constexpr (requires { x.msdw; }) {
        all(x.msdw, x.lsdw);
    } else if constexpr (requires { x.year; }) {
        small(x.year, x.month, x.day, x.hour, x.minute, x.second, x.millisec, x.mindiff);
        all(x.utc);
    } else if constexpr (requires { x.codeSet; }) {
        all(x.octet_string, x.codeSet);
    } else if constexpr (Either<T, xdr::GEN_text, GEN_text>) {
        oneOf(x.choice, x.u.iso_646_irv, x.u.ccitt_t_61, x.u.iso_latin1, x.u.iso_ucs_2, x.u.otherCodeSet);
    } else if constexpr (Either<T, xdr::GEN_simpleName, GEN_simpleName>) {
        oneOf(x.choice, brief(x.u.iso_646_irv), brief(x.u.ccitt_t_61), x.u.iso_latin1, x.u.iso_ucs_2,
              x.u.otherCodeSet);
    } else if constexpr (requires { x.u.globalForm; }) {
        oneOf(x.choice, x.u.globalForm, x.u.localForm);
    } else if constexpr (requires { x.name_syntax_o; }) {
        all(x.name, x.name_syntax_o);
    } else if constexpr (requires { x.u.cardValue; }) {
        oneOf(x.choice, x.u.cardValue, x.u.namedValue);
    } else if constexpr (requires { x.format; }) {
        all(x.format, x.formatVariants_o, x.formatVersion_o);
    } else if constexpr (requires { x.u.simpleFontName; }) {
        oneOf(x.choice, x.u.simpleFontName, x.u.iso9541FontName);
    } else if constexpr (requires { x.docNumber_o; }) {
        all(x.docNumber_o, x.attribute);
    } else if constexpr (requires { x.u.identifier; }) {
        oneOf(x.choice, x.u.identifier);
    } else if constexpr (requires { x.identifier; }) {
        oneOf(x.choice, x.identifier);
    } else if constexpr (requires { x.spec; }) {
        all(x.finishingMessage_o, x.spec);
    } else if constexpr (requires { x.u.named; }) {
        if constexpr (requires { x.finishingMessage_o; })
            all(x.finishingMessage_o);
        oneOf(x.choice, x.u.named, x.u.finishingSpecList);
    } else if constexpr (requires { x.u.nominalPageNum; }) {
        oneOf(x.choice, x.u.nominalPageNum, x.u.alphanumericPageNum, x.u.pageTag);
    } else if constexpr (requires { x.beginningPage_o; }) {
        all(x.beginningPage_o, x.endingPage_o);
    } else if constexpr (requires { x.pageRange; }) {
        all(x.pageRange, x.mediumId);
    } else if constexpr (requires { x.u.mediumForAllPages; }) {
        oneOf(x.choice, x.u.mediumForAllPages, x.u.mediumForSelPages);
    } else if constexpr (requires { x.job_identifier; }) {
        all(brief(x.job_identifier), x.document_number_o);
    } else if constexpr (requires { x.u.objIdJob; }) {
        oneOf(x.choice, brief(x.u.objIdJob), x.u.objIdDocument, x.u.objIdOID, x.u.objIdDistName,
              x.u.objIdFont, x.u.objIdNameOrOid, x.u.objIdSimpleName);
    } else if constexpr (requires { x.printType; }) {
        all(x.printType, x.mediumSize, x.printedImpressions, x.consumedMediaSheets);
    } else if constexpr (Either<T, xdr::ODP_orPair, ODP_orPair>) {
        all(x.type, x.value);
    } else if constexpr (requires { x.attributes; }) {
        all(x.attributes);
    } else if constexpr (requires { x.u.mhsAddress; }) {
        oneOf(x.choice, x.u.mhsAddress, x.u.distinguishedName, x.u.text, x.u.dor, x.u.octetString,
              x.u.distNameString, x.u.rpcAddress);
    } else if constexpr (requires { x.character_set; }) {
        v.octets(x.language, 2);
        v.octets(x.country, 2);
        all(x.character_set);
        v.octets(x.modifier_o, 64);
    } else if constexpr (requires { x.ehpLocale_o; }) {
        all(x.ehpEventIdentifiers_o, x.ehpDeliveryMethod_o, x.ehpEventComment_o, x.ehpDeliveryAddr_o,
            x.ehpLocale_o);
    } else if constexpr (requires { x.jobCopies_d; }) {
        all(x.deliveryMethod_o, x.resultsSetComment_o, x.deliveryAddress_o, x.jobCopies_d, x.outputBin_o);
    } else {
        all(x.name, x.domain, x.nameType_d, x.privilegeLevel_d);
    }
}

// ---- The judgement ----

template <class Generated>
using XdrRoutine = bool_t (*)(XDR *, Generated *);

template <class Generated>
static std::string pack(XdrRoutine<Generated> routine, Generated &value) {
    static char packed[1 << 20];
    XDR xdrs;
    xdrmem_create(&xdrs, packed, sizeof packed, XDR_ENCODE);
    EXPECT_TRUE(routine(&xdrs, &value));
    return std::string(packed, xdr_getpos(&xdrs));
}

// Ours: the record, or the pointer to a chain's first element or to characters.
template <class Ours>
static void expectRead(AS_attrValType_t type, const std::string &packed, auto &value) {
    void *unpacked = nullptr;
    AS_attrValDesc_t description;
    ASSERT_EQ(ODP_UnpackAV(nullptr, static_cast<std::int32_t>(packed.size()), packed.data(), type, &unpacked,
                           &description),
              0);
    Describer expected, actual;
    walk(expected, value);
    if constexpr (std::is_pointer_v<Ours>) {
        auto ours = static_cast<Ours>(unpacked);
        walk(actual, ours);
    } else {
        walk(actual, *static_cast<Ours *>(unpacked));
    }
    EXPECT_EQ(actual.description, expected.description);
    description.deleteFunc(nullptr, unpacked, nullptr);
}

template <class Ours, class Generated>
static void judge(std::initializer_list<AS_attrValType_t> types, XdrRoutine<Generated> routine) {
    for (const AS_attrValType_t type : types) {
        std::mt19937 random(type);
        for (int i = 0; i < 300 && !testing::Test::HasFailure(); i++) {
            SCOPED_TRACE("value type " + std::to_string(type) + ", value " + std::to_string(i));
            Randomizer randomizer(random);
            Generated value = {};
            if constexpr (std::same_as<Ours, std::int16_t>)
                randomizer.small(value);
            else
                walk(randomizer, value);
            expectRead<Ours>(type, pack(routine, value), value);
        }
        int samples = 0;
        for (const ValueCase &sample : valueCases())
            if (sample.type == type) {
                SCOPED_TRACE("value type " + std::to_string(type) + ", " + sample.label);
                samples++;
                std::string bytes = sample.packed;
                Generated value = {};
                XDR xdrs;
                xdrmem_create(&xdrs, bytes.data(), static_cast<u_int>(bytes.size()), XDR_DECODE);
                ASSERT_TRUE(routine(&xdrs, &value));
                EXPECT_EQ(pack(routine, value), sample.packed);
                expectRead<Ours>(type, sample.packed, value);
                xdr_free(reinterpret_cast<xdrproc_t>(routine), &value);
            }
        EXPECT_GT(samples, 0) << "no sample of value type " << type;
    }
}

TEST(PackedValues, EveryTypeIsReadAsTheCLibraryPacksIt) {
    judge<GEN_boolean_t>({0}, xdr::xdr_GEN_boolean_t);
    judge<std::int32_t>({1, 12, 22}, xdr::xdr_GEN_integer_t);
    judge<GEN_deltaTime_t>({4}, xdr::xdr_GEN_deltaTime_t);
    judge<GEN_distNameString>({6}, xdr::xdr_GEN_distNameString);
    judge<GEN_eACL>({7}, xdr::xdr_GEN_eACL);
    judge<GEN_eventHandlingProfile>({8}, xdr::xdr_GEN_eventHandlingProfile);
    judge<GEN_fontReference>({9}, xdr::xdr_GEN_fontReference);
    judge<GEN_oid_t>({10}, xdr::xdr_GEN_oid_t);
    judge<GEN_ignoredAttribute>({11}, xdr::xdr_GEN_ignoredAttribute);
    judge<char *>({14}, xdr::xdr_GEN_characters);
    judge<GEN_text>({16, 28}, xdr::xdr_GEN_text);
    judge<GEN_nameOrOid>({18}, xdr::xdr_GEN_nameOrOid);
    judge<GEN_string>({20}, xdr::xdr_GEN_string);
    judge<double>({23, 62}, xdr::xdr_GEN_real_t);
    judge<std::int16_t>({26, 75}, xdr::xdr_GEN_short_t);
    judge<GEN_simpleName>({27}, xdr::xdr_GEN_simpleName);
    judge<GEN_cardinal64>({31}, xdr::xdr_GEN_cardinal64);
    judge<GEN_cardinalOrNoid>({34}, xdr::xdr_GEN_cardinalOrNoid);
    judge<GEN_deliveryAddress>({39}, xdr::xdr_GEN_deliveryAddress);
    judge<GEN_distNameStringSeq *>({42}, xdr::xdr_GEN_distNameStrings);
    judge<GEN_documentFormat>({43}, xdr::xdr_GEN_documentFormat);
    judge<GEN_edge_t>({44}, xdr::xdr_GEN_edge_t);
    judge<GEN_finishing>({46}, xdr::xdr_GEN_finishing);
    judge<GEN_generalizedTime>({48}, xdr::xdr_GEN_generalizedTime);
    judge<GEN_nameOrOidSeq *>({60}, xdr::xdr_GEN_nameOrOids);
    judge<GEN_mediaSelect>({67}, xdr::xdr_GEN_mediaSelect);
    judge<GEN_pageOrderType_t>({68}, xdr::xdr_GEN_pageOrderType_t);
    judge<GEN_pageSelectSeq *>({69}, xdr::xdr_GEN_pageSelects);
    judge<GEN_resultsProfile>({81}, xdr::xdr_GEN_resultsProfile);
    judge<GEN_mediaConsumedSeq *>({91}, xdr::xdr_GEN_mediaConsumedList);
    judge<GEN_setOfObjId *>({93}, xdr::xdr_GEN_objectIdents);
}
