/* The Accounting Log Access facility reads the daily accounting logs of a print server.  It opens a log only
   for users whom the log's access list admits, reads it record by record, and returns the attributes as text.

   The operations in order of use, with those that release their results on the right:

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

   Most operations return a code of return_codes.inc; ALA_N_NORMAL (0) means success.  They set their
   out-parameters to null first, so these are null after a failure unless stated otherwise.  The caller owns
   every result.  The operation that releases a result takes the address of the caller's variable and sets the
   variable to null.  All texts are NUL-terminated UTF-8.

   Every operation that takes an ALA_handle_t returns ALA_A_NOT_REGISTER if the handle is null or another
   process registered it; a child process must register again.  Most can return ALA_A_OUT_OF_MEMORY.  Every
   failure is recorded in the program's log.

   Use a handle, and everything obtained from it, in one thread at a time.  Threads that each have a handle
   need no synchronisation, even to register and unregister.  While ALA_Register loads the settings of a
   server into the environment, other threads may read the environment (getenv, the C library's time
   functions) but not change it (setenv). */
#ifndef ALA_ALA_H
#define ALA_ALA_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The version of this header.  The build reads the version of the library, programs and packages here. */
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
typedef struct docRecord *ALA_dRecord_t;       /* a document; remains valid without its job record */

/* The shared library exports only the declarations from here on. */
#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

/* Null values for initialising variables. */
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

/* An attribute: its name, and at least one value, in stored order.  An attribute without values has one empty
   text. */
typedef struct attrPair {
    char *attrName;
    attributeVal *attrVal;
} ALA_attrPair;

/* The kind of an attribute's texts. */
typedef int32_t ALA_valueKind_t;
enum {
    ALA_KIND_TEXT = 0,
    ALA_KIND_INTEGER = 1, /* a decimal number, from INT32_MIN to UINT64_MAX */
    ALA_KIND_TIME = 2     /* in the format set by ALA_SetTimeForm */
};

/* The format of times. */
typedef int32_t ALA_timeForm_t;
enum {
    ALA_TIME_AS_REPORTED = 0, /* MM/DD/YYYY HH:MM:SS, in the zone's standard time all year round */
    ALA_TIME_ISO_8601 = 1     /* YYYY-MM-DDTHH:MM:SS+HH:MM, local time with its offset from UTC */
};

/* The attributes of a record whose names ALA_ListAttributesFromRecord returns. */
typedef int32_t ALA_recAttrType_t;
enum {
    ALA_JOB_AND_DOCUMENT_ATTRIBUTES = 0, /* the job's, then the first document's */
    ALA_JOB_ATTRIBUTES = 1,
    ALA_DOCUMENT_ATTRIBUTES = 2 /* the first document's */
};

/* ---- Without a handle, in any thread ---- */

/* The version of the library that the program runs with, in the form of ALA_VERSION.  The library owns the
   text. */
const char *ALA_Version(void);

/* A return code as English text for programmers and logs: its name, a colon and its meaning, or its name
   alone.  "unknown return code" for an unknown number; never null.  The library owns the text. */
const char *ALA_CodeText(ALA_retCode_t in_code);

/* A callback for entries of the program's log.
   in_level: 5 for a failure, 6 for detail, 7 for entry to and exit from an operation.
   inp_text: without a line end, with control characters as "\xNN".
   inp_file and inp_text are valid until the callback returns.  It runs in the thread that made the entry.  It
   must not call an operation of the facility, throw an exception or jump out. */
typedef void (*ALA_logSink_t)(void *inp_context, int32_t in_level, const char *inp_file, int32_t in_line,
                              const char *inp_text);

/* Passes every log entry, repeated ones too, to in_sink instead of the destination in QV_LOG.  QV_LOG_LEVEL
   and QV_LOG_TRACE still select the levels.  inp_context is passed on unchanged.  A null in_sink restores the
   destination in QV_LOG and writes the pending counts of repeated entries there; _exit and exec lose these
   counts.  REQUIRES: no other thread is inside an operation of the facility. */
void ALA_SetLogSink(ALA_logSink_t in_sink, void *inp_context);

/* ---- Registration ---- */

/* Binds a handle to a server and its log directory, and opens the OID database.  The texts are copied.
   inp_oidDbPath: the database's folder.  If it is null, the server's settings are loaded into the environment
   of the process, and the folder is QV_ROOT followed by "/share/oid".
   ALA_A_INVALID_SERVER_NAME: inp_svrName is null.
   ALA_A_INVALID_LOG_PATH_NAME: inp_acctLogPath is null.
   ALA_A_SYSTEM_ERR: the settings cannot be loaded, or QV_ROOT is not set.
   ALA_A_OID_ERROR: the database is missing or malformed; the program's log names the place. */
