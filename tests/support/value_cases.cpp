#include "tests/support/value_cases.h"

#include <limits>

using namespace samples;

static Bytes pack(const Bytes &packed) {
    return packed;
}

static std::vector<ValueCase> makeCases() {
    const NameOrOid a4 = oid(10), abc = oid(11), unknown = oid(99), noForm = {3, ""};
    const Text bad = {9, ""}, tuer = latin1Text("T\xFCr"), jo = ucs2Text(Bytes("\0J\0o", 4));
    const DistName dist = {jo, name(tuer)};
    const DeliveryAddress mail = mailAddress({{"C", "DE"}, {"S", "Reed"}}), untold = addressText(text("x"));
    const PageSelect threeToSeven = {page(3), page(7)};
    const std::string longText(1000, 'x');
    std::vector<ValueCase> cases;
    std::uint32_t type = 0;
    const auto add = [&](const char *label, const auto &value, std::string expected, std::int32_t code = 0) {
        cases.push_back({label, type, pack(value), std::move(expected), code});
    };

    type = BOOLEAN;
    add("1", packInt(1), "true"), add("0", packInt(0), "false"), add("2", packInt(2), "");
    for (const std::uint32_t integer : {INTEGER, INTEGER_12, INTEGER_22}) {
        type = integer;
        add("lowest", packInt(std::numeric_limits<std::int32_t>::min()), "-2147483648");
    }
    type = DELTA_TIME;
    add("0", packUint(0), "0:00:00"), add("59", packUint(59), "0:00:59"),
        add("3599", packUint(3599), "0:59:59");
    add("3600", packUint(3600), "1:00:00"), add("3661", packUint(3661), "1:01:01");
    add("90000", packUint(90000), "25:00:00"), add("highest", packUint(0xFFFFFFFF), "1193046:28:15");
    type = DIST_NAME;
    add("name alone", DistName{tuer, {}}, "T\u00FCr"), add("local syntax", dist, "T\u00FCr:Jo");
    add("stripped syntax", DistName{jo, abc}, "abc:Jo"), add("unknown syntax", DistName{jo, unknown}, ":Jo");
    add("syntax in no form", DistName{jo, noForm}, ":Jo"), add("no name", DistName{bad, a4}, "", 3);
    add("long", DistName{text(longText), name(longText.substr(0, 255))},
        longText.substr(0, 255) + ":" + longText);
    type = ACCESS_ENTRY;
    add("entry", userEntry("reed", "OFFICE"), "");
    type = EVENT_PROFILE;
    add("nothing", EventProfile{}, "NULL NULL NULL NULL NULL ");
    add("all", EventProfile{{11, 99, 10}, 10, tuer, mail, Locale{"de", "DE", 10, "euro"}},
        "abc NULL a4 a4 T\u00FCr /C=DE/S=Reed/ de DE a4 euro ");
    add("all without a text", EventProfile{{99}, 99, bad, untold, Locale{.characterSet = 99}},
        "NULL NULL NULL NULL NULL NULL NULL ");
    add("empty texts",
        EventProfile{{12}, 13, text(""), addressOctets(""), Locale{"d", "", 13, Bytes("a\0b", 3)}},
        "2-3    d NULL  a ");
    type = FONT_REFERENCE;
    add("simple", font(t61Text("Roman")), "Roman"), add("simple without a text", font(bad), "");
    add("ISO 9541", isoFont("f"), "font reference not a simple name");
    add("no form", FontReference{0, ""}, "font reference not a simple name");
    type = OBJECT_IDENTIFIER;
    add("whole", packUint(10), "a4"), add("class 40", packUint(11), "abc"),
        add("class 10", packUint(12), "2-3");
    add("ends in hyphen", packUint(13), ""), add("no hyphen", packUint(14), "12abc");
    add("no digit", packUint(15), "abc-def"), add("other class", packUint(16), "7-staple");
    add("unknown", packUint(99), "", 4), add("0", packUint(0), "", 4);
    type = IGNORED_ATTRIBUTE;
    add("name unstripped", IgnoredAttribute{2, attributeRef(11)}, "2 12-abc");
    add("unknown", IgnoredAttribute{{}, attributeRef(99)}, "NULL ");
    add("other form", IgnoredAttribute{0xFFFFFFFF, {2, ""}}, "-1 ");
    type = STRING;
    add("some", packString("alpha.1"), "alpha.1"), add("long", packString(longText), longText);
    for (const std::uint32_t text28 : {TEXT, TEXT_28}) {
        type = text28;
        add("as it is", text("a\xC3\xBC"), "a\u00FC"), add("T.61", t61Text("M\xC8uller"), "M\u00FCller");
        add("Latin-1", tuer, "T\u00FCr"), add("UCS-2", jo, "Jo"), add("empty", text(""), "");
        add("windows-1252", codedText("\x80", 2252), "\u20AC"), add("long", latin1Text(longText), longText);
        add("choice 9", bad, "", 3), add("choice 0", Text{}, "", 3);
    }
    type = NAME_OR_OID;
    add("OID", abc, "abc"), add("name", name(tuer), "T\u00FCr"), add("unknown", unknown, "");
    add("choice 3", noForm, ""), add("choice 0", NameOrOid{}, ""), add("no text", name(bad), "");
    type = OCTETS;
    add("some", packString("oct"), "oct"), add("none", packString(""), ""),
        add("long", packString(longText), longText);
    add("NUL", packString(Bytes("a\0b", 3)), "a");
    for (const std::uint32_t real : {REAL, REAL_62}) {
        type = real;
        add("1.5", packDouble(1.5), "1.500000"), add("-0", packDouble(-0.0), "-0.000000");
        add("1e22", packDouble(1e22), "10000000000000000000000.000000");
        add("infinite", packDouble(-std::numeric_limits<double>::infinity()), "-inf");
    }
    for (const std::uint32_t small : {SHORT_26, SHORT_75}) {
        type = small;
        add("-2", packInt(-2), "-2"), add("lowest", packInt(-32768), "-32768");
    }
    type = SIMPLE_NAME;
    add("coded", codedText("T\xC3\xBCr", 106), "T\u00FCr"), add("choice 6", Text{6, ""}, "", 3);
    add("full", text(longText.substr(0, 255)), longText.substr(0, 255));
    type = CARDINAL_64;
    add("high word", packCardinal64(0x100000002), "4294967298");
    add("highest", packCardinal64(~std::uint64_t{0}), "18446744073709551615");
    type = CARDINAL_OR_NAME;
    add("number", cardinal(5), "5"), add("above 2^31", cardinal(0xFFFFFFFF), "-1");
    add("name", cardinal(a4), "a4"), add("unknown", cardinal(unknown), "");
    add("choice 3", CardinalOrName{3, ""}, "");
    type = DELIVERY_ADDRESS;
    add("O/R address", mail, "/C=DE/S=Reed/"), add("empty O/R address", mailAddress({}), "");
    add("mail", mailAddress({{"C", "DE"}, {"DDA:RFC-822", "reed(a)example.com"}}), "reed@example.com");
    add("octets", addressOctets("room 4"), "room 4"), add("text", untold, "");
    add("name", addressDistName(dist), ""), add("choice 8", DeliveryAddress{8, ""}, "");
    for (const int choice : {2, 4, 7})
        add("unread", addressUnread(choice, "bytes"), "");
    type = DIST_NAMES;
    add("one", DistNames{DistName{jo, a4}}, "a4:Jo"), add("absent", DistNames{std::nullopt}, "");
    add("three", DistNames{dist, std::nullopt, DistName{text(longText), unknown}},
        "T\u00FCr:Jo||:" + longText);
    add("none", DistNames{}, ""), add("the second fails", DistNames{dist, DistName{bad, {}}, dist}, "", 3);
    type = DOCUMENT_FORMAT;
    add("all", DocumentFormat{11, text("v"), text("2")}, "abc"), add("unknown", DocumentFormat{99}, " ");
    add("empty name", DocumentFormat{13}, "");
    type = EDGE;
    add("0", packInt(0), "bottom-edge"), add("1", packInt(1), "right-edge"), add("2", packInt(2), "top-edge");
    add("3", packInt(3), "left-edge"), add("4", packInt(4), "Invalid-Edge-Choice");
    add("-1", packInt(-1), "Invalid-Edge-Choice");
    type = FINISHING;
    add("both", Finishing{tuer, finishing(abc)}, "T\u00FCr abc"),
        add("name", Finishing{{}, finishing(a4)}, "a4");
    add("message", Finishing{tuer, finishingSpecs("s")}, "T\u00FCr "),
        add("list", Finishing{{}, finishingSpecs("")}, "");
    add("no text", Finishing{bad, finishing(a4)}, "a4"),
        add("unknown", Finishing{text(""), finishing(unknown)}, " ");
    add("choice 3", Finishing{{}, {3, ""}}, "");
    type = TIME;
    add("time", Time{1999, 12, 31, 23, 59, 59, 7, 0, 0}, "12/31/1999 23:59:59");
    add("none", Time{1969, 12, 31, 23, 59, 59, 0, 0, 0}, "", 28);
    type = NAME_OR_OIDS;
    add("three", std::vector{a4, name(tuer), noForm}, "a4 T\u00FCr "),
        add("unknown", std::vector{unknown, a4}, " a4");
    type = MEDIA_SELECT;
    add("all pages", mediumForAllPages(abc), "abc"), add("unknown", mediumForAllPages(unknown), "");
    add("one", mediumForPages({{{page(1), page(2)}, a4}}), "a4 1 2"), add("none", mediumForPages({}), "");
    add("two", mediumForPages({{{{}, pageNamed(text("iv"))}, a4}, {threeToSeven, unknown}}),
        "a4 <not specified> iv  3 7");
    add("choice 3", MediaSelect{3, ""}, "");
    type = PAGE_ORDER;
    add("1", packInt(1), "error type"), add("2", packInt(2), "unknown"),
        add("3", packInt(3), "first-to-last");
    add("4", packInt(4), "last-to-first"), add("5", packInt(5), "error type");
    type = PAGE_SELECTS;
    add("absent", std::vector{PageSelect{}, threeToSeven}, "<not specified>:<not specified> 3:7");
    add("tag", std::vector{PageSelect{pageTagged(abc), PageIdent{9, ""}}}, "abc:Bad ID:9");
    add("no text", std::vector{PageSelect{pageNamed(bad), pageTagged(unknown)}}, ":");
    std::string thousand = "3:7";
    for (int i = 1; i < 1000; i++)
        thousand += " 3:7";
    add("a thousand", std::vector(1000, threeToSeven), thousand);
    type = RESULTS_PROFILE;
    add("nothing", ResultsProfile{}, "NULL NULL  NULL 1 NULL");
    add("all", ResultsProfile{11, tuer, addressOctets("room 4"), 3, name("bin")},
        "abc T\u00FCr room 4 3 bin");
    add("no texts", ResultsProfile{99, bad, untold, 0xFFFFFFFF, unknown}, " NULL  NULL -1 ");
    add("empty texts", ResultsProfile{13, text(""), addressOctets(""), 0, name("")}, "   0 ");
    type = MEDIA_CONSUMED;
    add("unknown", std::vector{MediaConsumed{unknown, objectOid(99), 2, 1}}, "::2:1");
    add("two",
        std::vector{MediaConsumed{a4, objectName(tuer), 2, 1},
                    {abc, objectDocument("job", 7), 0xFFFFFFFF, 0}},
        "a4:T\u00FCr:2:1 abc:job:7:-1:0");
    type = OBJECT_IDENTS;
    add("each",
        ObjectIdents{objectJob("job"), objectDocument("job", {}), objectDocument("job", 7), std::nullopt,
                     objectOid(11), objectDistName(dist), objectFont(font(tuer)), objectNameOrOid(a4),
                     objectName(tuer), ObjectIdent{8, ""}},
        "job job job:7 NULL abc Jo  a4 T\u00FCr unknown object identification choice");
    add("no texts",
        ObjectIdents{objectOid(99), objectDistName({bad, a4}), objectNameOrOid(noForm), objectName(bad)},
        "   ");
    return cases;
}

const std::vector<ValueCase> &valueCases() {
    static const std::vector<ValueCase> cases = makeCases();
    return cases;
}
