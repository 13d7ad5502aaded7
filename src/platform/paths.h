// paths.h: how a path is taken apart. Paths are byte strings with "/"; nothing here looks at a disk, and a view leads
// into the caller's text.
#pragma once

#include <cstddef>
#include <string_view>

constexpr std::size_t path_buffer_size = 500;  // every path fits as C text, its end included

// The pieces between the separators, empty ones too: one more than there are separators, so "" is one empty piece.
//   for (const std::string_view part : path_parts(path)) ...
class path_parts {
  public:
    explicit constexpr path_parts(std::string_view path, char separator = '/') : text(path), mark(separator) {}

    struct end_of_parts {};
    class iterator {
      public:
        constexpr iterator(std::string_view text, char separator) : rest(text), mark(separator) {}
        constexpr std::string_view operator*() const { return rest.substr(0, rest.find(mark)); }
        constexpr iterator& operator++() {
            const std::size_t at = rest.find(mark);
            done = at == std::string_view::npos;
            if (!done) rest.remove_prefix(at + 1);
            return *this;
        }
        constexpr bool operator==(end_of_parts) const { return done; }

      private:
        std::string_view rest;
        char mark;
        bool done = false;
    };
    constexpr iterator begin() const { return {text, mark}; }
    static constexpr end_of_parts end() { return {}; }

  private:
    std::string_view text;
    char mark;
};

// The folders that are passed on the way to what `path` names, from the first down, without their last "/": "/a/b/c"
// and "/a/b/" pass "/a" and "/a/b". The root itself is not among them.
class folders_passed {
  public:
    explicit constexpr folders_passed(std::string_view path) : text(path) {}

    struct end_of_folders {};
    class iterator {
      public:
        explicit constexpr iterator(std::string_view path) : text(path), slash(path.find('/', 1)) {}
        constexpr std::string_view operator*() const { return text.substr(0, slash); }
        constexpr iterator& operator++() {
            slash = text.find('/', slash + 1);
            return *this;
        }
        constexpr bool operator==(end_of_folders) const { return slash == std::string_view::npos; }

      private:
        std::string_view text;
        std::size_t slash;
    };
    constexpr iterator begin() const { return iterator(text); }
    static constexpr end_of_folders end() { return {}; }

  private:
    std::string_view text;
};

// Where a path's last part begins. A "/" at the very end belongs to that part: "a/b" and "a/b/" both split behind "a/".
constexpr std::size_t folder_length(std::string_view path) {
    if (path.size() < 2) return 0;
    const std::size_t slash = path.rfind('/', path.size() - 2);
    return slash == std::string_view::npos ? 0 : slash + 1;
}

// What is before the last part, with its "/"; empty when there is nothing. Again and again it leads up to the top.
constexpr std::string_view folder_of(std::string_view path) {
    return path.substr(0, folder_length(path));
}

constexpr std::string_view last_part(std::string_view path) {
    return path.substr(folder_length(path));
}

// Without one "/" at the end. The root keeps its own, or it would read as the current folder.
constexpr std::string_view without_slash(std::string_view path) {
    return path.size() > 1 && path.ends_with('/') ? path.substr(0, path.size() - 1) : path;
}