ALA_retCode_t ALA_Register(const char *inp_svrName, const char *inp_acctLogPath, const char *inp_oidDbPath,
                           ALA_handle_t *outp_alaHandle);

/* Ends a registration.  REQUIRES: its logs are closed and its records released.
   ALA_A_NOT_REGISTER: also if the address is null; nothing is released. */
ALA_retCode_t ALA_Unregister(ALA_handle_t *inoutp_alaHandle);

/* Sets the format of values of kind ALA_KIND_TIME from now on.  The default is ALA_TIME_AS_REPORTED.
   ALA_A_INVALID_ARG: the form is unknown. */
ALA_retCode_t ALA_SetTimeForm(ALA_handle_t in_alaHandle, ALA_timeForm_t in_form);

/* ---- The log directory ---- */

/* Returns the dates and the file names of the server's logs, oldest first.  The n-th date belongs to the n-th
   name.  The date of the log of the day in progress is the local date of its last change.
   ALA_A_INVALID_LOG_PATH_NAME: the directory cannot be opened.
   ALA_A_LOG_FILES_NOT_FOUND: the directory contains no log of this server. */
ALA_retCode_t ALA_ListExistingLogsByDate(ALA_handle_t in_alaHandle, dateNode **outp_dateList,
                                         ALA_name **outp_nameList);

/* Removes the log file of a past day, whatever its contents.
   ALA_A_INVALID_ARG: inp_date is null.
   ALA_A_FAIL_TO_GET_TIME: the current time is not available.
   ALA_A_TRY_TO_DELETE_CUR_DAY_LOG: the date is today's.
   ALA_A_UNKNOWN_ERR: the path cannot be converted.
   ALA_A_FAIL_TO_UNLINK: the file does not exist or cannot be removed. */
ALA_retCode_t ALA_Delete(ALA_handle_t in_alaHandle, const ALA_time *inp_date);

/* Always ALA_N_NORMAL.  The variable may be null, its address may not. */
ALA_retCode_t ALA_FreeDateList(dateNode **inoutp_dateList);
ALA_retCode_t ALA_FreeNameList(ALA_name **inoutp_nameList);

/* ---- Logs ---- */

/* Opens the log of a date, or the oldest log if inp_date is null, checks its access list for the calling
   user, and positions it on its first record.  If a date has no log file, and the log of the day in progress
   was last changed on that date, that log is opened.  Times are converted with the process's time zone; a
   zone that changes while a log is open takes effect with the next log.
   ALA_A_FAIL_TO_OPEN_LOG_FILE: the log does not exist or cannot be opened.
   ALA_A_NO_ACCESS_RIGHT_TO_LOG_FILE: no entry of the access list admits the caller.
   ALA_A_FAIL_READ_LOG_FILE, ALA_A_BAD_NUMATTR_VALUE, ALA_A_ODPUNPACK_ERROR: the log's header is damaged.
   ALA_A_SYSTEM_ERR: the caller's identity cannot be determined.
   ALA_A_FAIL_TO_GET_TIME: the current time is not available.
   ALA_A_UNKNOWN_ERR: the path cannot be converted. */
ALA_retCode_t ALA_Open(ALA_handle_t in_alaHandle, const ALA_time *inp_date,
                       ALA_acctLogHandle_t *outp_logHandle);

/* Closes a log.
   ALA_A_INVALID_LOG_HANDLE: the address or the log handle is null, or another process opened the log.
   ALA_A_LOG_FILE_NOT_OPEN: the log handle has no open file. */
ALA_retCode_t ALA_Close(ALA_handle_t in_alaHandle, ALA_acctLogHandle_t *inoutp_acctLogHandle);

/* ---- Records ---- */

/* Read the record at the log's position, and move past it.  Call ALA_GetFirstJobRecord directly after
   ALA_Open; if it fails, it cannot be called again on the same log handle.  If ALA_GetNextJobRecord fails,
   the position does not change: a later call reads what the server has appended or completed in the meantime.
   ALA_A_LAST_ATTRIBUTE: no further record (ALA_GetNextJobRecord only); see ALA_ReadError.
   ALA_A_NO_MORE_JOB: the record's attribute count is 0.
   ALA_A_FAIL_READ_LOG_FILE: the record is incomplete, or there is no first record.
   ALA_A_INVALID_LOG_HANDLE: as for ALA_Close. */
ALA_retCode_t ALA_GetFirstJobRecord(ALA_handle_t in_alaHandle, ALA_acctLogHandle_t *inoutp_logHandle,
                                    ALA_record_t *outp_record);
