#include "app/words.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "app/dest.h"
#include "engine/flow.h"
#include "engine/stg.h"
#include "net/http.h"
#include "net/server_list.h"
#include "runtime/hl_string.h"
#include "runtime/xtim.h"

const char* const agreement[3] = {
    "Use Velaris for whatever you like.", "You agree to not make copies of Velaris.",
    "You agree to not distribute the artwork from Velaris, OR ANY DERIVATIVE OF THAT ARTWORK, without permission "
    "from Tarvex."};

changed_question question_about(bool removing) {
    if (removing)
        return {"I am about to DELETE:",
                "because we no longer use this file, but it appears you have modified it. What to do?"};
    return {"I am about to install:", "but it appears you have modified this file. What to do?"};
}

const char* answer_words(changed_answer answer, bool removing) {
    switch (answer) {
        case changed_answer::do_it:
            return removing ? "DELETE THE OLD FILE" : "OVERWRITE THE OLD FILE";
        case changed_answer::keep:
            return "KEEP THE OLD FILE";
        case changed_answer::do_all:
            return removing ? "DELETE EVERY OLD FILE IN THIS DIRECTORY" : "OVERWRITE EVERY OLD FILE IN THIS DIRECTORY";
        case changed_answer::keep_all:
            return "KEEP EVERY OLD FILE IN THIS DIRECTORY";
        case changed_answer::backup:
            return removing ? "KEEP A COPY AND DELETE" : "KEEP A COPY AND OVERWRITE";
        default:
            return "CANCEL THE WHOLE INSTALLATION!";
    }
}

const char* scan_phase_words(scan_phase phase) {
    return phase == scan_phase::reading_catalogue ? "Currently SCANNING the directory text file."
                                                  : "Currently EXAMINING the hard disk.";
}

void set_size_str(float kilobytes, std::string* out) {
    const float meg = kilobytes * 0.001f;
    if (meg < 1000) {
        flt_to_str(meg, out, 2, 1, 0);
        *out += " Meg";
    } else {
        flt_to_str(meg * 0.001f, out, 2, 1, 0);
        *out += " Gig";
    }
}

static std::string size_text(float kilobytes) {
    std::string text;
    set_size_str(kilobytes, &text);
    return text;
}

// Share of the catalogue that is here, in percent; -1 while its length is not known.
static std::int64_t check_percent() {
    const auto& transfer = http.slots[slot_directory];
    if (!transfer) return 0;
    if (transfer->content_len < 0) return -1;
    if (transfer->content_len == 0) return 100;
    return transfer->received * 100 / transfer->content_len;
}

// While the catalogue is on its way.
static std::string check_text() {
    const std::string start = "I am checking the net for the latest version of Velaris right now, and I am ";
    const std::int64_t percent = check_percent();
    if (percent == -1) return start + "connecting to the server...";
    return start + std::to_string(percent) + "% done checking.";
}

sentence header_sentence() {
    if (next.all_done) return {"INSTALLATION COMPLETE!", tone::good_news};
    if (stg.server_cnt == -1) return {"Looking for servers... you need internet for this..."};
    if (stg.server_cnt == 0) return {"I could not find any servers to get Velaris from!", tone::bad_news};
    switch (stg.dir_state) {
        case dir_fetching:
            return {check_text()};
        case dir_unread:
            return {"I have downloaded the directory of files I need, and am now trying to read it..."};
        case dir_failed:
            return {std::string("I can not find a version of Velaris on the net! Grab a new installer from ") +
                        maker_site + ", or check net service!",
                    tone::bad_news};
        default:
            break;
    }
    if (stg.install_state == install_running) return {"OK I am installing this now..."};
    if (!path_is_to_a_sim())
        return {
            "To make the download a LOT faster, if you have an earlier version of Velaris 9 on your hard drive, "
            "choose that with the DESTINATION button below, and I will UPDATE THAT FOLDER!",
            tone::plain};
    return {
        "You have selected an earlier version of Velaris in the DESTINATION field below, so I will update that "
        "installation  by just grabbing new updated files!",
        tone::plain};
}

install_pace get_install_pace(const next_t& table) {
    install_pace pace;
    // A file of unknown length counts as a little below nothing.
    pace.done_kb = std::max(double{table.down_kb} + table.part_kb, 0.0);
    const double elapsed = std::max(double{xtim.real_time} - table.start_time, 1.0);
    pace.rate_kb_s = pace.done_kb / elapsed;
    const double remaining = std::max(flow.tot_down_req - pace.done_kb, 0.0);
    pace.seconds_left = remaining / pace.rate_kb_s;
    return pace;
}

