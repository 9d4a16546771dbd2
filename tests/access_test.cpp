// Which users an access list admits.  System calls are scripted.
#include <cstring>

#include <gmock/gmock.h>

#include "ala/access/domain.h"
#include "ala/access/entry.h"
#include "platform/byte_order.h"
#include "tests/support/facility.h"

using namespace qvledger;

using namespace samples;
using testing::ElementsAre;

// Opens logs with one access list entry.  The machine and its default domain are both named MACHINE.
class Access : public Facility {
protected:
    Access() {
        TOnceGetDomainName();
        registerAgain();
    }

    ALA_retCode_t open(const AccessEntry &entry) {
        return Facility::open(Log({.accessList = {pack(entry)}}));
    }

    bool machineHasName = true;
    const Scripted<decltype(::GetComputerNameA)> machine{script::GetComputerNameA,
                                                         [this](char *name, DWORD *size) {
                                                             *size = 7;
                                                             std::strcpy(name, "MACHINE");
                                                             return machineHasName ? 1 : 0;
                                                         }};
};

constexpr ALA_retCode_t kAdmitted = ALA_N_NORMAL;
constexpr ALA_retCode_t kRefused = ALA_A_NO_ACCESS_RIGHT_TO_LOG_FILE;

TEST_F(Access, EntryAdmitsByKindPrivilegeNameAndDomain) {
    const std::optional<NameOrOid> nt = oid(DOMAIN_NT), any = oid(DOMAIN_ANY);
    const Text none = {9, ""};
    const struct {
        const char *label;
        AccessEntry entry;
        ALA_retCode_t code;
        const char *user = "alice";
        const char *domain = "CORP";
        const char *line = nullptr;
    } cases[] = {
        {"privilege 1", {text("alice"), {text("CORP"), nt}, 1, 1}, kRefused},
        {"privilege 3", {text("alice"), {text("CORP"), nt}, 1, 3}, kAdmitted},
        {"privilege 0", {text("alice"), {text("CORP"), nt}, 1, 0}, ALA_A_ODPUNPACK_ERROR},
        {"case of name and domain", {text("ALICE"), {text("corp"), nt}, 1}, kAdmitted},
        {"host's name as domain", {text("alice"), {text("MACHINE"), nt}, 1}, kRefused},
        {"name in Latin-1", {latin1Text("\xC4nne"), {text("CORP"), nt}, 1}, kAdmitted, "\xC3\x84nne"},
        {"name type 3", {text("alice"), {text("CORP"), nt}, 3}, kRefused},
        {"any user, no name", {none, {text("CORP"), nt}, 0}, kAdmitted},
        {"any user of another domain", {text("alice"), {text("OTHER"), nt}, 0}, kRefused},
        {"a user, no name", {none, {text("CORP"), nt}, 1}, kRefused, "alice", "CORP", "Invalid ACL: 0"},
        {"any domain, with a text", {text("alice"), {text("CORP"), any}, 1}, kRefused},
        {"no type: the machine's domain", {text("alice"), {text("CORP"), std::nullopt}, 1}, kAdmitted},
        {"domain type by name", {text("alice"), {text("CORP"), samples::name("nt")}, 1}, kRefused},
        {"no text: the machine's domain", {text("alice"), {text(""), nt}, 1}, kAdmitted, "alice", "machine"},
        {"no text, caller in another domain", {text("alice"), {text(""), nt}, 1}, kRefused},
        {"caller without a domain", {text("alice"), {text("machine"), nt}, 1}, kAdmitted, "alice", ""},
        {"unreadable domain", {text("alice"), {none, nt}, 0}, kRefused, "alice", "machine"},
    };
    // The end of another registration must not change the machine's domain.
    ALA_handle_t second = nullptr;
    ASSERT_EQ(ALA_Register("beta", "/", root.oids().c_str(), &second), ALA_N_NORMAL);
    EXPECT_EQ(ALA_Unregister(&second), ALA_N_NORMAL);
    for (const auto &c : cases) {
        SCOPED_TRACE(c.label);
        const ScriptedUser caller(c.user, c.domain);
        takeLog();
        EXPECT_EQ(open(c.entry), c.code);
        if (c.line != nullptr) {
            EXPECT_EQ(takeLog().front(), std::string("ALA__MSACLMatch: ") + c.line);
        }
    }
}

