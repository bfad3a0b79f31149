#include "platform/recorded/hosterror.h"

#include <cerrno>

namespace roundup {

namespace {

constexpr Win32Error kErrorTooManyOpenFiles = 4;

}  // namespace

Win32Error FromErrno(int error) noexcept {
    switch (error) {
        case 0:
            return kErrorSuccess;
        case ENOENT:
            return kErrorFileNotFound;
        case ENOTDIR:
            return kErrorPathNotFound;
        case EACCES:
        case EPERM:
        case EROFS:
        case EISDIR:
        case ENXIO:
            return kErrorAccessDenied;
        case ELOOP:
            return kErrorCannotAccessFile;
        case ENOSPC:
#ifdef EDQUOT
        case EDQUOT:
#endif
        case EFBIG:
            return kErrorDiskFull;
        case EEXIST:
            return kErrorFileExists;
        case ENOMEM:
            return kErrorNotEnoughMemory;
        case EMFILE:
        case ENFILE:
            return kErrorTooManyOpenFiles;
        case ENAMETOOLONG:
        case EINVAL:
        case EILSEQ:
            return kErrorInvalidName;
        default:
            return kErrorReadFault;
    }
}

}  // namespace roundup
