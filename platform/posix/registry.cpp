// The registry calls, which read the registry file.
//
// RegOpenKeyExA reads the file each time, and each open key has its own copy of the values, so keys share
// nothing.
#include "platform/os.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/descriptor.h"
#include "platform/posix/registry_file.h"

using namespace qvledger;

constexpr char kDefaultPath[] = "/etc/qvledger/registry.reg";
constexpr std::size_t kMostBytes = std::size_t{64} << 20; // size limit of the registry file
constexpr std::size_t kPiece = 64 * 1024;

struct OS_registryKey {
    RegistryKey key;
};

// Why the registry file was refused, truncated if necessary.  Not a std::string, because registering a
// thread_local destructor ends the program when memory runs out.
static thread_local char gTrouble[PATH_MAX + 256] = "";

static LONG refuseFile(const std::string &trouble) {
    gTrouble[trouble.copy(gTrouble, sizeof gTrouble - 1)] = '\0';
    return ERROR_REGISTRY_CORRUPT;
}

// Reads all of an open regular file.  Returns an empty text on success, otherwise the reason for the failure.
static std::string readAll(int fd, std::string *bytes) {
    struct stat status;
    if (fstat(fd, &status) != 0)
        return std::generic_category().message(errno);
    if (!S_ISREG(status.st_mode))
        return "no regular file";
    bytes->reserve(std::min(static_cast<std::size_t>(status.st_size), kMostBytes) + kPiece);
    for (std::size_t size = 0; size <= kMostBytes;) {
        bytes->resize(size + kPiece);
        const ssize_t got = read(fd, bytes->data() + size, kPiece);
        if (got < 0 && errno != EINTR)
            return std::generic_category().message(errno);
        size += static_cast<std::size_t>(std::max<ssize_t>(got, 0));
        if (got == 0) {
            bytes->resize(size);
            return "";
        }
    }
    return "larger than 64 MiB";
}

static LONG loadRegistry(Registry &registry) {
    const std::string path = OS_RegistryPath();
    // Without O_NONBLOCK, opening a named pipe would wait for a writer.
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (file.get() < 0 && (errno == ENOENT || errno == ENOTDIR))
        return ERROR_SUCCESS; // without a file, the registry is empty
    std::string bytes;
    const std::string trouble =
        file.get() < 0 ? std::generic_category().message(errno) : readAll(file.get(), &bytes);
    if (!trouble.empty())
        return refuseFile(path + ": " + trouble);
    if (const std::optional<RegistryFault> fault = parseRegistry(bytes, registry))
        return refuseFile(path + ":" + std::to_string(fault->line) + ": " + fault->reason);
    return ERROR_SUCCESS;
}

static LONG openKey(const char *path, HKEY *opened) {
    Registry registry;
    if (const LONG result = loadRegistry(registry); result != ERROR_SUCCESS)
        return result;
    std::optional<RegistryKey> key = registry.take(path);
    if (!key)
        return ERROR_FILE_NOT_FOUND;
    *opened = std::make_unique<OS_registryKey>(OS_registryKey{std::move(*key)}).release();
    return ERROR_SUCCESS;
}

// Did RegOpenKeyExA open the key?  HKEY_LOCAL_MACHINE itself has no values.
static bool isOpenKey(HKEY key) {
    return key != nullptr && key != HKEY_LOCAL_MACHINE;
}

// Copies type and data of a value to the calling function.  Each output may be null, but data requires
// dataSize.  Returns ERROR_MORE_DATA, with the needed size, if the data does not fit.
static LONG deliver(const RegistryValue &value, DWORD *type, BYTE *data, DWORD *dataSize) {
    if (data != nullptr && dataSize == nullptr)
        return ERROR_INVALID_PARAMETER;
    if (type != nullptr)
        *type = value.type;
    if (dataSize == nullptr)
        return ERROR_SUCCESS;
    const bool fits = data == nullptr || value.data.size() <= *dataSize;
    *dataSize = static_cast<DWORD>(value.data.size());
    if (!fits)
        return ERROR_MORE_DATA;
    if (data != nullptr)
        value.data.copy(reinterpret_cast<char *>(data), value.data.size());
    return ERROR_SUCCESS;
}

extern "C" {

const char *OS_RegistryPath() {
    const char *path = OS_ProgramVariable("QV_REGISTRY");
    return path != nullptr ? path : kDefaultPath;
}

const char *OS_RegistryTrouble() {
    return gTrouble;
}

LONG RegOpenKeyExA(HKEY in_key, const char *inp_path, DWORD, DWORD, HKEY *outp_key) {
    gTrouble[0] = '\0';
    if (in_key != HKEY_LOCAL_MACHINE)
        return ERROR_INVALID_HANDLE;
    if (outp_key == nullptr)
        return ERROR_INVALID_PARAMETER;
    try {
        return openKey(inp_path != nullptr ? inp_path : "", outp_key);
    } catch (const std::bad_alloc &) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

LONG OS_PlaceOfKey(const char *path, char *text, std::size_t size) {
    gTrouble[0] = '\0';
    try {
        Registry registry;
        if (const LONG result = loadRegistry(registry); result != ERROR_SUCCESS) {
            std::snprintf(text, size, "%s", gTrouble);
            return result;
        }
        const std::optional<RegistryKey> key = registry.take(path);
        const std::string line = key ? ":" + std::to_string(key->line) : "";
        std::snprintf(text, size, "%s%s", OS_RegistryPath(), line.c_str());
        return key ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
    } catch (const std::bad_alloc &) {
        std::snprintf(text, size, "out of memory");
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

LONG RegEnumValueA(HKEY in_key, DWORD in_index, char *outp_name, DWORD *inoutp_nameSize, DWORD *,
                   DWORD *outp_type, BYTE *outp_data, DWORD *inoutp_dataSize) {
    if (!isOpenKey(in_key))
        return ERROR_INVALID_HANDLE;
    if (outp_name == nullptr || inoutp_nameSize == nullptr)
        return ERROR_INVALID_PARAMETER;
    if (in_index >= in_key->key.all().size())
        return ERROR_NO_MORE_ITEMS;
    const RegistryValue &value = in_key->key.all()[in_index];
    if (value.name.size() >= *inoutp_nameSize)
        return ERROR_MORE_DATA;
    if (const LONG result = deliver(value, outp_type, outp_data, inoutp_dataSize); result != ERROR_SUCCESS)
        return result;
    std::memcpy(outp_name, value.name.c_str(), value.name.size() + 1);
    *inoutp_nameSize = static_cast<DWORD>(value.name.size());
    return ERROR_SUCCESS;
}

LONG RegQueryValueExA(HKEY in_key, const char *inp_name, DWORD *, DWORD *outp_type, BYTE *outp_data,
                      DWORD *inoutp_dataSize) {
    if (!isOpenKey(in_key))
        return ERROR_INVALID_HANDLE;
    try {
        const RegistryValue *value = in_key->key.find(inp_name != nullptr ? inp_name : "");
        return value != nullptr ? deliver(*value, outp_type, outp_data, inoutp_dataSize)
                                : ERROR_FILE_NOT_FOUND;
    } catch (const std::bad_alloc &) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

LONG RegCloseKey(HKEY in_key) {
    if (in_key == nullptr)
        return ERROR_INVALID_HANDLE;
    if (in_key != HKEY_LOCAL_MACHINE)
        delete in_key;
    return ERROR_SUCCESS;
}

} // extern "C"
