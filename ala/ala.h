/* The Accounting Log Access facility reads the daily accounting logs of a print server.  It opens a log only
   for users whom the log's access list admits, reads it record by record, and returns the attributes as text.

   The operations are listed in order of use; those on the right release the results of those on the left:

       ALA_Register
           ALA_ListExistingLogsByDate                          ALA_FreeDateList, ALA_FreeNameList
           ALA_Open
               ALA_GetFirstJobRecord, ALA_GetNextJobRecord     ALA_FreeJobRecord
                   ALA_ListAttributesFromRecord                ALA_FreeAttributeList
                   ALA_GetFirstAttrFromJob, ..NextAttrFromJob  ALA_FreeAttributePair
                   ALA_GetFirstDocmt, ALA_GetNextDocmt         ALA_FreeDocmtRecord
                       ALA_GetFirstAttrFromDoc, ..NextAttr..   ALA_FreeAttributePair
           ALA_Close
           ALA_Delete
       ALA_Unregister

   Most operations return a code of return_codes.inc; ALA_N_NORMAL (0) means success.  An operation first sets
   its out-parameters to null, so they are null after a failure unless stated otherwise.  The calling program
   owns every result.  The operation that releases a result takes the address of a variable and sets the
   variable to null.  All texts are NUL-terminated UTF-8.

   Every operation that takes an ALA_handle_t returns ALA_A_NOT_REGISTER if the handle is null or another
   process registered it; a child process must register again.  Most can return ALA_A_OUT_OF_MEMORY.
   Failures are recorded in the program's log.

   Use a handle, and everything obtained from it, in one thread at a time.  Threads that use different
   handles need no synchronisation, even to register and unregister.  While ALA_Register loads the settings of
   a server into the environment, other threads may read the environment (getenv, the C library's time
   functions) but not change it (setenv). */
#ifndef ALA_ALA_H
#define ALA_ALA_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The version of this header.  The build also gives it to the library, the programs and the packages. */
#define ALA_VERSION_MAJOR 1
#define ALA_VERSION_MINOR 2
#define ALA_VERSION_PATCH 6
#define ALA__TEXT(number) #number
#define ALA__VERSION_TEXT(major, minor, patch) ALA__TEXT(major) "." ALA__TEXT(minor) "." ALA__TEXT(patch)
#define ALA_VERSION ALA__VERSION_TEXT(ALA_VERSION_MAJOR, ALA_VERSION_MINOR, ALA_VERSION_PATCH) /* "1.2.6" */

typedef int32_t ALA_retCode_t;

enum {
#define ALA_RETURN_CODE(number, name, message, logText) name = (number),
#define ALA_UNNAMED_CODE(number, message, logText)
#include "ala/return_codes.inc"
};

typedef struct handleData *ALA_handle_t;       /* a registration: one server, one log directory */
typedef struct logParams *ALA_acctLogHandle_t; /* an open log */
typedef struct record *ALA_record_t;           /* a job record */
typedef struct docRecord *ALA_dRecord_t;       /* a copy of a document; does not need its job record */

/* The shared library exports only the declarations from here on. */
#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

/* Null values to initialise variables with. */
extern void *const ALA_nullHandle;
extern void *const ALA_nullAcctLogHandle;
extern void *const ALA_nullRecord;

/* A calendar date. */
typedef struct ALA_time {
    int16_t year;
    int16_t month; /* 1 to 12 */
    int16_t day;   /* 1 to 31 */
} ALA_time;

typedef struct dateNode {
    ALA_time date;
    struct dateNode *next;
} dateNode;

typedef struct name {
    char *logName; /* file name without its directory */
    struct name *next;
} ALA_name;

typedef struct attrName {
    char *attrNameStr;
    struct attrName *next;
} ALA_attrName;

typedef struct attributeVal {
    char *value;
    struct attributeVal *next;
} attributeVal;

/* An attribute: its name, and its values in stored order.  For an attribute without values, the list contains
   one empty text. */
typedef struct attrPair {
    char *attrName;
    attributeVal *attrVal;
} ALA_attrPair;

/* What the texts of an attribute's values contain.  A later version can have more kinds: treat an unknown
   kind as ALA_KIND_TEXT. */
typedef int32_t ALA_valueKind_t;
enum {
    ALA_KIND_TEXT = 0,
    ALA_KIND_INTEGER = 1, /* a decimal number, from INT32_MIN to UINT64_MAX */
    ALA_KIND_TIME = 2,    /* in the format set by ALA_SetTimeForm */
    ALA_KIND_BOOLEAN = 3, /* "true" or "false"; an invalid boolean has an empty text */
    ALA_KIND_REAL = 4,    /* a decimal number with six decimals; or "inf" or "nan", which can follow a "-" */
    ALA_KIND_DURATION = 5 /* H:MM:SS; the hours have no leading zero and can exceed 23 */
};