TEST_F(Access, DottedDomainsMatchBySuffixAndOthersWhole) {
    constexpr SEC_domType_t dns = SEC_DOM_DOTTED1, nis = SEC_DOM_DOTTED2, nt = SEC_DOM_NT, any = SEC_DOM_ANY;
    const struct {
        const char *user;
        SEC_domType_t userType;
        const char *host;
        SEC_domType_t hostType;
        const char *entry;
        SEC_domType_t entryType; // 0: no type
        const char *trace;       // number of the matching rule in the log entry, such as "#1"; null: no match
    } cases[] = {
        {"b.c", dns, "x", dns, "b.c", dns, "#1"},
        {"A.B.C.", dns, "x", dns, "b.c", dns, "#1"},
        {"a.b.c", dns, "x", dns, "B.c.", dns, "#1"},
        {"xb.c", dns, "x", dns, "b.c", dns, nullptr},
        {"c", dns, "x", dns, "b.c", dns, nullptr},
        {"a.b.c", dns, "x", dns, "b.c", any, "#1"},
        {"a.b.c", nis, "x", nis, "b.c", nis, "#1"},
        {"x", nt, "a.b.c", dns, "b.c", dns, "#1"},
        {"x", nt, "y", dns, "", dns, "#2"},
        {"x", any, "x", any, "", any, "#0"},
        {"a.b", SEC_DOM_FLAT, "x", nt, "b", dns, nullptr},
        {"a.b", SEC_DOM_FLAT, "x", nt, "A.B", SEC_DOM_FLAT, "#4"},
        {nullptr, nt, "x", nt, "machine", nt, "#4"},
        {"x", nt, nullptr, 0, "machine", 0, "#4"},
    };
    setLogLevel("6");
    for (const auto &c : cases) {
        ALA_credential_t caller = {};
        const auto copy = [](const char *text) { return const_cast<char *>(text); };
        caller.u.oncMsCred = {copy("alice"), copy(c.user), toNetworkOrder(c.userType),
                              copy("h"),     copy(c.host), toNetworkOrder(c.hostType),
                              nullptr};
        GEN_nameOrOid type = {GEN_GLOBAL_FORM, {c.entryType}};
        GEN_distNameString entry = {{GEN_ISO_646_IRV, {copy(c.entry)}}, c.entryType != 0 ? &type : nullptr};
        std::int32_t matched = 1;
        takeLog('6');
        const StatusList status;
        EXPECT_EQ(_ALA_EACL_DomainMatch(status, &caller, &entry, &matched), 0);
        const std::vector<std::string> lines = takeLog('6');
        SCOPED_TRACE((c.user != nullptr ? c.user : "(null)") + std::string(" in ") + c.entry);
        EXPECT_EQ(matched == 0, c.trace != nullptr);
        EXPECT_EQ(lines.size(), matched == 0 ? 1U : 0U);
        if (c.trace != nullptr && !lines.empty()) {
            EXPECT_THAT(lines[0], testing::HasSubstr(std::string("matched ") + c.trace));
        }
    }
}

