// Reads an OID table as the database's main table and as a language's table.
#include "service/oid/oid.h"
#include "tests/fuzz/sandbox.h"

using namespace qvledger;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    static const Sandbox sandbox;
    const std::filesystem::path folder = sandbox.root().oids();
    const StatusList status;
    OID_Init(status, nullptr, 0);
    Sandbox::write(folder / "oids", {bytes, size});
    Sandbox::write(folder / "oids.xx", {bytes, size});
    void *database = nullptr;
    if (OID_OpenDb(status, folder.c_str(), 0, 0, &database) == 0) {
        char language[] = "xx_YY.UTF-8";
        char *locale = language;
        OID_SetLocale(status, &database, &locale);
        char name[OID_NAME_SIZE];
        std::uint8_t classBytes[OID_CLASS_SIZE];
        for (AS_attrID_t identifier = 0; identifier < 200; ++identifier)
            OID_LookupShort(status, database, identifier, name, classBytes);
        std::uint8_t binary[OID_BINARY_SIZE];
        const std::string text(reinterpret_cast<const char *>(bytes), size);
        if (OID_ConvertDecToBin(status, text.c_str(), binary, 0) == 0)
            OID_LookupBinary(status, database, binary, name, 0);
        OID_CloseDb(status, &database);
    }
    OID_Term();
    return 0;
}