/* The format of the texts of times. */
typedef int32_t ALA_timeForm_t;
enum {
    ALA_TIME_AS_REPORTED = 0, /* MM/DD/YYYY HH:MM:SS, in the zone's standard time all year round */
    ALA_TIME_ISO_8601 = 1     /* YYYY-MM-DDTHH:MM:SS+HH:MM, local time with its offset from UTC */
};

/* Selects the attributes whose names ALA_ListAttributesFromRecord returns. */
typedef int32_t ALA_recAttrType_t;
enum {
    ALA_JOB_AND_DOCUMENT_ATTRIBUTES = 0, /* those of the job, then those of the first document */
    ALA_JOB_ATTRIBUTES = 1,
    ALA_DOCUMENT_ATTRIBUTES = 2 /* those of the first document */
};

/* ---- Operations without a handle, for any thread ---- */

/* Returns the version of the library that the program runs with, in the form of ALA_VERSION.  The library
   owns the text. */
const char *ALA_Version(void);

/* Returns an English text for a return code, for programmers and logs: "NAME: meaning".  If a code has
   only a name or only a meaning, the text is that part alone.  The text of an unknown code is "unknown return
   code".  Never null.  The library owns the text. */
const char *ALA_CodeText(ALA_retCode_t in_code);

/* A callback that receives the entries of the program's log.
   in_level: 5: a failure; 6: a detail; 7: an operation begins or ends.
   inp_file, in_line: the source line that made the entry.
   inp_text: has no line end; control characters are written as "\xNN".
   inp_file and inp_text are valid until the callback returns.  The callback runs in the thread that makes the
   entry.  The callback must not call an operation of the facility, throw an exception or call longjmp. */
typedef void (*ALA_logSink_t)(void *inp_context, int32_t in_level, const char *inp_file, int32_t in_line,
                              const char *inp_text);

/* From now on, passes every log entry, with inp_context, to in_sink instead of the destination in QV_LOG.
   Repeated entries are passed, too.  QV_LOG_LEVEL and QV_LOG_TRACE still select the levels.  A null in_sink
   restores the destination in QV_LOG.  Each call first writes the pending counts of repeated entries to that
   destination; a program that ends with _exit or exec loses counts that are still pending.
   REQUIRES: no other thread is inside an operation of the facility. */
void ALA_SetLogSink(ALA_logSink_t in_sink, void *inp_context);

/* ---- Registration ---- */

/* Makes a handle for a server and its log directory, and opens the OID database.  The texts are copied.
   inp_oidDbPath: the database's folder.  If it is null, the server's settings are loaded into the environment
   of the process, and the folder is QV_ROOT followed by "/share/oid".
   ALA_A_INVALID_SERVER_NAME: inp_svrName is null.
   ALA_A_INVALID_LOG_PATH_NAME: inp_acctLogPath is null.
   ALA_A_SYSTEM_ERR: the settings cannot be loaded, or QV_ROOT is not set.
   ALA_A_OID_ERROR: the database is malformed or cannot be read; the program's log reports the reason. */
ALA_retCode_t ALA_Register(const char *inp_svrName, const char *inp_acctLogPath, const char *inp_oidDbPath,
                           ALA_handle_t *outp_alaHandle);

/* Ends a registration.  REQUIRES: its logs are closed and its records released.
   ALA_A_NOT_REGISTER: the handle is invalid or its address is null; nothing is released. */
ALA_retCode_t ALA_Unregister(ALA_handle_t *inoutp_alaHandle);

/* Sets the format of the times that later calls with this handle return.  The default is
   ALA_TIME_AS_REPORTED.
   ALA_A_INVALID_ARG: the format is unknown. */
ALA_retCode_t ALA_SetTimeForm(ALA_handle_t in_alaHandle, ALA_timeForm_t in_form);

/* ---- The log directory ---- */

/* Returns the dates and the file names of the server's logs, oldest first.  The n-th date belongs to the n-th
   name.  The log of the day in progress has the local date of its last change.  If the directory can be read
   only in part, logs can be missing from the lists; the program's log reports the error.
   ALA_A_UNKNOWN_ERR: the directory's path cannot be converted.
   ALA_A_INVALID_LOG_PATH_NAME: the directory cannot be opened.
   ALA_A_LOG_FILES_NOT_FOUND: the directory contains no log of this server. */
ALA_retCode_t ALA_ListExistingLogsByDate(ALA_handle_t in_alaHandle, dateNode **outp_dateList,
                                         ALA_name **outp_nameList);

