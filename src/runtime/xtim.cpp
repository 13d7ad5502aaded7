#include "runtime/xtim.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "runtime/log.h"
#include "runtime/window_ids.h"

xtim_class xtim;

static constexpr int frames_measured = 10;
static constexpr float shortest_period = 0.0010000999f, longest_period = 0.05263158f;  // about 1/999 and 1/19 second
static constexpr float once_period[once_count] = {10, 5, 2, 1, 0.5f, 0.2f, 0.1f, 0.05f, 0.025f};

// The fourth root lets the estimate creep: one odd measurement moves it by little more than a tenth.
void xtim_class::smooth(smoothing& store, double now) {
    // Time spent elsewhere, on a modal screen or with the other store, is no part of these frames.
    if (wind_is_question(top_window) || measured_last != &store) {
        store.last_time = now;
        store.frames = 0;
    } else if (++store.frames == frames_measured) {
        const double measured = (now - store.last_time) / frames_measured;
        prd_ratio = static_cast<float>(std::clamp(measured / static_cast<double>(store.period), 0.5, 1.5));
        store.period = std::clamp(store.period * std::pow(prd_ratio, 0.25f), shortest_period, longest_period);
        store.last_time = now;
        store.frames = 0;
    }
    measured_last = &store;
    prd_act = prd_sim = prd_sim_signed = store.period;
}

// The difference counts by its size, so that a clock that was set back fires again. The clock is stored, not a multiple
// of the period: rates are slightly low and errors do not add up.
static void raise_flags(float clock, int (&flags)[once_count], float (&fired)[once_count]) {
    for (int i = 0; i < once_count; ++i) {
        flags[i] = std::fabs(clock - fired[i]) > once_period[i];
        if (flags[i]) fired[i] = clock;
    }
}

void xtim_class::update_at(double now, int top) {
    if (!started) first_time = now;
    started = true;
    top_window = top;
    const double since_start = now - first_time;
    real_time = static_cast<float>(since_start);
    smooth(top ? window_open : no_window, since_start);
    raise_flags(sim_time, once_sim, sim_fired);
    raise_flags(real_time, once_act, act_fired);
}

void xtim_class::xtim_update(int top) {
    update_at(seconds(), top);
}

std::int64_t xtim_class::microsecs() {
    const auto now = std::chrono::steady_clock::now();
    static const auto base = now;  // so that the first call is exactly 0
    return std::chrono::duration_cast<std::chrono::microseconds>(now - base).count();
}

double xtim_class::seconds() {
    return static_cast<double>(microsecs()) / 1e6;
}

std::int32_t xtim_class::del_time(std::int64_t* last) {
    static std::int64_t shared = 0;
    std::int64_t& store = last ? *last : shared;
    const std::int64_t now = microsecs();
    const std::int64_t passed = now - store;
    store = now;
    return static_cast<std::int32_t>(passed);
}

void xtim_class::profile_chart(const char* label, int total) {
    if (!profiling) return;
    char text[160];
    std::snprintf(text, sizeof text, "%s=%6.0f | ", label, static_cast<double>(del_time(&profile_last)) * 0.1);
    xer << text;
    if (!total) return;
    std::snprintf(text, sizeof text, "   total: %5.3f sec for topwi=%d\n",
                  static_cast<double>(del_time(&profile_total_last)) / 1e6, top_window);
    xer << text;
}

void xtim_class::current_month_day(int* month, int* day) const {
    static constexpr int days_in_month[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    int rest = day_of_year;
    *month = 0;
    while (*month < 11 && rest >= days_in_month[*month])
        rest -= days_in_month[(*month)++];
    *day = rest + 1;
}

void xtim_class::xtim_hrs_min_sec(float t, float* hrs, float* min, float* sec) {
    *hrs = std::trunc(t / 3600);
    const float rest = t - *hrs * 3600;
    *min = std::trunc(rest / 60);
    *sec = std::trunc(rest - *min * 60);
}