TEST_F(Access, GroupEntryAdmitsMembers) {
    const struct {
        const char *name, *domain;
        SID_NAME_USE use;
        bool known = true;
        DWORD attributes = 0;
    } groups[] = {{"gone", "CORP", SidTypeGroup, false},
                  {"Staff", "CORP", SidTypeGroup},
                  {"print", "BUILTIN", SidTypeAlias},
                  {"world", "CORP", SidTypeWellKnownGroup},
                  {"nowhere", "", SidTypeGroup},
                  {"\xC4rzte", "CORP", SidTypeGroup},
                  {"admins", "CORP", SidTypeGroup, true, SE_GROUP_USE_FOR_DENY_ONLY}};
    const ScriptedUser caller("alice", "CORP");
    const auto nameOf = [&](auto, PSID sid, char *name, auto nameSize, char *domain, auto size, auto use) {
        const auto &group = groups[reinterpret_cast<std::uintptr_t>(sid) - 1];
        EXPECT_TRUE(*nameSize == 512 && *size == 512) << group.name;
        std::strcpy(name, group.name);
        std::strcpy(domain, group.domain);
        *use = group.use;
        return group.known ? 1 : 0;
    };
    bool fits = true;
    int lists = 0;
    const auto listOf = [&](auto, auto, void *info, DWORD length, auto) {
        EXPECT_EQ(length, 512U);
        lists++;
        auto *list = static_cast<TOKEN_GROUPS *>(info);
        list->GroupCount = std::size(groups);
        for (std::uintptr_t i = 0; i < std::size(groups); i++)
            list->Groups[i] = {reinterpret_cast<PSID>(i + 1), groups[i].attributes};
        return fits ? 1 : 0;
    };
    const Scripted account(script::LookupAccountSidA, nameOf);
    const Scripted token(script::GetTokenInformation, listOf);
    const struct {
        Text name;
        const char *domain;
        ALA_retCode_t code;
    } cases[] = {
        {text("staff"), "corp", kAdmitted},   {text("staff"), "OTHER", kRefused},
        {text("sta"), "CORP", kRefused},      {text("print"), "MACHINE", kAdmitted},
        {text("print"), "BUILTIN", kRefused}, {text("world"), "CORP", kRefused},
        {text("gone"), "CORP", kRefused},     {latin1Text("\xC4RZTE"), "CORP", kAdmitted},
        {text("nowhere"), "", kRefused},      {text(""), "CORP", kRefused},
        {text("admins"), "CORP", kRefused},
    };
    for (const bool whole : {true, false})
        for (const auto &c : cases) {
            fits = whole;
            const AccessEntry entry = {c.name, {text(c.domain), oid(DOMAIN_NT)}, 2};
            EXPECT_EQ(open(entry), whole ? c.code : kRefused) << c.name.member << " of " << c.domain;
        }
    lists = 0;
    EXPECT_TRUE(open(userEntry("alice", "CORP")) == kAdmitted && lists == 0) << "no look-up";
    fits = true;
    const Bytes staff = pack(groupEntry("staff", "corp")), others = pack(groupEntry("others", "corp"));
    EXPECT_EQ(Facility::open(Log({.accessList = {others, staff}})), kAdmitted);
    EXPECT_EQ(lists, 1) << "groups are looked up once per access list";
    const Scripted process(script::OpenProcessToken, [](HANDLE, DWORD, HANDLE *) { return 0; });
    EXPECT_EQ(open(groupEntry("staff", "corp")), kRefused) << "no process token";
}

TEST_F(Access, CredentialNeedsASizeQueryAndThenALookUp) {
    const struct {
        const char *label;
        std::size_t user, domain; // lengths of the names
        DWORD sid, error;         // bytes of the SID; error of the first look-up, 0 for success
        bool second;              // the second look-up succeeds
        ALA_retCode_t code;
    } cases[] = {
        {"longest names", 255, 1023, 28, 122, true, kAdmitted},
        {"user too long", 256, 4, 28, 122, true, ALA_A_SYSTEM_ERR},
        {"domain too long", 5, 1024, 28, 122, true, ALA_A_SYSTEM_ERR},
        {"large SID", 5, 4, 4096, 122, true, kAdmitted},
        {"first look-up fails otherwise", 5, 4, 28, 1332, true, ALA_A_SYSTEM_ERR},
        {"first look-up succeeds", 5, 4, 28, 0, true, ALA_A_SYSTEM_ERR},
        {"second look-up fails", 5, 4, 28, 122, false, ALA_A_SYSTEM_ERR},
    };
    for (const auto &c : cases) {
        const ScriptedUser caller(std::string(c.user, 'u').c_str(), "");
        bool first = true;
        const auto lookUp = [&](auto, auto, PSID sid, auto sidSize, char *domain, auto domainSize, auto) {
            if (std::exchange(first, false)) {
                EXPECT_TRUE(*sidSize == 512 && *domainSize == 0) << c.label;
                *sidSize = c.sid;
                *domainSize = static_cast<DWORD>(c.domain) + 1;
                SetLastError(c.error);
                return c.error == 0 ? 1 : 0;
            }
            std::memset(sid, 1, c.sid); // overruns the block if it was not enlarged
            std::memset(domain, 'd', c.domain);
            return c.second ? 1 : 0;
        };
        const Scripted account(script::LookupAccountNameA, lookUp);
        EXPECT_EQ(open(userEntry(std::string(c.user, 'u'), std::string(c.domain, 'd'))), c.code) << c.label;
    }
}