/* Removes the log file of a date other than today, whatever its contents.
   ALA_A_INVALID_ARG: inp_date is null.
   ALA_A_FAIL_TO_GET_TIME: the current time is not available.
   ALA_A_TRY_TO_DELETE_CUR_DAY_LOG: the date is today's.
   ALA_A_UNKNOWN_ERR: the path cannot be converted.
   ALA_A_FAIL_TO_UNLINK: the file does not exist or cannot be removed. */
ALA_retCode_t ALA_Delete(ALA_handle_t in_alaHandle, const ALA_time *inp_date);

/* Release a list and return ALA_N_NORMAL.  The list may be null, but its address must not. */
ALA_retCode_t ALA_FreeDateList(dateNode **inoutp_dateList);
ALA_retCode_t ALA_FreeNameList(ALA_name **inoutp_nameList);

/* ---- Logs ---- */

/* Opens the log of a date, or the oldest log if inp_date is null.  If the log file of the date cannot be
   opened, opens the log of the day in progress instead, provided that it was last changed on that date.
   Checks that the log's access list admits the user.  After ALA_Open, the log's position is its first record.
   Times are converted with the time zone of the process.  After a change of the zone, times can be wrong
   until the next log is opened.
   ALA_A_FAIL_TO_OPEN_LOG_FILE: the log does not exist or cannot be opened.
   ALA_A_NO_ACCESS_RIGHT_TO_LOG_FILE: no entry of the access list admits the user.
   ALA_A_FAIL_READ_LOG_FILE: the log's header is incomplete, damaged or cannot be read.
   ALA_A_BAD_NUMATTR_VALUE, ALA_A_ODPUNPACK_ERROR: the log's header is damaged.
   ALA_A_SYSTEM_ERR: the user's identity cannot be determined.
   ALA_A_FAIL_TO_GET_TIME: the current time is not available.
   ALA_A_UNKNOWN_ERR: the path cannot be converted, or the operating system is unknown. */
ALA_retCode_t ALA_Open(ALA_handle_t in_alaHandle, const ALA_time *inp_date,
                       ALA_acctLogHandle_t *outp_logHandle);

/* Closes a log.
   ALA_A_INVALID_LOG_HANDLE: the address or the log handle is null, or another process opened the log.
   ALA_A_LOG_FILE_NOT_OPEN: the log handle has no open file. */
ALA_retCode_t ALA_Close(ALA_handle_t in_alaHandle, ALA_acctLogHandle_t *inoutp_acctLogHandle);

/* ---- Records ---- */

/* Read the record at the log's position, and move the position to the next record.  Call
   ALA_GetFirstJobRecord directly after ALA_Open; after a failure it cannot be called again with the same log
   handle.  If ALA_GetNextJobRecord fails, the position does not change, so a later call can read a record
   that the server has appended or completed in the meantime.
   ALA_A_LAST_ATTRIBUTE (ALA_GetNextJobRecord only): there is no further record, or reading failed where the
   record would begin; see ALA_ReadError.
   ALA_A_NO_MORE_JOB: the record's attribute count is 0.
   ALA_A_FAIL_READ_LOG_FILE: the record is incomplete, contains an invalid value length or cannot be read, or
   the log has no first record; see ALA_ReadError.
   ALA_A_INVALID_LOG_HANDLE: as for ALA_Close. */
ALA_retCode_t ALA_GetFirstJobRecord(ALA_handle_t in_alaHandle, ALA_acctLogHandle_t *inoutp_logHandle,
                                    ALA_record_t *outp_record);
ALA_retCode_t ALA_GetNextJobRecord(ALA_handle_t in_alaHandle, ALA_acctLogHandle_t *inoutp_logHandle,
                                   ALA_record_t *outp_record);

/* Returns the system's error number if the log's last ALA_GetFirstJobRecord or ALA_GetNextJobRecord failed
   because the file could not be read, otherwise 0.  If the number is not 0 after ALA_A_LAST_ATTRIBUTE, the
   end of the log was not reached.  REQUIRES: the log is open. */
int32_t ALA_ReadError(ALA_acctLogHandle_t in_log);

/* Releases a record and returns ALA_N_NORMAL.  The address and the record may be null. */
ALA_retCode_t ALA_FreeJobRecord(ALA_record_t *inoutp_record);

/* ---- Attributes and documents of a record ---- */

