// What a web server answers, to several requests on one connection. It reaches the transfers once in one piece and once
// in many: that must make no difference.
#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include "fuzz/fuzz.h"
#include "net/answer.h"
#include "net/down.h"

namespace {

constexpr std::int64_t most_bytes = 100'000;

// Of one that failed, how much had come before depends on the pieces.
std::string text_of(const down_class& d) {
    if (d.fate == down_class::outcome::failed) return d.why();
    return std::to_string(static_cast<int>(d.fate)) + " " + std::to_string(d.status) + " " + d.response() + " " +
           std::to_string(d.content_len) + " " + std::to_string(d.received) + " " + d.server.origin() + d.target + " " +
           d.why() + " " + std::string(d.body.begin(), d.body.end());
}

// Three transfers, asked one behind the other; what is not over once its answer is through is asked again at the end.
// Returns what became of each.
std::vector<std::string> run(std::string_view answers, bool in_pieces) {
    std::vector<std::string> seen;
    std::minstd_rand dice(static_cast<unsigned>(std::hash<std::string_view>()(answers)));
    std::vector<std::unique_ptr<down_class>> asked;
    for (const char* path : {"/a", "/b c", "/d"})
        asked.push_back(std::make_unique<down_class>(http_request{"host", path, "", most_bytes}));
    answer_reader reader;
    route_t route;
    std::size_t at = 0;
    for (const auto& d : asked)
        d->request_text(route, true);
    bool usable = true;
    while (!answers.empty() && usable) {
        const std::size_t longest = std::min<std::size_t>(answers.size(), 60000);
        const std::size_t piece =
            in_pieces ? std::min<std::size_t>(longest, 1 + dice() % (1 + dice() % 5000)) : longest;
        std::string_view bytes = answers.substr(0, piece), part;
        answers.remove_prefix(piece);
        bool more = false;
        while (usable && !more && at < asked.size()) {
            down_class& d = *asked[at];
            switch (reader.next(bytes, part)) {
                case answer_reader::step::more:
                    more = true;
                    break;
                case answer_reader::step::head:
                    must(d.fate == down_class::outcome::running, "only what runs is answered");
                    usable = d.begin_answer(reader.head());
                    break;
                case answer_reader::step::body:
                    usable = d.take(part);
                    break;
                case answer_reader::step::broken:
                    must(!reader.why().empty(), "what is wrong is told");
                    usable = false;
                    break;
                case answer_reader::step::end:
                    d.end_answer();
                    if (d.fate == down_class::outcome::running)
                        must(!d.request_text(route, true).empty(), "it can be asked again");
                    else
                        ++at;
                    break;
            }
            must(d.received >= 0 && d.received <= most_bytes, "a body has no more than it may");
            must(std::ssize(d.body) == d.received, "what is held is what has come");
        }
        if (at == asked.size()) break;
    }
    for (const auto& d : asked) {
        must(d->fate != down_class::outcome::failed || !d->why().empty(), "a failure has words");
        must(d->fate != down_class::outcome::complete || d->IsComplete(), "what is complete is whole");
        seen.push_back(text_of(*d));
    }
    return seen;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view answers = view_of(data, size);
    survives(
        [&] { must(run(answers, false) == run(answers, true), "answers mean the same in whatever pieces they come"); });
    return 0;
}
