#include "net/rate.h"

#include <algorithm>
#include <climits>
#include <string_view>

#include "net/server_address.h"

static constexpr double saved_seconds = 0.1, piece_seconds = 0.02;

std::int64_t rate_limit::allowance(double time) {
    if (now() <= 0) return INT64_MAX;
    const double rate = now();
    if (counted >= 0) saved = std::min(saved + (time - counted) * rate, rate * saved_seconds);
    counted = time;
    // In pieces of some size: a read for every byte would be all that the processor does.
    return saved >= std::max(rate * piece_seconds, 1.0) ? static_cast<std::int64_t>(saved) : 0;
}

void rate_limit::spend(std::int64_t bytes) {
    if (now() > 0) saved -= static_cast<double>(bytes);
}

double rate_limit::next_allowance(double time) const {
    if (now() <= 0) return 0;
    const double rate = now(), missing = std::max(rate * piece_seconds, 1.0) - saved;
    return std::max(missing / rate - (counted >= 0 ? time - counted : 0), 0.0);
}

bool read_rate(const char* text, int& bytes_a_second) {
    std::string_view number = text;
    std::int64_t unit = 1;
    if (number.ends_with('k')) unit = 1000;
    if (number.ends_with('M')) unit = 1'000'000;
    if (unit > 1) number.remove_suffix(1);
    const std::int64_t count = whole_number(number, INT_MAX / unit);
    if (count < 0) return false;
    bytes_a_second = static_cast<int>(count * unit);
    return true;
}
