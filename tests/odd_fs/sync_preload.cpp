// Preloaded into a program, tells odd_fs of syncfs, which the kernel does not hand on to a file system in user space.
#include <linux/magic.h>
#include <sys/statfs.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

extern "C" int syncfs(int fd) noexcept {
    struct statfs facts;
    if (fstatfs(fd, &facts) == 0 && facts.f_type == FUSE_SUPER_MAGIC) return fsetxattr(fd, "user.syncfs", "", 0, 0);
    return static_cast<int>(syscall(SYS_syncfs, fd));
}
