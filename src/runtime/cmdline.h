// cmdline.h: the arguments as a map from option name, dashes included, to value. There is no table of legal options: an
// option means something where code asks for it by name. Which ones a program takes is checked by its own table before.
// Threads: filled once at start-up, by the main thread; then any may ask.
#pragma once

#include <map>
#include <string>

class UTL_cmdline {
  public:
    void init_unix(int argc, char* const* argv);  // logs each option; may end the process (--help, --cmnds, --version)
    void init_win(const std::string& text);       // one string, no quoting
    bool has_option(const std::string& name) const;
    std::string get_option(const std::string& name) const;  // empty when absent or without a value
    void clear() { options.clear(); }
    void forget(const std::string& name) { options.erase(name); }

  private:
    void init_common() const;
    void set(const std::string& name, const std::string& value);
    std::map<std::string, std::string> options;
};

extern UTL_cmdline cmdline;

// What --help prints: the same text in all programs of the family, to the letter.
extern const char* const family_usage;

// The program's own part of --help, behind the text that the family shares. Set before init_unix.
extern const char* cmdline_own_usage;
