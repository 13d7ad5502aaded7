// host_traits.h: what a run has learnt about a host's way with connections: whether they can be kept, and whether
// several requests may be outstanding on one. Every server starts unproven and is asked one request at a time.
// Threads: main thread only.
#pragma once

#include <string>

struct host_traits {
    bool proven = false;           // a connection has given two answers
    bool one_at_a_time = false;    // it has dropped, shifted or swallowed what was asked ahead
    bool no_reuse = false;         // it closes after each answer without saying so
    bool shaky = false;            // its last connection gave nothing: only what a slot waits for is asked
    int short_closes = 0;          // connections asked ahead that closed after at most one answer
    int single_answers = 0;        // connections that closed unannounced after exactly one
    int silences = 0;              // with more than one outstanding
    bool packs_otherwise = false;  // its files have other lengths than the catalogue has, and are right
    std::string suspect;           // path of a file that came wrong among others and is asked for once more alone

    bool bears_asking_ahead() const { return proven && !one_at_a_time && !no_reuse; }
};

// Each is told once for a connection or a file.
void note_answer(host_traits& host, int answers_of_the_connection, bool good);
// It ended with requests unanswered. `announced`: it had said that it would.
void note_lost(host_traits& host, int answers, bool asked_ahead, bool announced);
void note_silence(host_traits& host);
// A file that came among others, or with `alone` by itself, was not what was asked for. True if the same server is to
// be asked once more, as it may only have lost count of its answers.
bool note_wrong_file(host_traits& host, const std::string& path, bool alone);
