#include "net/answer.h"

#include <algorithm>
#include <charconv>

#include "net/server_address.h"

answer_reader::step answer_reader::fail(const std::string& words) {
    at = place::broken;
    problem = words;
    return step::broken;
}

void answer_reader::start_over() {
    at = place::head;
    current = {};
    line.clear();
    head_bytes = 0;
    left = 0;
    bodiless = has_closing_word = has_keeping_word = false;
}

// True once `line` is a whole one, without its end. A lone line feed ends one too.
bool answer_reader::take_line(std::string_view& bytes) {
    const std::size_t end = bytes.find('\n');
    const std::size_t taken = end == std::string_view::npos ? bytes.size() : end + 1;
    line.append(bytes.substr(0, std::min(taken, max_header_bytes + 1)));
    bytes.remove_prefix(taken);
    if (end == std::string_view::npos) return false;
    head_bytes += line.size();
    line.pop_back();
    if (line.ends_with('\r')) line.pop_back();
    return true;
}

static std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// Whether `word`, in lower case, is one of a list with commas.
static bool lists(std::string_view list, std::string_view word) {
    while (!list.empty()) {
        const std::size_t comma = std::min(list.find(','), list.size());
        if (lower_case(trimmed(list.substr(0, comma))) == word) return true;
        list.remove_prefix(std::min(comma + 1, list.size()));
    }
    return false;
}

// "bytes 5-9/100", "bytes 5-9/*" or "bytes */100".
static void read_range(std::string_view text, answer_head& head) {
    if (!lower_case(text).starts_with("bytes ")) return;
    text.remove_prefix(6);
    const std::size_t slash = text.find('/');
    if (slash == std::string_view::npos) return;
    head.range_total = whole_number(trimmed(text.substr(slash + 1)), INT64_MAX);
    const std::string_view range = trimmed(text.substr(0, slash));
    const std::size_t dash = range.find('-');
    if (dash == std::string_view::npos) return;
    head.range_first = whole_number(range.substr(0, dash), INT64_MAX);
    head.range_last = whole_number(range.substr(dash + 1), INT64_MAX);
}

void answer_reader::header(std::string_view name, std::string_view value) {
    const std::string key = lower_case(name);
    if (key == "content-length") {
        // Two that differ leave open where the next answer begins; one that is no number is no length at all.
        const std::int64_t length = whole_number(value, INT64_MAX);
        if (length < 0 || (current.length >= 0 && current.length != length)) problem = "a length that is none";
        current.length = length;
    } else if (key == "transfer-encoding") {
        if (lower_case(value) == "chunked")
            current.chunked = true;
        else if (lower_case(value) != "identity")
            problem = "a transfer coding that I did not ask for";
    } else if (key == "connection" || key == "proxy-connection") {
        has_closing_word = has_closing_word || lists(value, "close");
        has_keeping_word = has_keeping_word || lists(value, "keep-alive");
    } else if (key == "content-range") {
        read_range(value, current);
    } else if (key == "etag") {
        if (value.size() >= 2 && value.front() == '"' && value.back() == '"') current.etag = value;
    } else if (key == "location") {
        current.location = value;
    }
}

// A line of the head is whole.
answer_reader::step answer_reader::head_line() {
    if (current.status == 0) {
        // Some servers send an empty line behind a body.
        if (line.empty()) return step::more;
        const bool fits = line.size() >= 12 && line.starts_with("HTTP/1.") && line[8] == ' ' &&
                          (line.size() == 12 || line[12] == ' ');
        const std::int64_t status = fits ? whole_number(std::string_view(line).substr(9, 3), 999) : -1;
        if (status < 100) return fail("something that is no answer");
        current.status = static_cast<int>(status);
        current.reason = trimmed(std::string_view(line).substr(std::min<std::size_t>(line.size(), 12)));
        minor = line[7] - '0';
        return step::more;
    }
    if (line.empty()) return end_of_head();
    const std::size_t colon = line.find(':');
    if (colon != std::string::npos && line[0] != ' ' && line[0] != '\t')
        header(std::string_view(line).substr(0, colon), trimmed(std::string_view(line).substr(colon + 1)));
    return step::more;
}

answer_reader::step answer_reader::end_of_head() {
    if (current.status == 101) return fail("another protocol");
    if (current.status < 200) {  // an interim answer; the true one follows
        current = {};
        has_closing_word = has_keeping_word = false;
        problem.clear();
        return step::more;
    }
    if (!problem.empty()) return fail(problem);
    current.keeps = !has_closing_word && (minor >= 1 || has_keeping_word);
    // Both framings at once are how answers are smuggled: the chunks count, and nothing is expected behind them.
    if (current.chunked && current.length >= 0) current.keeps = false;
    if (current.chunked) current.length = -1;
    if (bodiless || current.status == 204 || current.status == 304) {
        current.length = 0;
        current.chunked = false;
    }
    left = std::max<std::int64_t>(current.length, 0);
    if (current.chunked) {
        at = place::chunk_size;
    } else if (current.length < 0) {
        at = place::endless;
        current.keeps = false;
    } else {
        at = left > 0 ? place::counted : place::over;
    }
    return step::head;
}

// "1a" or "1a;extension"; -1 for no number, or for one that no file has.
static std::int64_t chunk_length(std::string_view text) {
    text = trimmed(text.substr(0, text.find(';')));
    std::int64_t length = -1;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), length, 16);
    const bool whole = error == std::errc() && stop == text.data() + text.size() && text[0] != '-';
    return whole ? length : -1;
}

answer_reader::step answer_reader::next(std::string_view& bytes, std::string_view& piece) {
    piece = {};
    for (;;) {
        if (at == place::broken) return step::broken;
        if (at == place::over) {
            start_over();
            return step::end;
        }
        if (bytes.empty()) return step::more;
        if (at == place::endless || at == place::counted || at == place::chunk) {
            std::size_t size = bytes.size();
            if (at != place::endless) size = static_cast<std::size_t>(std::min<std::int64_t>(left, std::ssize(bytes)));
            piece = bytes.substr(0, size);
            bytes.remove_prefix(size);
            if (at == place::endless) return step::body;
            left -= std::ssize(piece);
            if (left == 0) at = at == place::chunk ? place::chunk_end : place::over;
            return step::body;
        }
        const bool whole = take_line(bytes);
        if (head_bytes + (whole ? 0 : line.size()) > max_header_bytes) return fail("endless headers");
        if (!whole) return step::more;
        step found = step::more;
        switch (at) {
            case place::head:
                found = head_line();
                break;
            case place::chunk_size:
                left = chunk_length(line);
                if (left < 0) return fail("a chunk without a length");
                at = left > 0 ? place::chunk : place::trailer;
                head_bytes = 0;  // the lines between chunks are bounded one by one, the chunks by the body's bound
                break;
            case place::chunk_end:
                if (!line.empty()) return fail("a chunk that does not end");
                at = place::chunk_size;
                break;
            default:  // a trailer's lines are passed over, up to the empty one
                if (line.empty()) at = place::over;
                break;
        }
        line.clear();
        if (found != step::more) return found;
    }
}
