/* The Accounting Log Access facility: a print server's daily accounting logs, opened for those whom their
   access lists admit, read record by record and delivered as text.

   The life of a handle:

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

   Every operation returns a code of return_codes.inc: ALA_N_NORMAL (0) for success.  Out-parameters are
   cleared before anything else, so that they hold null after a failure unless the operation says otherwise.
   What an operation hands out belongs to the caller and goes back through the operation named on the right,
   which takes the address of the caller's variable and sets it to null.  All texts are NUL-terminated UTF-8.

   Every operation that takes an ALA_handle_t returns ALA_A_NOT_REGISTER for a handle that is null or that
   another process registered (a child process included).  Most can return ALA_A_OUT_OF_MEMORY.  Each failure
   leaves a line in the program's log.

   A handle, and what hangs from it, is used by one thread at a time; threads with a handle each need not wait
   for each other, to register and unregister neither.  Where ALA_Register loads a service environment, other
   threads may read the process's meanwhile (getenv, times of the C library), but not change it (setenv).

   The header can be included from C and from C++. */
#ifndef ALA_ALA_H
#define ALA_ALA_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The version of this header, in its one place: the build takes it from here for the library, the programs
   and the packages. */
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
typedef struct docRecord *ALA_dRecord_t;       /* a document of a job record; lives on its own */

/* The shared library exports what is declared from here on and nothing else. */
#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

/* Nulls to initialise variables with. */
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

/* An attribute: its name and its values in stored order.  There is always at least one value; an attribute
   without values has one empty text. */
typedef struct attrPair {
    char *attrName;
    attributeVal *attrVal;
} ALA_attrPair;

/* What the texts of an attribute's values are. */
typedef int32_t ALA_valueKind_t;
enum {
    ALA_KIND_TEXT = 0,
    ALA_KIND_INTEGER = 1, /* a decimal number, from INT32_MIN to UINT64_MAX */
    ALA_KIND_TIME = 2     /* as ALA_SetTimeForm says */
};

/* How times are written. */
typedef int32_t ALA_timeForm_t;
enum {
    ALA_TIME_AS_REPORTED = 0, /* MM/DD/YYYY HH:MM:SS, by the standard time of the zone all year round */
    ALA_TIME_ISO_8601 = 1 /* YYYY-MM-DDTHH:MM:SS+HH:MM, by the zone's time with its offset from UTC then */
};

/* Which attributes of a record ALA_ListAttributesFromRecord names. */
typedef int32_t ALA_recAttrType_t;
enum {
    ALA_JOB_AND_DOCUMENT_ATTRIBUTES = 0, /* the job's, then the first document's */
    ALA_JOB_ATTRIBUTES = 1,
    ALA_DOCUMENT_ATTRIBUTES = 2 /* the first document's */
};

/* ---- At any time, by any thread ---- */

/* The version of the library that the program runs with, in the form of ALA_VERSION. */
const char *ALA_Version(void);

/* A return code in words for programmers and logs, in English: its name, a colon and what it means, or its
   name alone.  "unknown return code" for a number that is none; never null.  The text is the library's. */
const char *ALA_CodeText(ALA_retCode_t in_code);

/* Takes the entries of the program's log: level 5 for a failure, 6 for detail, 7 for entry to and exit from
   an operation; source file and line; the text without a line end, its control characters as "\xNN".  The
   file and the text are good until the function returns.  It runs in the thread that makes the entry, must
   not call an operation of the facility, and must not throw or jump. */
typedef void (*ALA_logSink_t)(void *inp_context, int32_t in_level, const char *inp_file, int32_t in_line,
                              const char *inp_text);

/* Has the log's entries go to in_sink, wherever QV_LOG would have them go: all of them, also those that
   repeat an earlier one and would only be counted there.  QV_LOG_LEVEL and QV_LOG_TRACE still choose which
   there are.  Null brings back what QV_LOG says, and writes what was counted there, which _exit and exec
   would lose.  inp_context is handed to the sink as it is. REQUIRES: no other thread is inside
   an operation of the facility. */
void ALA_SetLogSink(ALA_logSink_t in_sink, void *inp_context);

/* ---- Registration ---- */

/* Binds the caller to a server and its log directory and opens the OID database.  The texts are copied.
   inp_oidDbPath: the database's folder; null takes QV_ROOT followed by "/share/oid", after the server's
   service environment was loaded into the process.
   ALA_A_INVALID_SERVER_NAME, ALA_A_INVALID_LOG_PATH_NAME: the text is null.
   ALA_A_SYSTEM_ERR: no service environment, or no QV_ROOT in it.
   ALA_A_OID_ERROR: the database is missing or malformed; the log says where. */