ALA_retCode_t ALA_GetNextJobRecord(ALA_handle_t in_alaHandle, ALA_acctLogHandle_t *inoutp_logHandle,
                                   ALA_record_t *outp_record);

/* The system's error number if the last of these two calls failed because the file could not be read, else 0.
   If there is an error after ALA_A_LAST_ATTRIBUTE, the end of the log was not reached.  REQUIRES: an open
   log. */
int32_t ALA_ReadError(ALA_acctLogHandle_t in_log);

/* Always ALA_N_NORMAL.  The address and the record may be null. */
ALA_retCode_t ALA_FreeJobRecord(ALA_record_t *inoutp_record);

/* ---- Attributes and documents of a record ---- */

/* Return the job's attributes in order, each as text.  inp_locale selects the language of names
   ("de_DE.UTF-8"); null keeps the current one.  ALA_GetFirstAttrFromJob starts again with the first attribute
   and the first document.
   ALA_A_LAST_ATTRIBUTE: no further attribute.
   ALA_A_NO_MORE_JOB_ATTR: no further attribute of the job; documents follow.
   ALA_A_ODPUNPACK_ERROR: a value does not match its type.
   ALA_A_OID_ERROR: an object identifier is malformed or unknown.
   ALA_A_FAIL_TO_GET_TIME: a time cannot be converted.
   After these three, and after ALA_A_OUT_OF_MEMORY, *outp_attribute may contain the attribute's earlier
   values; the caller owns it.  The next call continues with the next attribute.
   ALA_A_INVALID_RECORD: the address or the record is null. */
ALA_retCode_t ALA_GetFirstAttrFromJob(ALA_handle_t in_alaHandle, ALA_record_t *inoutp_curRecord,
                                      const char *inp_locale, ALA_attrPair **outp_attribute);
ALA_retCode_t ALA_GetNextAttrFromJob(ALA_handle_t in_alaHandle, ALA_record_t *inoutp_curRecord,
                                     const char *inp_locale, ALA_attrPair **outp_attribute);

/* Return the record's documents in order; ALA_GetFirstDocmt always returns the first one.  For a record
   without documents both return ALA_N_NORMAL and a null document.
   ALA_A_NO_MORE_DOCMT_ATTR: no further document (ALA_GetNextDocmt only).
   ALA_A_UNKNOWN_ERR: the record has fewer attributes than its count of job attributes.
   ALA_A_INVALID_RECORD: as above. */
ALA_retCode_t ALA_GetFirstDocmt(ALA_handle_t in_alaHandle, ALA_record_t *inoutp_curRecord,
                                ALA_dRecord_t *outp_docRecord);
ALA_retCode_t ALA_GetNextDocmt(ALA_handle_t in_alaHandle, ALA_record_t *inoutp_curRecord,
                               ALA_dRecord_t *outp_docRecord);

/* Return the document's attributes in order.  Codes as for the job's, without ALA_A_NO_MORE_JOB_ATTR. */
ALA_retCode_t ALA_GetFirstAttrFromDoc(ALA_handle_t in_alaHandle, ALA_dRecord_t *inoutp_curRecord,
                                      const char *inp_locale, ALA_attrPair **outp_attribute);
ALA_retCode_t ALA_GetNextAttrFromDoc(ALA_handle_t in_alaHandle, ALA_dRecord_t *inoutp_curRecord,
                                     const char *inp_locale, ALA_attrPair **outp_attribute);

/* Returns the attribute names of a record, the last attribute first, or null if it has none of in_attrType.
   inp_locale: as above.
   ALA_A_INVALID_JOB_RECORD: the record is null.
   ALA_A_UNKNOWN_ERR: in_attrType is unknown.
   ALA_A_OID_ERROR: an object identifier is malformed or unknown, or the locale's names cannot be read. */
ALA_retCode_t ALA_ListAttributesFromRecord(ALA_handle_t in_alaHandle, ALA_record_t in_curRecord,
                                           ALA_recAttrType_t in_attrType, const char *inp_locale,
                                           ALA_attrName **outp_attributeNames);

/* Returns the attribute's value type, which is a number from the log, and the kind of its texts.  The text of
   an attribute without values is empty whatever its kind.  REQUIRES: a pair from one of the operations above.
   ALA_A_INVALID_ARG: an address is null. */
ALA_retCode_t ALA_GetAttributeType(const ALA_attrPair *inp_attribute, uint32_t *outp_valueType,
                                   ALA_valueKind_t *outp_kind);

/* Always ALA_N_NORMAL.  The list may be null, the pair may not.  For ALA_FreeDocmtRecord both the address and
   the document may be null. */
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
