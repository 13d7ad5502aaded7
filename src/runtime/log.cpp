#include "runtime/log.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ios>

#include "platform/folders.h"
#include "platform/machine.h"
#include "platform/report_file.h"
#include "runtime/product.h"
#include "runtime/utf8.h"

log_stream xer;

static std::string folder_of_log;

log_buffer::log_buffer() {
    setp(waiting, waiting + sizeof waiting - 1);  // one is for overflow's
}

log_buffer::~log_buffer() {
    close();
}

bool log_buffer::open(const std::string& file) {
    close();
    fd = open_report(file.c_str(), report_begin::anew);
    path = file;
    written = 0;
    return fd >= 0;
}

void log_buffer::close() {
    sync();
    if (fd >= 0) ::close(fd);
    fd = -1;
}

// What waits, up to `end`, in a form that can be shown.
bool log_buffer::write_out(const char* end) {
    const char* from = pbase();
    const std::size_t size = make_printable(waiting, static_cast<std::size_t>(end - pbase()), "\n\t");
    if (fd >= 0 && written + static_cast<long long>(size) > report_most_bytes) {
        ::close(fd);
        set_report_aside(path.c_str());
        fd = open_report(path.c_str(), report_begin::anew);
        written = 0;
    }
    written += static_cast<long long>(size);
    const char* const all = from + size;
    while (fd >= 0 && from < all) {
        const ssize_t n = write(fd, from, static_cast<std::size_t>(all - from));
        if (n < 0 && errno != EINTR) return false;
        if (n > 0) from += n;
    }
    return fd >= 0;
}

// Full. A character that is not yet whole waits for its rest.
log_buffer::int_type log_buffer::overflow(int_type c) {
    const bool has_character = !traits_type::eq_int_type(c, traits_type::eof());
    if (has_character) {
        *pptr() = traits_type::to_char_type(c);
        pbump(1);
    }
    char* const end = pptr();
    char* whole = end;
    for (int back = 1; back <= 3 && end - back > pbase(); ++back)
        if (static_cast<unsigned char>(end[-back]) >= 0xc0) whole = end - back;
    char rest[4];
    const auto kept = static_cast<int>(std::copy(whole, end, rest) - rest);
    const bool done = write_out(whole);
    setp(waiting, waiting + sizeof waiting - 1);
    std::copy(rest, rest + kept, waiting);
    pbump(kept);
    return done ? traits_type::not_eof(c) : traits_type::eof();
}

int log_buffer::sync() {
    const bool done = pptr() == pbase() || write_out(pptr());
    setp(waiting, waiting + sizeof waiting - 1);
    return done ? 0 : -1;
}

void log_stream::open(const std::string& path) {
    buffer.open(path) ? clear() : setstate(failbit);
}

void log_stream::close() {
    buffer.close();
    setstate(failbit);
}

static bool open_in(const std::string& folder) {
    if (folder.empty()) return false;
    xer.open(folder + "Log.txt");
    if (xer.is_open()) folder_of_log = folder;
    return xer.is_open();
}

void open_log() {
    xer.close();
    folder_of_log.clear();
    std::string folder;
    get_OS_abs_path(is_dvd ? os_dir_desktop : os_dir_this_app, &folder);
    if (!open_in(folder)) open_in(state_folder());
    xer << std::fixed;
}

std::string log_folder() {
    return folder_of_log;
}

void write_log_header() {
    const machine_facts machine = get_machine_facts();
    xer << "log.txt for " << version_text << " Installer " << version_number << " compiled on " << build_date << "\n\n"
        << "This log file is generated automatically by Tarvex applications and contains diagnostics about your "
           "graphics "
           "hardware, installation, and any error conditions.\n"
        << "If you need to contact tech support or file a bug, please send us this file. NOTE: this file is rewritten "
           "every time you start ANY of your Orbisuite applications.\n\n"
        << "Linux " << machine.os_release << "\n"
        << "CPU type: " << machine.cpu_code << " (" << machine.cpu_name << ") "
        << "CPU speed (mhz): " << machine.cpu_mhz << " Bus speed (mhz): " << machine.bus_mhz
        << " RAM (MB): " << machine.ram_mb << "\n"
        << "\nOrbisuite folder:'" << app_path << "', case sensitive=" << g_case_sensitive << "\n\n"
        << std::flush;
}
