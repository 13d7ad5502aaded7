// options.h: the command line: tables of options, from which the check of what was typed, the programs' own part of
// --help and the suggestion for a misspelled option are made, so that none of them can know more than the others.
// Errors: nothing ends the process; what is wrong is told in words of one line.
// Threads: main thread only.
#pragma once

#include <span>
#include <string>
#include <vector>

struct option_row {
    const char* name;   // with its dashes
    const char* value;  // what follows the name, as --help shows it: "=N", or " FOLDER" for an argument of its own;
                        // null for a plain switch
    const char* words;  // what --help says
};

struct option_table {
    const char* heading;
    std::span<const option_row> rows;  // in the order of --help
    const char* closing;               // the last words of --help
    // Whether --pref:KEY=VALUE may name this key; null for a program that has no preferences.
    bool (*has_setting)(const std::string& key);
};
extern const option_table installer_options;

std::string usage_text(const option_table& table);  // the program's own part of --help

struct wrong_option {
    std::string name;     // as the parser stores it
    std::string problem;  // one plain sentence; holds no control bytes
};
// What neither the family of programs nor this one knows, a value on a plain switch, a missing value, and a folder that
// cannot be used, in the order of the command line. Needs no parser and touches nothing.
std::vector<wrong_option> wrong_options(int argc, char* const* argv, const option_table& table);

// For the time before the parser has run: the option stands on the command line, with or without a value; one stands
// there that only prints something about the program and ends it.
bool stands_in(int argc, char* const* argv, const char* name);
bool only_informs(int argc, char* const* argv);

// The folder that "-path FOLDER" names, as an absolute path that ends in one "/". Empty where none is named, or none
// that can be used.
std::string path_option(int argc, char* const* argv);

// The options that mean the same in the window and on the console. False when the value cannot be used; `problem` tells
// why in one sentence.
bool list_host_option(std::string& host, std::string& problem);  // the host it names, else the built-in one
bool target_os_option(int& target_os, std::string& problem);     // left alone where nothing is said
bool limit_rate_option(std::string& problem);                    // into the pool; left alone where nothing is said
bool scale_option(std::string& problem);                         // the window takes it itself
// --verify, --public_key and --allow_older, put into effect.
bool trust_options(std::string& problem);
