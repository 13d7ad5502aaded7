#include "net/line.h"

#include <algorithm>

#include "runtime/xtim.h"

static char read_block[65536];  // shared by all lines: one of them at a time is at work
// Of one turn, so that a fast server does not keep the others waiting.
static constexpr int most_reads = 8;

void line_class::ask(const down_ptr& next, bool keeps) {
    out += next->request_text(link.route(), keeps);
    next->stat = is_open() ? down_sending : down_connecting;
    if (asked.empty()) last_bytes = xtim.real_time;
    asked.push_back(next);
    asked_ahead = asked_ahead || asked.size() > 1;
    next->was_asked_ahead = asked_ahead;
    if (!keeps) keeping = false;
}

void line_class::close(const std::string& words) {
    if (is_over()) return;
    over = true;
    problem = words;
}

void line_class::spoke() {
    last_bytes = xtim.real_time;
    if (!asked.empty()) asked.front()->last_data = last_bytes;
}

void line_class::turn(std::int64_t& allowance) {
    if (is_over()) return;
    const auto before = link.now();
    const auto now = link.advance();
    if (now != before) last_bytes = xtim.real_time;
    if (now != connection_class::state::open) return;
    if (!out.empty()) {
        const long taken = link.write(out.data(), std::ssize(out));
        if (taken > 0) out.erase(0, static_cast<std::size_t>(taken));
        for (const down_ptr& t : asked)
            if (t->stat == down_connecting || t->stat == down_sending)
                t->stat = out.empty() ? down_waiting : down_sending;
    }
    read_some(allowance);
}

void line_class::read_some(std::int64_t& allowance) {
    for (int reads = 0; reads < most_reads && allowance > 0 && !is_over(); ++reads) {
        const long wanted = static_cast<long>(std::min<std::int64_t>(allowance, sizeof read_block));
        const long size = link.read(read_block, wanted);
        if (size <= 0) return;
        allowance -= size;
        last_bytes = xtim.real_time;
        take({read_block, static_cast<std::size_t>(size)});
    }
}

// The rest of its answer is not worth reading.
void line_class::end_first() {
    ++answers;
    ended.push_back(asked.front());
    asked.pop_front();
    close("");
}

void line_class::take(std::string_view bytes) {
    std::string_view piece;
    while (!is_over()) {
        if (asked.empty()) {
            if (!bytes.empty()) close("sent more than it was asked for");
            return;
        }
        down_class& first = *asked.front();
        switch (reader.next(bytes, piece)) {
            case answer_reader::step::more:
                return;
            case answer_reader::step::head:
                keeping = keeping && reader.head().keeps;
                if (!first.begin_answer(reader.head())) end_first();
                break;
            case answer_reader::step::body:
                bytes_in += std::ssize(piece);
                if (!first.take(piece)) end_first();
                break;
            case answer_reader::step::broken:
                close("sent " + reader.why());
                break;
            case answer_reader::step::end: {
                ++answers;
                const bool closes = !keeping;
                first.end_answer();
                // What nobody asked for is most likely the rest of a body that is longer than its head says.
                if (asked.size() == 1 && !bytes.empty() && first.fate == down_class::outcome::complete)
                    first.fail("sent more than the " + std::to_string(first.received) + " bytes that it announced");
                ended.push_back(asked.front());
                asked.pop_front();
                if (!asked.empty()) asked.front()->last_data = xtim.real_time;
                if (closes) close("");
                break;
            }
        }
    }
}