TEST_F(Access, OlderPlatformUsesTheComputerNameAsDomain) {
    const Scripted version(script::GetVersionExA, [](OSVERSIONINFOA *out) {
        out->dwPlatformId = VER_PLATFORM_WIN32_WINDOWS;
        return 1;
    });
    const ScriptedUser caller("alice", "CORP");
    EXPECT_EQ(open(userEntry("alice", "machine", SEC_DOM_W95HOST)), kAdmitted);
    EXPECT_EQ(open(userEntry("alice", "machine", SEC_DOM_NT)), kRefused);
    TOnceGetDomainName();
    EXPECT_STREQ(ALA__GetHostDomain(nullptr), "") << "looked up on the newer platform only";
}

TEST_F(Access, MachineDomainIsTheLanGroupIfTheNetworkLogonRuns) {
    const std::string key = "REGEDIT4\n[HKEY_LOCAL_MACHINE\\System\\CurrentControlSet\\";
    const std::string logon = key + "Enum\\Root\\LEGACY_NETLOGON\\0000]\n\"StatusFlags\"=";
    const std::string runs = logon + "dword:8\n", cut = key.substr(0, 20);
    const auto group = [&](const std::string &name) {
        return runs + key.substr(9) + "Services\\LanmanWorkstation\\Parameters]\n\"LanGroup\"=\"" + name +
               "\"";
    };
    const char *const noInfo = "SEC_GetDefaultDomain: NetWkstaGetInfo failed";
    const char *const unread =
        "TOnceGetDomainName: the registry cannot be read, error 1015; the machine has no domain";
    const struct {
        const char *label;
        std::string registry, domain;
        const char *line = "", *lacks = ""; // last log entry if there is no domain; what is missing
        bool lent = false;
    } cases[] = {
        {"group", group("L\xC3\xBCneburg"), "L\u00FCneburg"},
        {"longest", group(std::string(1024, 'x')), std::string(1024, 'x')},
        {"invalid UTF-8", group("B\xFF\xC3\xF0\x9F\x98\x80"), "B\xFF\xC3\xF0\x9F\x98\x80"},
        {"too long", group(std::string(1025, 'x')), ""},
        {"no library", group("LAN"), "", "", "netapi32.dll"},
        {"no NetWkstaGetInfo", group("LAN"), "", "", "NetWkstaGetInfo"},
        {"no NetApiBufferFree", group("LAN"), "", "", "NetApiBufferFree"},
        {"no group", runs, "", noInfo},
        {"group is a number", group("").substr(0, group("").size() - 2) + "dword:1", "", noInfo},
        {"no network logon", "REGEDIT4\n", "MACHINE"},
        {"no flags", key + "Enum\\Root\\LEGACY_NETLOGON\\0000]\n", "MACHINE", "", "", true},
        {"other flags", logon + "dword:9\n", "MACHINE", "", "", true},
        {"short flags", logon + "hex:08\n", "MACHINE"},
        {"no computer name", "REGEDIT4\n", "", "TOnceGetDomainName: GetComputerName failed", "name"},
        {"damaged registry", cut, "MACHINE"},
        {"damaged registry, lent rights", cut, "", unread, "", true},
    };
    const ScriptedUser caller("alice", "");
    const AccessEntry inMachinesDomain = {text("alice"), {text(""), oid(DOMAIN_NT)}, 1};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.label);
        const std::string_view lacks = c.lacks;
        const Scripted lent(script::OS_HasLentRights, [&] { return c.lent ? 1 : 0; });
        std::optional<Scripted<decltype(::LoadLibraryA)>> library;
        if (lacks == "netapi32.dll")
            library.emplace(script::LoadLibraryA, [](const char *) { return nullptr; });
        std::optional<Scripted<decltype(::GetProcAddress)>> function;
        if (lacks.starts_with("Net"))
            function.emplace(script::GetProcAddress, [&](HMODULE, const char *name) {
                return name == lacks ? nullptr : reinterpret_cast<FARPROC>(&NetWkstaGetInfo);
            });
        machineHasName = lacks != "name";
        writeFile(root.registry(), c.registry);
        takeLog();
        TOnceGetDomainName();
        machineHasName = true;
        EXPECT_EQ(ALA__GetHostDomain(nullptr), c.domain);
        const std::vector<std::string> lines = takeLog();
        if (c.domain.empty()) {
            EXPECT_EQ(lines.empty() ? "" : lines.back(), c.line);
        }
        registerAgain();
        EXPECT_EQ(open(inMachinesDomain), c.domain.empty() ? kRefused : kAdmitted);
    }
}
