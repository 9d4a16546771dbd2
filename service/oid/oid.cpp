#include "service/oid/oid.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "service/log/log.h"
#include "service/oid/oid_table.h"

using namespace qvledger;

namespace {

// A language, with its renaming table; the table is null if its file is absent or bad.
struct Language {
    std::string tag; // the file's name after "oids."
    OidTable::State state;
    std::unique_ptr<OidTable> table;
};

// An open database, to which a handle points.
struct Database {
    std::string tablePath;
    OidTable identifiers;
    std::vector<Language> languages; // all languages that were tried, so that each file is read once
    std::string locale;              // current locale
    const OidTable *names = nullptr; // renaming table of the locale; null if there is no table
};

} // namespace

static std::atomic<std::int32_t> users;

static Database *databaseOf(void *handle) {
    return static_cast<Database *>(handle);
}

// ---- Opening and closing ----

std::int32_t OID_Init(STF_l__hdr *, const char *, std::int32_t) {
    ++users;
    return 0;
}

void OID_Term() {
    if (users > 0)
        --users;
}

std::int32_t OID_OpenDb(STF_l__hdr *, const char *inp_path, std::int32_t, std::int32_t, void **outp_handle) {
    *outp_handle = nullptr;
    if (users == 0)
        return OID_E_NOT_INITIALISED;
    if (inp_path == nullptr)
        return OID_E_DATABASE;
    try {
        auto database = std::make_unique<Database>();
        database->tablePath.append(inp_path).append("/oids");
        const char *path = database->tablePath.c_str();
        const OidTable::State state = database->identifiers.load(path, OidTable::Kind::Identifiers);
        if (state == OidTable::State::Absent)
            LOG_CondMessage(LOG_ERROR, __FILE__, __LINE__, "%s: no such file", path);
        if (state != OidTable::State::Loaded)
            return OID_E_DATABASE;
        *outp_handle = database.release();
        return 0;
    } catch (const std::bad_alloc &) {
        return OID_E_NO_MEMORY;
    }
}

std::int32_t OID_CloseDb(STF_l__hdr *, void **inoutp_handle) {
    if (inoutp_handle == nullptr || *inoutp_handle == nullptr)
        return OID_E_HANDLE;
    delete databaseOf(*inoutp_handle);
    *inoutp_handle = nullptr;
    return 0;
}

// ---- Languages ----

// Returns the next more general tag: "de_DE" for "de_DE.UTF-8", "de" for "de_DE", "" for "de".
static std::string_view generalised(std::string_view tag) {
    std::size_t end = tag.find_first_of(".@");
    if (end == tag.npos)
        end = tag.rfind('_');
    return end == tag.npos ? std::string_view() : tag.substr(0, end);
}

// Could the locale, which the user chooses, name a file outside the database's folder?
static bool namesNoTable(std::string_view locale) {
    return locale.find('/') != locale.npos || locale.find("..") != locale.npos;
}

static const Language &languageOf(Database &database, std::string_view tag) {
    auto &known = database.languages;
    const auto found =
        std::find_if(known.begin(), known.end(), [&](const Language &it) { return it.tag == tag; });
    if (found != known.end())
        return *found;
    Language language{std::string(tag), OidTable::State::Absent, std::make_unique<OidTable>()};
    const std::string path = database.tablePath + "." + language.tag;
    language.state = language.table->load(path.c_str(), OidTable::Kind::Names);
    if (language.state != OidTable::State::Loaded)
        language.table.reset();
    known.push_back(std::move(language));
    return known.back();
}

static std::int32_t changeLocale(Database &database, std::string_view locale) {
    const OidTable *names = nullptr;
    std::string_view tag = namesNoTable(locale) ? std::string_view() : locale;
    for (; !tag.empty() && tag != "C" && names == nullptr; tag = generalised(tag)) {
        const Language &language = languageOf(database, tag);
        if (language.state == OidTable::State::Bad)
            return OID_E_DATABASE;
        names = language.table.get();
    }
    database.locale = locale;
    database.names = names;
    return 0;
}

std::int32_t OID_SetLocale(STF_l__hdr *, void **inp_handle, char **inp_locale) {
    if (inp_handle == nullptr || *inp_handle == nullptr)
        return OID_E_HANDLE;
    Database &database = *databaseOf(*inp_handle);
    const char *locale = inp_locale != nullptr && *inp_locale != nullptr ? *inp_locale : "";
    if (database.locale == locale)
        return 0;
    try {
        return changeLocale(database, locale);
    } catch (const std::bad_alloc &) {
        return OID_E_NO_MEMORY;
    }
}

// ---- Look-up ----

std::int32_t OID_ConvertDecToBin(STF_l__hdr *, const char *inp_decimal, std::uint8_t *outp_binary,
                                 std::int32_t) {
    OidBinary binary;
    if (inp_decimal == nullptr || !parseOid(inp_decimal, &binary))
        return OID_E_SYNTAX;
    std::memcpy(outp_binary, binary.bytes, 1U + binary.bytes[0]);
    return 0;
}

static void copyName(const Database &database, const OidEntry &entry, char *buffer) {
    auto name = database.identifiers.name(entry);
    if (database.names != nullptr) {
        const OidEntry *renamed = database.names->find(database.identifiers.contents(entry));
        if (renamed != nullptr)
            name = database.names->name(*renamed);
    }
    std::memcpy(buffer, name.data(), name.size());
    buffer[name.size()] = '\0';
}

std::int32_t OID_LookupBinary(STF_l__hdr *, void *in_handle, const std::uint8_t *inp_binary, char *outp_name,
                              std::int32_t) {
    if (in_handle == nullptr)
        return OID_E_HANDLE;
    if (inp_binary == nullptr || inp_binary[0] >= OID_BINARY_SIZE)
        return OID_E_SYNTAX;
    const Database &database = *databaseOf(in_handle);
    const OidEntry *entry = database.identifiers.find({inp_binary + 1, inp_binary[0]});
    if (entry == nullptr)
        return OID_E_UNKNOWN;
    copyName(database, *entry, outp_name);
    return 0;
}

std::int32_t OID_LookupShort(STF_l__hdr *, void *in_handle, AS_attrID_t in_identifier, char *outp_name,
                             std::uint8_t *outp_class) {
    if (in_handle == nullptr)
        return OID_E_HANDLE;
    const Database &database = *databaseOf(in_handle);
    const OidEntry *entry = database.identifiers.findShort(in_identifier);
    if (entry == nullptr)
        return OID_E_UNKNOWN;
    copyName(database, *entry, outp_name);
    if (outp_class != nullptr) {
        std::memset(outp_class, 0, OID_CLASS_SIZE);
        outp_class[1] = entry->classNumber;
    }
    return 0;
}
