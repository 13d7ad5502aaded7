// words.h: what an install says and asks, in words and without a place or a colour: the window draws it, the console
// prints it.
// Threads: main thread only; the sentences are made anew from the state of the install with each call.
#pragma once

#include <string>

#include "engine/front.h"
#include "engine/stg.h"
#include "engine/streams.h"

// What kind of news a sentence is. Each face has a colour for it.
enum class tone { plain, good_news, bad_news, error };

struct sentence {
    std::string text;
    tone kind = tone::plain;
};

sentence header_sentence();  // what the program is doing, in one sentence; never empty

// What there is to install, how far it is, how it ended. Lines that have nothing to say are empty.
struct status_sentences {
    sentence line[3];
};
status_sentences status_lines();

// What the user agrees to, a paragraph each.
extern const char* const agreement[3];

// The question about a file that the user changed: one line above the file's path and one below it.
struct changed_question {
    const char *above, *below;
};
changed_question question_about(bool removing);
// What the user can answer.
const char* answer_words(changed_answer answer, bool removing);

const char* scan_phase_words(scan_phase phase);

// "12.34 Meg" or, from 1000 on, "1.23 Gig", of kilobytes of 1000 bytes.
void set_size_str(float kilobytes, std::string* out);

// How far the install is and how fast.
struct install_pace {
    double done_kb = 0;       // downloaded, files in flight included
    double rate_kb_s = 0;     // over the whole install, seconds being at least one
    double seconds_left = 0;  // not a number while nothing has come
};
install_pace get_install_pace(const next_t& table = next);

std::string time_left_text(double seconds);  // "75 seconds", "12 minutes", "3 hours"
