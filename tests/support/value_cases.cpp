#include "tests/support/value_cases.h"

#include <limits>

using namespace samples;

static Bytes pack(const Bytes &packed) {
    return packed;
}

namespace {

struct Packed {
    template <class Value>
    Packed(const Value &value) : bytes(pack(value)) {}
    Bytes bytes;
};

struct Row {
    const char *label;
    Packed value;
    std::string text;
    std::int32_t code = 0;
};

// Rows that apply to each of the types.
struct TypeRows {
    std::vector<std::uint32_t> types;
    std::vector<Row> rows;
};

} // namespace

static std::vector<TypeRows> makeRows() {
    const NameOrOid a4 = oid(10), abc = oid(11), unknown = oid(99), noForm = {3, ""};
    const Text bad = {9, ""}, tuer = latin1Text("T\xFCr"), jo = ucs2Text(Bytes("\0J\0o", 4));
    const DistName dist = {jo, name(tuer)};
    const DeliveryAddress mail = mailAddress({{"C", "DE"}, {"S", "Reed"}}), noText = addressText(text("x"));
    const PageSelect threeToSeven = {page(3), page(7)};
    const std::string longText(1000, 'x');
    return {
        {{BOOLEAN}, {{"1", packInt(1), "true"}, {"0", packInt(0), "false"}, {"2", packInt(2), ""}}},
        {{INTEGER, INTEGER_12, INTEGER_22},
         {{"lowest", packInt(std::numeric_limits<std::int32_t>::min()), "-2147483648"}}},
        {{DELTA_TIME},
         {{"0", packUint(0), "0:00:00"},
          {"3661", packUint(3661), "1:01:01"},
          {"90000", packUint(90000), "25:00:00"},
          {"highest", packUint(0xFFFFFFFF), "1193046:28:15"}}},
        {{DIST_NAME},
         {{"name alone", DistName{tuer, {}}, "T\u00FCr"},
          {"local syntax", dist, "T\u00FCr:Jo"},
          {"stripped syntax", DistName{jo, abc}, "abc:Jo"},
          {"unknown syntax", DistName{jo, unknown}, ":Jo"},
          {"syntax in no form", DistName{jo, noForm}, ":Jo"},
          {"no name", DistName{bad, a4}, "", 3},
          {"long", DistName{text(longText), name(longText.substr(0, 255))},
           longText.substr(0, 255) + ":" + longText}}},
        {{ACCESS_ENTRY}, {{"entry", userEntry("reed", "OFFICE"), ""}}},
        {{EVENT_PROFILE},
         {{"nothing", EventProfile{}, "NULL NULL NULL NULL NULL "},
          {"all", EventProfile{{11, 99, 10}, 10, tuer, mail, Locale{"de", "DE", 10, "euro"}},
           "abc NULL a4 a4 T\u00FCr /C=DE/S=Reed/ de DE a4 euro "},
          {"all without a text", EventProfile{{99}, 99, bad, noText, Locale{.characterSet = 99}},
           "NULL NULL NULL NULL NULL NULL NULL "},
          {"empty texts",
           EventProfile{{12}, 13, text(""), addressOctets(""), Locale{"d", "", 13, Bytes("a\0b", 3)}},
           "2-3    d NULL  a "}}},
        {{FONT_REFERENCE},
         {{"simple", font(t61Text("Roman")), "Roman"},
          {"simple without a text", font(bad), ""},
          {"ISO 9541", isoFont("f"), "font reference not a simple name"}}},
        {{OBJECT_IDENTIFIER},
         {{"whole", packUint(10), "a4"},
          {"class 40", packUint(11), "abc"},
          {"class 10", packUint(12), "2-3"},
          {"ends in hyphen", packUint(13), ""},
          {"no hyphen", packUint(14), "12abc"},
          {"no digit", packUint(15), "abc-def"},
          {"other class", packUint(16), "7-staple"},
          {"unknown", packUint(99), "", 4}}},
        {{IGNORED_ATTRIBUTE},
         {{"name unstripped", IgnoredAttribute{2, attributeRef(11)}, "2 12-abc"},
          {"unknown", IgnoredAttribute{{}, attributeRef(99)}, "NULL "},
          {"other form", IgnoredAttribute{0xFFFFFFFF, {2, ""}}, "-1 "}}},
        {{STRING}, {{"some", packString("alpha.1"), "alpha.1"}, {"long", packString(longText), longText}}},
        {{TEXT, TEXT_28},
         {{"UTF-8", text("a\xC3\xBC"), "a\u00FC"},
          {"T.61", t61Text("M\xC8uller"), "M\u00FCller"},
          {"Latin-1", tuer, "T\u00FCr"},
          {"UCS-2", jo, "Jo"},
          {"empty", text(""), ""},
          {"windows-1252", codedText("\x80", 2252), "\u20AC"},
          {"long", latin1Text(longText), longText},
          {"choice 9", bad, "", 3}}},
        {{NAME_OR_OID},
         {{"OID", abc, "abc"},
          {"name", name(tuer), "T\u00FCr"},
          {"unknown", unknown, ""},
          {"choice 3", noForm, ""},
          {"no text", name(bad), ""}}},
        {{OCTETS}, {{"some", packString("oct"), "oct"}, {"NUL", packString(Bytes("a\0b", 3)), "a"}}},
        {{REAL, REAL_62},
         {{"1.5", packDouble(1.5), "1.500000"},
          {"-0", packDouble(-0.0), "-0.000000"},
          {"1e22", packDouble(1e22), "10000000000000000000000.000000"},
          {"not a number", packDouble(std::numeric_limits<double>::quiet_NaN()), "nan"},
          {"infinite", packDouble(-std::numeric_limits<double>::infinity()), "-inf"}}},
        {{SHORT_26, SHORT_75}, {{"-2", packInt(-2), "-2"}, {"lowest", packInt(-32768), "-32768"}}},
        {{SIMPLE_NAME},
         {{"coded", codedText("T\xC3\xBCr", 106), "T\u00FCr"}, {"choice 6", Text{6, ""}, "", 3}}},
        {{CARDINAL_64},
         {{"high word", packCardinal64(0x100000002), "4294967298"},
          {"highest", packCardinal64(~std::uint64_t{0}), "18446744073709551615"}}},
        {{CARDINAL_OR_NAME},
         {{"number", cardinal(5), "5"},
          {"above 2^31", cardinal(0xFFFFFFFF), "-1"},
          {"name", cardinal(a4), "a4"},
          {"unknown", cardinal(unknown), ""},
          {"choice 3", CardinalOrName{3, ""}, ""}}},
        {{DELIVERY_ADDRESS},
         {{"O/R address", mail, "/C=DE/S=Reed/"},
          {"empty O/R address", mailAddress({}), ""},
          {"mail", mailAddress({{"C", "DE"}, {"DDA:RFC-822", "reed(a)example.com"}}), "reed@example.com"},
          {"octets", addressOctets("room 4"), "room 4"},
          {"text", noText, ""},
          {"name", addressDistName(dist), ""},
          {"choice 8", DeliveryAddress{8, ""}, ""},
          {"unread 4", addressUnread(4, "bytes"), ""}}},
        {{DIST_NAMES},
         {{"one", DistNames{DistName{jo, a4}}, "a4:Jo"},
          {"absent", DistNames{std::nullopt}, ""},
          {"three", DistNames{dist, std::nullopt, DistName{text(longText), unknown}},
           "T\u00FCr:Jo||:" + longText},
          {"none", DistNames{}, ""},
          {"the second fails", DistNames{dist, DistName{bad, {}}, dist}, "", 3}}},
        {{DOCUMENT_FORMAT},
         {{"all", DocumentFormat{11, text("v"), text("2")}, "abc"},
          {"unknown", DocumentFormat{99}, " "},
          {"empty name", DocumentFormat{13}, ""}}},
        {{EDGE},
         {{"0", packInt(0), "bottom-edge"},
          {"1", packInt(1), "right-edge"},
          {"2", packInt(2), "top-edge"},
          {"3", packInt(3), "left-edge"},
          {"-1", packInt(-1), "Invalid-Edge-Choice"}}},
        {{FINISHING},
         {{"both", Finishing{tuer, finishing(abc)}, "T\u00FCr abc"},
          {"name", Finishing{{}, finishing(a4)}, "a4"},
          {"message", Finishing{tuer, finishingSpecs("s")}, "T\u00FCr "},
          {"list", Finishing{{}, finishingSpecs("")}, ""},
          {"no text", Finishing{bad, finishing(a4)}, "a4"},
          {"unknown", Finishing{text(""), finishing(unknown)}, " "},
          {"choice 3", Finishing{{}, {3, ""}}, ""}}},
        {{TIME},
         {{"time", Time{1999, 12, 31, 23, 59, 59, 7, 0, 0}, "12/31/1999 23:59:59"},
          {"offset", Time{2024, 1, 1, 0, 30, 0, 0, -60, 0}, "12/31/2023 23:30:00"},
          {"year from 1900", Time{99, 12, 31, 12, 0, 0, 0, 0, 1}, "12/31/1999 12:00:00"},
          {"none", Time{1969, 12, 31, 23, 59, 59, 0, 0, 0}, "", 28}}},
        {{NAME_OR_OIDS},
         {{"three", std::vector{a4, name(tuer), noForm}, "a4 T\u00FCr "},
          {"unknown", std::vector{unknown, a4}, " a4"}}},
        {{MEDIA_SELECT},
         {{"all pages", mediumForAllPages(abc), "abc"},
          {"unknown", mediumForAllPages(unknown), ""},
          {"one", mediumForPages({{{page(1), page(2)}, a4}}), "a4 1 2"},
          {"none", mediumForPages({}), ""},
          {"two", mediumForPages({{{{}, pageNamed(text("iv"))}, a4}, {threeToSeven, unknown}}),
           "a4 <not specified> iv  3 7"},
          {"choice 3", MediaSelect{3, ""}, ""}}},
        {{PAGE_ORDER},
         {{"1", packInt(1), "error type"},
          {"2", packInt(2), "unknown"},
          {"3", packInt(3), "first-to-last"},
          {"4", packInt(4), "last-to-first"}}},
        {{PAGE_SELECTS},
         {{"absent", std::vector{PageSelect{}, threeToSeven}, "<not specified>:<not specified> 3:7"},
          {"tag", std::vector{PageSelect{pageTagged(abc), PageIdent{9, ""}}}, "abc:Bad ID:9"},
          {"no text", std::vector{PageSelect{pageNamed(bad), pageTagged(unknown)}}, ":"}}},
        {{RESULTS_PROFILE},
         {{"nothing", ResultsProfile{}, "NULL NULL  NULL 1 NULL"},
          {"all", ResultsProfile{11, tuer, addressOctets("room 4"), 3, name("bin")},
           "abc T\u00FCr room 4 3 bin"},
          {"no texts", ResultsProfile{99, bad, noText, 0xFFFFFFFF, unknown}, " NULL  NULL -1 "},
          {"empty texts", ResultsProfile{13, text(""), addressOctets(""), 0, name("")}, "   0 "}}},
        {{MEDIA_CONSUMED},
         {{"unknown", std::vector{MediaConsumed{unknown, objectOid(99), 2, 1}}, "::2:1"},
          {"two",
           std::vector{MediaConsumed{a4, objectName(tuer), 2, 1},
                       {abc, objectDocument("job", 7), 0xFFFFFFFF, 0}},
           "a4:T\u00FCr:2:1 abc:job:7:-1:0"}}},
        {{OBJECT_IDENTS},
         {{"each",
           ObjectIdents{objectJob("job"), objectDocument("job", {}), objectDocument("job", 7), std::nullopt,
                        objectOid(11), objectDistName(dist), objectFont(font(tuer)), objectNameOrOid(a4),
                        objectName(tuer), ObjectIdent{8, ""}},
           "job job job:7 NULL abc Jo  a4 T\u00FCr unknown object identification choice"},
          {"no texts",
           ObjectIdents{objectOid(99), objectDistName({bad, a4}), objectNameOrOid(noForm), objectName(bad)},
           "   "}}},
    };
}

static std::vector<ValueCase> makeCases() {
    std::vector<ValueCase> cases;
    for (const auto &[types, rows] : makeRows())
        for (const std::uint32_t type : types)
            for (const auto &[label, value, text, code] : rows)
                cases.push_back({label, type, value.bytes, text, code});
    return cases;
}

const std::vector<ValueCase> &valueCases() {
    static const std::vector<ValueCase> cases = makeCases();
    return cases;
}
