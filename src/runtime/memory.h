// memory.h: the program's allocator and the report on memory that every alert of level 1 and 2 leaves behind.
// The global operators new and delete (operators.cpp) stand on nedmalloc and nedfree. Those keep nothing of their own:
// they run before the first constructor and after the last destructor.
// Errors: the allocator answers null, the operators throw std::bad_alloc; the report never fails visibly.
// Threads: the allocator is safe everywhere; the report is written by the main thread.
#pragma once

#include <malloc.h>

#include <cstddef>
#include <cstdint>

void* nedmalloc(std::size_t size);  // null when there is no memory
void nedfree(void* memory);
struct mallinfo2 nedmallinfo();  // usmblks: the most that the heaps ever held

// A size for printing: the number with the suffix 'G', 'M', 'K' or 'B' that keeps at least two digits of weight.
unsigned long long mem_to_number(unsigned long long bytes);
char mem_to_suffix(unsigned long long bytes);

enum : unsigned char { share_copy_on_write = 1, share_private, share_empty, share_shared, share_true_shared };
const char* sm_string(unsigned char share_mode);

// Writes the report, one for each place of an alert and run, to "MemoryLog.txt" in the log's folder: the first of a run
// begins the file anew. What the system does not tell is 0; nothing is raised.
void dump_mem_stats(const char* reason);
void DumpMemCmd();

// Where the report goes when no folder takes the file.
enum class mem_report_place { standard_output, standard_error, nowhere };
extern mem_report_place mem_report_without_folder;

// A pool of blocks of one size, filled from the front and given back as a whole.
class UTL_lazy_mempool {
  public:
    UTL_lazy_mempool() = default;
    ~UTL_lazy_mempool();
    UTL_lazy_mempool(const UTL_lazy_mempool&) = delete;
    UTL_lazy_mempool& operator=(const UTL_lazy_mempool&) = delete;
    void dump() const;  // to the log

    static constexpr int block_size = 32768;
    static float global_total;  // bytes of all pools
    struct block {
        block* next;
    };

    unsigned long allocated = 0, wasted = 0;  // bytes
    block* blocks = nullptr;                  // from nedmalloc, owned
    char *cursor = nullptr, *limit = nullptr;
    unsigned long ready = 0;  // bytes
};
