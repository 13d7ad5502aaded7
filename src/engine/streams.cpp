#include "engine/streams.h"

#include <algorithm>

#include "engine/directory.h"
#include "engine/stg.h"
#include "net/http.h"
#include "runtime/product.h"
#include "runtime/xtim.h"

next_t next;

static int file_count() {
    return static_cast<int>(sim_info.size());
}

int stream_slot(int stream) {
    return slot_first_stream + stream;
}

std::size_t stream_file(int stream) {
    return static_cast<std::size_t>(next.stream_file[stream]);
}

void streams_start() {
    const int all_done = next.all_done;  // says "complete" for the rest of the run
    next = next_t{};
    next.all_done = all_done;
    next.stream_on[0] = next.stream_fresh[0] = 1;
    if (!is_dvd) next.stream_on[1] = next.stream_fresh[1] = 1;
    next.start_time = xtim.real_time;
    http.forget_announced(true);
}

bool stream_takes_turn(int stream) {
    if (!next.stream_on[stream]) return false;
    if (next.stream_fresh[stream]) {
        next.stream_file[stream] = next.next_file;
        next.next_file = std::min(next.next_file + 1, file_count());
    }
    if (next.stream_file[stream] >= file_count()) return false;
    next.stream_fresh[stream] = 0;
    return true;
}

// How many streams the speed so far is worth; only stream_max of them exist.
static int target_streams() {
    if (is_dvd) return 1;
    if (stg.stream_count) return std::max(stg.stream_count, 1);
    static constexpr struct {
        float above_kb_s;
        int streams;
    } steps[] = {{200, 9}, {150, 8}, {100, 6}, {50, 4}};
    const float speed = (next.down_kb + next.part_kb) / std::max(xtim.real_time - next.start_time, 1.0f);
    for (const auto& step : steps)
        if (speed > step.above_kb_s) return step.streams;
    return 2;
}

void stream_finished_file(int stream) {
    const int target = target_streams(), active = streams_on();
    if (target > active) {
        const auto free = std::find(std::begin(next.stream_on), std::end(next.stream_on), 0);
        if (free != std::end(next.stream_on)) *free = next.stream_fresh[free - next.stream_on] = 1;
    }
    if (target >= active)
        next.stream_fresh[stream] = 1;
    else
        next.stream_on[stream] = 0;
}

void stream_retries(int stream) {
    next.next_file = std::min(next.next_file, next.stream_file[stream]);
    next.stream_fresh[stream] = 0;
}

bool streams_have_work() {
    for (int stream = 0; stream < stream_max; ++stream)
        if (next.stream_on[stream] && next.stream_file[stream] < file_count()) return true;
    return false;
}

int streams_on() {
    return static_cast<int>(std::count(std::begin(next.stream_on), std::end(next.stream_on), 1));
}

float stream_arrived_share(int stream) {
    const auto& transfer = http.slots[stream_slot(stream)];
    if (!transfer) return 0.0f;
    if (transfer->content_len <= 0) return -0.01f;
    return static_cast<float>(static_cast<double>(transfer->received) / static_cast<double>(transfer->content_len));
}

bool streams_wait_for_data() {
    for (int stream = 0; stream < stream_max; ++stream) {
        if (!next.stream_on[stream]) continue;
        if (next.stream_fresh[stream]) {
            if (next.next_file < file_count()) return false;
        } else if (next.stream_file[stream] < file_count() && !http.is_under_way(stream_slot(stream))) {
            return false;
        }
    }
    return true;
}