ALA_retCode_t ALA_Register(const char *inp_svrName, const char *inp_acctLogPath, const char *inp_oidDbPath,
                           ALA_handle_t *outp_alaHandle);

/* Ends a registration and sets the variable to null.  Logs and records are given back before.
   ALA_A_NOT_REGISTER: the address is null or the handle is not valid; nothing is released. */
ALA_retCode_t ALA_Unregister(ALA_handle_t *inoutp_alaHandle);

/* How values of kind ALA_KIND_TIME are written from now on; ALA_TIME_AS_REPORTED after the registration.
   ALA_A_INVALID_ARG: the form is none. */
ALA_retCode_t ALA_SetTimeForm(ALA_handle_t in_alaHandle, ALA_timeForm_t in_form);

/* ---- The log directory ---- */

/* The server's logs by date and by file name, oldest first; the n-th date belongs to the n-th name.  The log
   of the day in progress has the local date of its last change.
   ALA_A_INVALID_LOG_PATH_NAME: the directory cannot be opened.
   ALA_A_LOG_FILES_NOT_FOUND: it holds no log of this server. */
ALA_retCode_t ALA_ListExistingLogsByDate(ALA_handle_t in_alaHandle, dateNode **outp_dateList,
                                         ALA_name **outp_nameList);

/* Removes the log file of a past day, whatever it holds.
   ALA_A_INVALID_ARG: inp_date is null.
   ALA_A_FAIL_TO_GET_TIME: no current time.
   ALA_A_TRY_TO_DELETE_CUR_DAY_LOG: the date is today's.
   ALA_A_UNKNOWN_ERR: the path cannot be converted.
   ALA_A_FAIL_TO_UNLINK: there is no such file, or it cannot be removed. */
ALA_retCode_t ALA_Delete(ALA_handle_t in_alaHandle, const ALA_time *inp_date);

/* Always ALA_N_NORMAL; an empty list is fine. */
ALA_retCode_t ALA_FreeDateList(dateNode **inoutp_dateList);
ALA_retCode_t ALA_FreeNameList(ALA_name **inoutp_nameList);

/* ---- Logs ---- */

/* Opens the log of a date, or the oldest log if inp_date is null, and checks the log's access list against
   the calling user.  The log stands on its first record then.  Times are written in the process's time zone;
   a zone that changes while a log is open counts from the next log on.
   ALA_A_FAIL_TO_OPEN_LOG_FILE: there is no such log, or it cannot be opened.
   ALA_A_NO_ACCESS_RIGHT_TO_LOG_FILE: no entry of the access list admits the caller.
   ALA_A_FAIL_READ_LOG_FILE, ALA_A_BAD_NUMATTR_VALUE, ALA_A_ODPUNPACK_ERROR: the log's header is damaged.
   ALA_A_SYSTEM_ERR: the caller's identity cannot be found out.
   ALA_A_FAIL_TO_GET_TIME: no current time.
   ALA_A_UNKNOWN_ERR: the path cannot be converted. */
ALA_retCode_t ALA_Open(ALA_handle_t in_alaHandle, const ALA_time *inp_date,
                       ALA_acctLogHandle_t *outp_logHandle);

/* ALA_A_INVALID_LOG_HANDLE: the address or the handle is null, or another process opened the log.
   ALA_A_LOG_FILE_NOT_OPEN: the handle holds no open file. */
ALA_retCode_t ALA_Close(ALA_handle_t in_alaHandle, ALA_acctLogHandle_t *inoutp_acctLogHandle);

/* ---- Records ---- */

/* The record at the log's position; the next call reads behind it.  ALA_GetFirstJobRecord comes right after
   ALA_Open and cannot be tried again on the same handle once it has failed.  After a failed
   ALA_GetNextJobRecord the log stands where it stood, so that a later call reads what was appended or
   completed meanwhile.
   ALA_A_LAST_ATTRIBUTE: no further record (ALA_GetNextJobRecord); see ALA_ReadError.
   ALA_A_NO_MORE_JOB: the record's attribute count is 0.
   ALA_A_FAIL_READ_LOG_FILE: the record is cut short, or there is no first record.
   ALA_A_INVALID_LOG_HANDLE: as for ALA_Close. */
ALA_retCode_t ALA_GetFirstJobRecord(ALA_handle_t in_alaHandle, ALA_acctLogHandle_t *inoutp_logHandle,
                                    ALA_record_t *outp_record);
