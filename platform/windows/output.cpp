#include "platform/os.h"

#include <cerrno>

#include "platform/windows/file_handle.h"

using namespace qvledger;

OS_outputKind OS_KindOfOutput(int fd) {
    OS_fileIdentity identity = {};
    if (OS_IdentifyDescriptor(fd, &identity) != 0)
        return OS_outputKind::Unknown;
    if (identity.regular)
        return OS_outputKind::File;
    const DWORD type = GetFileType(handleOf(fd)); // the same for pipes and sockets
    return type == FILE_TYPE_CHAR   ? OS_outputKind::Device
           : type == FILE_TYPE_PIPE ? OS_outputKind::Pipe
                                    : OS_outputKind::Unknown;
}

// Only moves the position, because an open descriptor cannot be changed to append.
int OS_WriteAtEnd(int fd) {
    return OS_KindOfOutput(fd) != OS_outputKind::File || _lseeki64(fd, 0, SEEK_END) >= 0 ? 0 : -1;
}

int OS_WriteError() {
    const bool hasNoReader = _doserrno == ERROR_NO_DATA || _doserrno == ERROR_PIPE_NOT_CONNECTED;
    return hasNoReader ? EPIPE : errno;
}

// No call reports unread bytes, so all written bytes are treated as read.
int OS_UnreadBytes(int) {
    return 0;
}
