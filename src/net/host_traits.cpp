#include "net/host_traits.h"

void note_answer(host_traits& host, int answers, bool good) {
    host.shaky = !good;
    if (answers >= 2) host.proven = true;
}

void note_lost(host_traits& host, int answers, bool asked_ahead, bool announced) {
    if (answers == 0) host.shaky = true;
    // A server may close at any time, and may destroy answers on their way when it does. One that does so at once,
    // twice, does it because of what was asked ahead.
    if (asked_ahead && answers <= 1 && ++host.short_closes >= 2) host.one_at_a_time = true;
    if (!host.proven && !announced && answers == 1 && ++host.single_answers >= 2) host.no_reuse = true;
}

void note_silence(host_traits& host) {
    if (++host.silences >= 2) host.one_at_a_time = true;
}

bool note_wrong_file(host_traits& host, const std::string& path, bool alone) {
    if (alone) {
        // The file is wrong there however it is asked for, so asking ahead was not to blame.
        if (host.suspect == path && host.short_closes < 2 && host.silences < 2) host.one_at_a_time = false;
        host.suspect.clear();
        return false;
    }
    host.one_at_a_time = true;
    host.suspect = path;
    return true;
}
