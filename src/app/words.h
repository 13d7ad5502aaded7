// words.h: the sentences of the main screen, made from the state of the install. The window draws them, the console
// prints them.
#pragma once

#include <string>

#include "engine/stg.h"

// Slots of the colour table.
enum : int { colour_bad_news = 1, colour_good_news = 13, colour_text = 46, colour_error = 69 };

struct sentence {
    std::string text;
    int colour = colour_text;
};

sentence header_sentence();

struct status_sentences {
    sentence line[3];
};
status_sentences status_lines();

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