ALA_retCode_t ALA_GetNextJobRecord(ALA_handle_t in_alaHandle, ALA_acctLogHandle_t *inoutp_logHandle,
                                   ALA_record_t *outp_record);

/* The system's error number if the last of these two failed because the file could not be read, else 0.
   ALA_A_LAST_ATTRIBUTE with an error is not the log's end.  REQUIRES: an open log. */
int32_t ALA_ReadError(ALA_acctLogHandle_t in_log);

/* Always ALA_N_NORMAL; a null address or a null record is fine. */
ALA_retCode_t ALA_FreeJobRecord(ALA_record_t *inoutp_record);

/* ---- Attributes and documents of a record ---- */

/* The job's attributes in order, each rendered as text.  inp_locale chooses the language of names
   ("de_DE.UTF-8"), null keeps the one in force.  ALA_GetFirstAttrFromJob starts again, and restarts the
   numbering of documents.
   ALA_A_LAST_ATTRIBUTE: no further attribute.
   ALA_A_NO_MORE_JOB_ATTR: the job's attributes are used up, documents follow.
   ALA_A_ODPUNPACK_ERROR: a value's bytes are none of its type.
   ALA_A_OID_ERROR: an object identifier is malformed or unknown.
   ALA_A_FAIL_TO_GET_TIME: a time cannot be converted.
   After these three *outp_attribute may hold what was delivered of earlier values; it belongs to the caller.
   A further call goes on with the next attribute.
   ALA_A_INVALID_RECORD: the address or the record is null. */
ALA_retCode_t ALA_GetFirstAttrFromJob(ALA_handle_t in_alaHandle, ALA_record_t *inoutp_curRecord,
                                      const char *inp_locale, ALA_attrPair **outp_attribute);
ALA_retCode_t ALA_GetNextAttrFromJob(ALA_handle_t in_alaHandle, ALA_record_t *inoutp_curRecord,
                                     const char *inp_locale, ALA_attrPair **outp_attribute);

/* The record's documents.  ALA_GetFirstDocmt always gives the first one.  A record without documents gives
   ALA_N_NORMAL and a null document record.
   ALA_A_NO_MORE_DOCMT_ATTR: no further document (ALA_GetNextDocmt).
   ALA_A_UNKNOWN_ERR: the record has fewer attributes than it says the job has.
   ALA_A_INVALID_RECORD: as above. */
ALA_retCode_t ALA_GetFirstDocmt(ALA_handle_t in_alaHandle, ALA_record_t *inoutp_curRecord,
                                ALA_dRecord_t *outp_docRecord);
ALA_retCode_t ALA_GetNextDocmt(ALA_handle_t in_alaHandle, ALA_record_t *inoutp_curRecord,
                               ALA_dRecord_t *outp_docRecord);

/* A document's attributes in order; codes as for the job's, without ALA_A_NO_MORE_JOB_ATTR. */
ALA_retCode_t ALA_GetFirstAttrFromDoc(ALA_handle_t in_alaHandle, ALA_dRecord_t *inoutp_curRecord,
                                      const char *inp_locale, ALA_attrPair **outp_attribute);
ALA_retCode_t ALA_GetNextAttrFromDoc(ALA_handle_t in_alaHandle, ALA_dRecord_t *inoutp_curRecord,
                                     const char *inp_locale, ALA_attrPair **outp_attribute);

/* The attribute names of a record, last attribute first; null for an empty range.
   ALA_A_INVALID_JOB_RECORD: the record is null.
   ALA_A_UNKNOWN_ERR: in_attrType is unknown.
   ALA_A_OID_ERROR: an object identifier is malformed or unknown, or the locale's names cannot be read. */
ALA_retCode_t ALA_ListAttributesFromRecord(ALA_handle_t in_alaHandle, ALA_record_t in_curRecord,
                                           ALA_recAttrType_t in_attrType, const char *inp_locale,
                                           ALA_attrName **outp_attributeNames);

/* What the attribute of a pair is: its value type, the number that the log has for it, and what that makes of
   its texts.  The text of an attribute without a value is empty whatever its kind.  REQUIRES: a pair from one
   of the operations above.
   ALA_A_INVALID_ARG: an address is null. */
ALA_retCode_t ALA_GetAttributeType(const ALA_attrPair *inp_attribute, uint32_t *outp_valueType,
                                   ALA_valueKind_t *outp_kind);

/* Always ALA_N_NORMAL.  A null list is fine, and so is a null address or variable for ALA_FreeDocmtRecord;
   the pair must not be null. */
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
