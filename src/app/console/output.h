// output.h: everything that a run on the terminal prints: sentences as they change, progress, results, alerts;
// or the same as JSON, one object a line. Results go to standard output, alerts to standard error.
#pragma once

#include <string>

#include "app/console/options.h"
#include "app/words.h"
#include "runtime/oops.h"

void console_open(const console_options& options);

void console_sentence(const sentence& said);  // one sentence, once; a repetition of the last is dropped
void console_flow_sentences();                // the header and the status lines, where they changed
void console_offer();                         // name and sizes of what is on offer
void console_plan();                          // --check: sizes and a line for each decision

void console_scan_progress(double share, const std::string& what, const std::string& item);
void console_install_progress(bool last);  // paced; `last` always
void console_file(int action, const std::string& path, int result);
void console_alert(const exce_class& alert, const std::string& place, int next_window);
void console_problem(const std::string& text);  // one plain line to standard error

bool console_output_arrived();  // false when something could not be written to standard output
// Closes the run's output, in JSON with the end event. Only the first call counts.
void console_end(int status);
