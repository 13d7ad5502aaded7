// error_str.h: the words for a result code: a positive errno, a negative file-manager code, or one of the system's own
// from 20001 on.
#pragma once

#include <string>

enum : int {
    err_zip_open = 20001,
    err_zip_read = 20002,
    err_zip_create = 20003,
    err_zip_write = 20004,
    err_fork_size = 20005,
    err_file_open = 20006,
    err_net_reconnect = 20007,
    err_net_state = 20008,
    err_net_alloc = 20009,
    err_net_disk = 20010,
    err_net_host = 20011,
    err_fork_header = 20012,
    err_not_mz = 20013,  // these two have no words of their own
    err_not_pe = 20014,
    err_wrong_content = 20015,  // what a server sent is not what the release holds
    err_leads_outside = 20016,  // the way to a file leads out of the folder that is worked in
    err_no_file = 20017,        // a pipe, a socket or a device stands in the place of a file; it is never opened
    err_file_changed = 20018,   // a file changed while it was read
    err_temp_full = 20019       // no server's fault: the disk of the temporary folder is full
};

// A code that neither the table nor the system knows reads "Unknown error occurred (N)".
std::string error_str(int code);
