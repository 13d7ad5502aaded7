// log.h: the one log of a run, "Log.txt", rewritten at every start. Plain lines, no levels, no times.
// It lies in the application's folder where that can be written, else in the state folder; where neither can be had the
// stream stays failed and every write goes nowhere. The log never fails visibly.
#pragma once

#include <fstream>
#include <string>

extern std::ofstream xer;

void open_log();           // truncates; real numbers in fixed notation
void write_log_header();   // version, build date, machine, folder; flushed
std::string log_folder();  // where the log, the crash log and the memory report lie; empty before open_log or if none