/* Return the job's attributes in order, each as text.  inp_locale (such as "de_DE.UTF-8") selects the
   language of the names; null keeps the current language.  ALA_GetFirstAttrFromJob returns the first
   attribute, and makes ALA_GetNextDocmt start again with the first document.
   ALA_A_LAST_ATTRIBUTE: the record has no further attribute, or the first attribute was not read before.
   ALA_A_NO_MORE_JOB_ATTR: the job has no further attribute; documents follow.
   ALA_A_ODPUNPACK_ERROR: a value does not match its type.
   ALA_A_OID_ERROR: an object identifier is malformed or unknown, or the locale's names cannot be read.
   ALA_A_FAIL_TO_GET_TIME: a time cannot be converted.
   After these three codes and ALA_A_OUT_OF_MEMORY, *outp_attribute is null or an incomplete pair, which the
   calling program must release.  The next call continues with the next attribute.  After
   ALA_A_ODPUNPACK_ERROR, the attribute's later values are not converted.  The other codes report only the
   last value; if an earlier value cannot be converted, its text is missing or incomplete.
   ALA_A_INVALID_RECORD: the address or the record is null. */
ALA_retCode_t ALA_GetFirstAttrFromJob(ALA_handle_t in_alaHandle, ALA_record_t *inoutp_curRecord,
                                      const char *inp_locale, ALA_attrPair **outp_attribute);
ALA_retCode_t ALA_GetNextAttrFromJob(ALA_handle_t in_alaHandle, ALA_record_t *inoutp_curRecord,
                                     const char *inp_locale, ALA_attrPair **outp_attribute);

/* Return the record's documents in order.  ALA_GetFirstDocmt always returns the first document; call it once
   after ALA_GetFirstAttrFromJob, because each call moves ALA_GetNextDocmt on by one document.  For a record
   that has only job attributes, both operations return ALA_N_NORMAL and a null document.
   ALA_A_NO_MORE_DOCMT_ATTR (ALA_GetNextDocmt only): there is no further document.
   ALA_A_UNKNOWN_ERR: the record has fewer attributes than its count of job attributes.
   ALA_A_INVALID_RECORD: the address or the record is null. */
ALA_retCode_t ALA_GetFirstDocmt(ALA_handle_t in_alaHandle, ALA_record_t *inoutp_curRecord,
                                ALA_dRecord_t *outp_docRecord);
ALA_retCode_t ALA_GetNextDocmt(ALA_handle_t in_alaHandle, ALA_record_t *inoutp_curRecord,
                               ALA_dRecord_t *outp_docRecord);

/* Return the document's attributes in order.  The codes are those of ALA_GetNextAttrFromJob without
   ALA_A_NO_MORE_JOB_ATTR. */
ALA_retCode_t ALA_GetFirstAttrFromDoc(ALA_handle_t in_alaHandle, ALA_dRecord_t *inoutp_curRecord,
                                      const char *inp_locale, ALA_attrPair **outp_attribute);
ALA_retCode_t ALA_GetNextAttrFromDoc(ALA_handle_t in_alaHandle, ALA_dRecord_t *inoutp_curRecord,
                                     const char *inp_locale, ALA_attrPair **outp_attribute);

/* Returns the names of the attributes that in_attrType selects, the last attribute first.  The list is null
   if the record has no such attribute.  inp_locale: as for ALA_GetFirstAttrFromJob.
   ALA_A_INVALID_JOB_RECORD: the record is null.
   ALA_A_UNKNOWN_ERR: in_attrType is unknown.
   ALA_A_OID_ERROR: an object identifier is malformed or unknown, or the locale's names cannot be read. */
ALA_retCode_t ALA_ListAttributesFromRecord(ALA_handle_t in_alaHandle, ALA_record_t in_curRecord,
                                           ALA_recAttrType_t in_attrType, const char *inp_locale,
                                           ALA_attrName **outp_attributeNames);

/* Returns the attribute's value type, which is a number from the log, and the kind of the attribute's texts.
   The text of an attribute without values is empty, whatever the kind.  REQUIRES: the pair was returned by
   one of the operations above.
   ALA_A_INVALID_ARG: an address is null. */
ALA_retCode_t ALA_GetAttributeType(const ALA_attrPair *inp_attribute, uint32_t *outp_valueType,
                                   ALA_valueKind_t *outp_kind);

/* Release a list, a pair or a document, and return ALA_N_NORMAL.  A list may be null, but its address must
   not.  A pair and its address must not be null.  A document and its address may be null. */
ALA_retCode_t ALA_FreeAttributeList(ALA_attrName **inoutp_attributeNames);
ALA_retCode_t ALA_FreeAttributePair(ALA_attrPair **inoutp_attribute);
ALA_retCode_t ALA_FreeDocmtRecord(ALA_dRecord_t *inoutp_docRecord);

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif

#ifdef __cplusplus
}
#endif

#endif
