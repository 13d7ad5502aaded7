#include "platform/process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "platform/machine.h"
#include "support/child.h"
#include "support/scratch.h"

TEST(Children, get_their_words_untouched_a_quiet_output_and_SIGPIPE_and_leave_no_zombie) {
    const scratch folder;
    const std::string pipe = folder / "report";  // reading waits for a detached child, however slow it is
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    ignore_sigpipe();
    const std::string script =
        "#!/bin/sh\nsh -c 'kill -PIPE $$'; state=$?\n"
        "for fd in 0 1 2; do state=\"$state $(readlink /proc/$$/fd/$fd)\"; done\n"
        "[ -e /proc/$$/fd/" +
        std::to_string(open("/", O_RDONLY)) + " ] && state=\"$state leaked\"\necho \"$state $# $1\" > '" + pipe + "'\n";
    ASSERT_EQ(chmod(folder.write("xdg-open", script).c_str(), 0700), 0);
    setenv("PATH", (folder.path() + ":" + std::getenv("PATH")).c_str(), 1);
    open_in_browser("http://shop.example/cart.php?m=list&c=3 a; $(b) `c` *");
    EXPECT_EQ(scratch::read(pipe),
              "141 /dev/null /dev/null /dev/null 1 http://shop.example/cart.php?m=list&c=3 a; $(b) `c` *\n");
    spawn_detached({folder / "no such program"});
    spawn_detached({});
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST(Descriptors, closed_standard_ones_are_filled_and_open_ones_kept) {
    const scratch folder;
    const std::string kept = folder.write("kept", "text");
    EXPECT_EQ(in_child([&] {
                  for (int fd = 0; fd <= 2; ++fd)
                      close(fd);
                  const int in = open(kept.c_str(), O_RDONLY);
                  open_standard_descriptors();
                  char text[4];
                  const bool untouched = in == 0 && read(0, text, 4) == 4 && text[0] == 't';
                  const bool filled = write(1, "x", 1) == 1 && write(2, "x", 1) == 1;
                  return untouched && filled && open("/", O_RDONLY) > 2;
              }),
              1);
}

TEST(Machine, kernel_releases_of_any_shape_give_three_parts) {
    EXPECT_EQ(first_three_numbers("6.1.0-13-amd64"), "6.1.0");
    EXPECT_EQ(first_three_numbers("6.1-rc3"), "6.1.?");
    EXPECT_EQ(first_three_numbers("next.7"), "?.?.?");
}
