#include "files/error_str.h"

#include <cerrno>
#include <cstring>

struct err_msg {
    int code;
    const char* text;
};

// The system's errors stand by meaning: their numbers differ from one system to the next.
static const err_msg kErrMsgs[] = {
    {err_zip_open, "We were unable to open a zip file. It may be missing or damaged"},
    {err_zip_read, "We were unable to read from a zip file. It may be missing or damaged"},
    {err_zip_create, "We were unable to create a zip file"},
    {err_zip_write, "We were unable to write to a zip file. It may be missing or damaged"},
    {err_fork_size,
     "We cannot compress a zip file because its source file resource fork is more than 2 GB. The source file is "
     "probably damaged"},
    {err_file_open, "We could not open a file to read from it"},
    {err_net_reconnect, "We were unable to connct to the network due to an internal reconnect error"},
    {err_net_state, "We wre unable to connect to the network due to a bad state error"},
    {err_net_alloc, "We could not allocate a connection to the network"},
    {err_net_disk, "We could not write the incoming file from the web to disk"},
    {err_net_host, "We could not find the server over the network"},
    {err_fork_header, "Part of the downloaded zip file is corrupted (the resource fork header is bad)"},
    {err_wrong_content, "The file that was sent is not the one that the release holds"},
    {err_no_file, "This is no file but a pipe, a socket or a device, which I do not touch"},
    {err_file_changed, "The file changed while I was reading it"},
    {err_temp_full, "The disk of the temporary folder is full"},
    {err_leads_outside, "A link on the way to this file leads out of the folder that I work in"},

    {EAGAIN, "Resource temporarily unavailable"},
    {EDEADLK, "Resource deadlock avoided"},
    {ENAMETOOLONG, "File name too long"},
    {ENOSYS, "Function not implemented"},
    {ENOTEMPTY, "Directory not empty"},
    {EILSEQ, "Wide character encoding error"},
    {E2BIG, "Argument list too long"},
    {EACCES, "Permission denied. Perhaps you do not have access to a directory or file system"},
    {EBADF, "Bad file descriptor"},
    {EBUSY, "Device busy"},
    {ECHILD, "No child processes"},
    {EDOM, "Numerical argument out of domain"},
    {EEXIST, "File exists"},
    {EFAULT, "Bad address"},
    {EFBIG, "File too large"},
    {EINTR, "Interrupted system call"},
    {EINVAL, "Invalid argument"},
    {EIO, "Input/output error"},
    {EISDIR, "Is a directory"},
    {EMFILE, "Too many open files"},
    {EMLINK, "Too many links"},
    {ENFILE, "Too many open files in system"},
    {ENODEV, "Operation not supported by device"},
    {ENOENT, "No such file or directory"},
    {ENOEXEC, "Exec format error"},
    {ENOLCK, "No locks available"},
    {ENOMEM, "Out of memory"},
    {ENOSPC, "No space left on device. Perhaps your hard drive is full"},
    {ENOTDIR, "Not a directory"},
    {ENOTTY, "Inappropriate ioctl for device"},
    {ENXIO, "Device not configured"},
    {EPERM, "Operation not permitted. Perhaps you do not have access to a directory or file system"},
    {EPIPE, "Broken pipe"},
    {ERANGE, "Result too large"},
    {EROFS, "The destination file system is read-only"},
    {ESPIPE, "Illegal seek"},
    {ESRCH, "No such process"},
    {EXDEV, "Cross-device link"},
    {EDQUOT, "Your share of this disk is full"},
    {ELOOP, "Too many links lead to one another"},

    // What minizip says of an archive.
    {-1, "The system did not say what went wrong"},
    {-102, "A zip file could not be read in the order of its parts"},
    {-103, "A zip file is damaged"},
    {-104, "A zip file could not be read, for a reason that is not known"},
    {-105, "A zip file is damaged: the checksum of its content is wrong"},

    {-43, "File not found"},
    {-50, "param err"},
    {-33, "Directory is full"},
    {-34, "The disk is full"},
    {-35, "no such volume"},
    {-36, "An internal I/O error occurred"},
    {-37, "bad name"},
    {-38, "file not open"},
    {-39, "end of file"},
    {-40, "position error"},
    {-41, "Memory is full"},
    {-42, "Too many files open"},
    {-44, "A disk is write protected"},
    {-45, "File locked"},
    {-46, "Hard disk is locked"},
    {-47, "A file is in use by another application"},
    {-48, "duplicate file name"},
    {-49, "File already open with write permissions by another application"},
    {-51, "refnum error"},
    {-52, "get file position error"},
    {-53, "A needed volume is offline"},
    {-54, "Permissions error - perhaps you do not have access to a directory"},
    {-56, "no such drive"},
    {-57, "Not a macintosh disk"},
    {-60, "bad master directory block"},
    {-61, "Write permissions error - perhaps you do not have enough access to a directory"},
    {-120, "directory not found"},
    {-108, "Out of memory (memory is full)"},
    {-5000, "You have insufficient privileges for this operation"},
};

std::string error_str(int code) {
    for (const err_msg& m : kErrMsgs)
        if (m.code == code) return m.text;
    if (const char* const words = strerrordesc_np(code); words && code > 0) return words;
    return "Unknown error occurred (" + std::to_string(code) + ")";
}
