// tones.h: the colour of each kind of sentence, a slot of the table of colours.
#pragma once

#include "app/words.h"
#include "gfx/colr.h"

constexpr int colour_of(tone kind) {
    switch (kind) {
        case tone::good_news:
            return colour_good_news;
        case tone::bad_news:
            return colour_bad_news;
        case tone::error:
            return colour_error;
        case tone::plain:
            break;
    }
    return colour_text;
}
