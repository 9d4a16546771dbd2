// Reads the records of a log, with all their attributes and documents.
#include "ala/ala.h"
#include "tests/fuzz/sandbox.h"

static void walkAttributes(ALA_handle_t handle, ALA_record_t job) {
    ALA_attrPair *pair = nullptr;
    for (ALA_retCode_t result = ALA_GetFirstAttrFromJob(handle, &job, nullptr, &pair);
         result != ALA_A_LAST_ATTRIBUTE && result != ALA_A_NO_MORE_JOB_ATTR;
         result = ALA_GetNextAttrFromJob(handle, &job, "de_DE.UTF-8", &pair))
        if (pair != nullptr)
            ALA_FreeAttributePair(&pair);
}

static void walkDocuments(ALA_handle_t handle, ALA_record_t job) {
    ALA_dRecord_t document = nullptr;
    for (ALA_retCode_t result = ALA_GetFirstDocmt(handle, &job, &document);
         result == ALA_N_NORMAL && document != nullptr; result = ALA_GetNextDocmt(handle, &job, &document)) {
        ALA_attrPair *pair = nullptr;
        for (result = ALA_GetFirstAttrFromDoc(handle, &document, nullptr, &pair);
             result != ALA_A_LAST_ATTRIBUTE;
             result = ALA_GetNextAttrFromDoc(handle, &document, nullptr, &pair))
            if (pair != nullptr)
                ALA_FreeAttributePair(&pair);
        ALA_FreeDocmtRecord(&document);
    }
}

static void walkRecords(ALA_handle_t handle, ALA_acctLogHandle_t log) {
    ALA_record_t job = nullptr;
    for (ALA_retCode_t result = ALA_GetFirstJobRecord(handle, &log, &job); result == ALA_N_NORMAL;
         result = ALA_GetNextJobRecord(handle, &log, &job)) {
        for (ALA_recAttrType_t type = 0; type < 3; ++type) {
            ALA_attrName *names = nullptr;
            ALA_ListAttributesFromRecord(handle, job, type, nullptr, &names);
            ALA_FreeAttributeList(&names);
        }
        walkAttributes(handle, job);
        walkDocuments(handle, job);
        ALA_FreeJobRecord(&job);
    }
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
    static const Sandbox sandbox;
    const ALA_handle_t handle = sandbox.handle();
    Sandbox::write(sandbox.root().log("alpha", "20010203"), {bytes, size});
    const ALA_time day = {2001, 2, 3};
    ALA_acctLogHandle_t log = nullptr;
    if (ALA_Open(handle, &day, &log) == ALA_N_NORMAL) {
        walkRecords(handle, log);
        ALA_Close(handle, &log);
    }
    return 0;
}
