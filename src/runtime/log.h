// log.h: the one log of a run, "Log.txt", rewritten at every start. Plain lines, no levels, no times.
// It lies in the application's folder where that can be written, else in the state folder; where neither can be had the
// stream stays failed and every write goes nowhere. The log never fails visibly.
// What a terminal would obey becomes "?", whoever it came from: logs are read on terminals, and hold words of servers.
// At 16 MB the log goes on in a new file, and one older file is kept: a run may fail and try again for days.
// Threads: the main thread's; of others only what ends the run may write. Lines may then interleave.
#pragma once

#include <ostream>
#include <streambuf>
#include <string>

class log_buffer : public std::streambuf {
  public:
    log_buffer();
    ~log_buffer() override;
    log_buffer(const log_buffer&) = delete;
    log_buffer& operator=(const log_buffer&) = delete;
    bool open(const std::string& file);  // anew
    void close();
    bool is_open() const { return fd >= 0; }

  protected:
    int_type overflow(int_type c) override;
    int sync() override;

  private:
    bool write_out(const char* end);
    char waiting[8192];  // of fixed size, so that a signal handler may write too
    std::string path;
    long long written = 0;
    int fd = -1;
};

class log_stream : public std::ostream {
  public:
    log_stream() : std::ostream(&buffer) { setstate(failbit); }
    void open(const std::string& path);
    void close();
    bool is_open() const { return buffer.is_open(); }

  private:
    log_buffer buffer;
};

extern log_stream xer;

void open_log();           // real numbers in fixed notation
void write_log_header();   // version, build date, machine, folder; flushed
std::string log_folder();  // where the log, the crash log and the memory report lie; empty before open_log or if none