std::string time_left_text(double seconds) {
    // A speed of nothing gives a time without end or no number at all; neither fits an integer.
    if (!std::isfinite(seconds)) return "0 hours";
    if (seconds < 120) return std::to_string(static_cast<std::int64_t>(seconds)) + " seconds";
    if (seconds < 7200) return std::to_string(static_cast<std::int64_t>(seconds / 60)) + " minutes";
    return std::to_string(static_cast<std::int64_t>(seconds / 3600)) + " hours";
}

// What becomes of the file in work.
static std::string file_text() {
    const std::string& name = crnt_file_name;
    switch (stg.file_action) {
        case action_deleting:
            return "Deleting " + name + " because that file is no longer needed!";
        case action_downloading:
            return "Downloading and installing " + name + ", currently " +
                   std::to_string(static_cast<int>(std::max(stg.file_rat, 0.0f) * 100)) + "% done with that file.";
        case action_duplicate:
            return "duplicate filename through file " + name +
                   ", but not installing it because you already have this file.";
        default:
            return "Browsing through file " + name + ", but not installing it because you don't need this file.";
    }
}

// How far all of it is.
static std::string done_text() {
    std::string percent;
    flt_to_str(100 * flow.totl_inst_rat, &percent, 3, 1, 0);
    return percent + "% done with the internet install, having installed " + size_text(next.disk_kb) + " of " +
           size_text(flow.tot_disk_req) + " for the internet install.";
}

// How fast it goes, and for how long yet.
static std::string pace_text() {
    const install_pace pace = get_install_pace();
    return "About " + time_left_text(pace.seconds_left) + " left in the install, downloading at " +
           std::to_string(static_cast<std::int64_t>(pace.rate_kb_s)) + " kilobytes/second with " +
           std::to_string(streams_on()) + " simultaneous download streams.";
}

// Before INSTALL: what would be fetched, and whether the disk holds it.
static void idle_lines(sentence (&line)[3]) {
    if (stg.dir_state == dir_fetching) {
        line[0].text = "I am figuring out what the latest version of Velaris is right now...";
        line[1].text = "This may take a moment as I download the latest list of Velaris files...";
    } else if (stg.dir_state == dir_unread) {
        line[0].text = "I am comparing what you have with the latest version of Velaris...";
    } else if (flow.tot_disk_req == 0) {
        line[0].text = "Your copy of Velaris is already the latest version.";
        line[1].text =
            "(Remember, the BETA installer only checks for the latest BETA version, and the FULL installer checks only "
            "for the latest FULL version of Velaris).";
        line[2].text = "This is a beta installer.";
    } else {
        line[0].text = "You are about to install " + size_text(flow.tot_disk_req) + " of files to get " +
                       server_list.install_name + ".";
        if (!(flow.tot_availabl > 0)) return;
        line[1].text =
            "You have " + size_text(flow.tot_availabl) + " of drive space available for the selected directory.";
        line[2] = flow.disk_space_avail ? sentence{"You may install at will.", tone::good_news}
                                        : sentence{"You don't have enough disk space to install this!", tone::bad_news};
    }
}

// After the install, until another folder is chosen.
static void over_lines(sentence (&line)[3]) {
    if (!stg.install_failed) {
        line[0].text = "INSTALLATION COMPLETE!";
        return;
    }
    line[0] = {"The installation was not completed because an error occurred.", tone::error};
    line[1] = {"Velaris is not fully installed or updated and may not run correctly.", tone::error};
    line[2] = {
        "Please try a different server, hard drive, or directory, or contact Customer Support for help with this "
        "problem.",
        tone::error};
}

// Over everything else, for as long as no server has the file in work.
static void failing_lines(sentence (&line)[3]) {
    line[0] = {"I can NOT download the file '" + crnt_file_path + "'!", tone::error};
    line[1] = {
        "Your internet connection may not be working, or the server could be undergoing maintainance or an "
        "upgrade right now.",
        tone::error};
    line[2] = {"I am trying another server now to see if I can still get you a download...", tone::error};
}

status_sentences status_lines() {
    status_sentences lines;
    switch (stg.install_state) {
        case install_idle:
            idle_lines(lines.line);
            break;
        case install_running:
            lines.line[0].text = file_text();
            lines.line[1].text = done_text();
            if (flow.totl_inst_rat > 0.01f) lines.line[2].text = pace_text();
            break;
        default:
            over_lines(lines.line);
    }
    if (stg.down_failed) failing_lines(lines.line);
    return lines;
}
