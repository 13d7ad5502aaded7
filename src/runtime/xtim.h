// xtim.h: the frame clock. Everything else reads the real time, the smoothed frame period and the one-frame flags from
// here and never asks the system clock itself.
// Units: floats in seconds, microsecs in microseconds.
// Periods are measured over ten frames and only creep toward the truth, so that a stall distorts nothing.
// Threads: updated on the main thread; others may read real_time.
#pragma once

#include <cstdint>

// Index of the flags in once_sim and once_act: times a second, 01 meaning once in ten seconds.
enum { ot01, ot02, ot05, ot1, ot2, ot5, ot10, ot20, ot40, once_count };

class xtim_class {
  public:
    // One frame. `top` is the logical window that is open (window_ids.h): on questions nothing is measured, so that a
    // long stay does not read as one long frame.
    void xtim_update(int top = 0);
    // The same with the clock told, in seconds from any start.
    void update_at(double now, int top);

    static std::int64_t microsecs();                     // since the first call, which returns 0
    static double seconds();                             // the same in seconds
    static std::int32_t del_time(std::int64_t* last);    // since the previous reading; null uses one shared store
    void profile_chart(const char* label, int total);    // to the log, with `profiling` set
    void current_month_day(int* month, int* day) const;  // month from 0, day from 1
    static void xtim_hrs_min_sec(float t, float* hrs, float* min, float* sec);

    int xtim_running = 1;   // of the family's programs; here the clock always runs
    float prd_act = 0.02f;  // smoothed frame period
    float prd_sim = 0.02f;  // the same, for what is simulated
    float prd_sim_signed = 0.0f;
    float prd_ratio = 1.0f;         // last ratio of measured to smoothed period, 0.5 to 1.5
    int frame_count = 0;            // raised by the frame loop
    float real_time = 0.0f;         // since the first update
    float sim_time = 0.0f;          // not advanced here
    int day_of_year = 90;           // from 0
    int once_sim[once_count] = {};  // 1 on a frame on which the period of sim_time has passed
    int once_act[once_count] = {};  // the same by real_time
    int profiling = 0;
    int top_window = 0;  // as last told

  private:
    struct smoothing {
        double last_time = 0;  // of the last measurement
        int frames = 0;        // since then
        float period = 0.02f;
    };
    void smooth(smoothing& store, double now);
    bool started = false;
    double first_time = 0;
    smoothing window_open, no_window;  // a store each, by whether a logical window is open
    const smoothing* measured_last = nullptr;
    float sim_fired[once_count] = {}, act_fired[once_count] = {};  // clock of each flag's last firing
    std::int64_t profile_last = 0, profile_total_last = 0;         // microseconds
};

extern xtim_class xtim;
