// tones.h: the colour of each kind of sentence, a slot of the table of colours.
#pragma once

#include "app/words.h"
#include "gfx/colr.h"
#include "ui/shapes.h"

// What is told in red is drawn a little darker than the table has it, so that it reads on paper.
inline int colour_of(tone kind) {
    switch (kind) {
        case tone::good_news:
            return colour_good_news;
        case tone::bad_news:
        case tone::error:
            return colour_of(tone_bad);
        case tone::plain:
            break;
    }
    return colour_text;
}
