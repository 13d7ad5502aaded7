// fuzz.h: what the fuzz targets share. A target gets bytes, does with them what the program does with a file or an
// answer from outside, and ends the process only for a fault. It starts from clean globals: an input must fail alone as
// it does among others.
// The sanitizers find the faults of memory. What else must hold, a target says with must().
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// Ends the process, so that the input is kept.
void must(bool fact, const char* what);

std::string_view view_of(const std::uint8_t* data, std::size_t size);

// Does the work with alerts kept. True if it came to its end, false if a fatal alert, which is an orderly end, cut it
// off.
bool survives(const std::function<void()>& work);

// The input as a file that lies on no disk. The scanner reads it into memory of just its size, so that one byte too
// many is seen.
class memory_file {
  public:
    explicit memory_file(std::string_view bytes);
    ~memory_file();
    memory_file(const memory_file&) = delete;
    memory_file& operator=(const memory_file&) = delete;
    const std::string& path() const { return name; }

  private:
    int fd;
    std::string name;
};
