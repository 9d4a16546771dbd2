/* A program that uses the installed library: prints the first attribute of every job record of a server's logs.
   consumer SERVER LOG-DIRECTORY */
#include <stdio.h>

#include <ala/ala.h>

static void printRecords(ALA_handle_t handle, ALA_acctLogHandle_t log) {
    ALA_record_t record = ALA_nullRecord;
    ALA_retCode_t result = ALA_GetFirstJobRecord(handle, &log, &record);
    while (result == ALA_N_NORMAL) {
        ALA_attrPair *pair = NULL;
        if (ALA_GetFirstAttrFromJob(handle, &record, NULL, &pair) == ALA_N_NORMAL)
            printf("%s\n", pair->attrVal->value);
        if (pair != NULL)
            ALA_FreeAttributePair(&pair);
        ALA_FreeJobRecord(&record);
        result = ALA_GetNextJobRecord(handle, &log, &record);
    }
}

int main(int argc, char **argv) {
    ALA_handle_t handle = ALA_nullHandle;
    dateNode *dates = NULL;
    ALA_name *names = NULL;
    ALA_retCode_t result;
    const dateNode *node;
    if (argc != 3)
        return 1;
    result = ALA_Register(argv[1], argv[2], NULL, &handle);
    if (result != ALA_N_NORMAL)
        return result;
    result = ALA_ListExistingLogsByDate(handle, &dates, &names);
    for (node = dates; node != NULL; node = node->next) {
        ALA_acctLogHandle_t log = ALA_nullAcctLogHandle;
        if (ALA_Open(handle, &node->date, &log) != ALA_N_NORMAL)
            continue;
        printRecords(handle, log);
        ALA_Close(handle, &log);
    }
    ALA_FreeDateList(&dates);
    ALA_FreeNameList(&names);
    ALA_Unregister(&handle);
    return result;
}
