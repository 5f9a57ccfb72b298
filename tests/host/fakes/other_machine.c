/* Loaded before all libraries of a program: a machine on which nothing is left to watch with
 * (OTHER_MACHINE=instances, or watches), on which the program is another user's (user), nothing can
 * be synced (unsynced), every disk is full (full) or none is in memory (disks). */
#define _GNU_SOURCE
#include <errno.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <sys/inotify.h>
#include <sys/statfs.h>
#include <sys/syscall.h>
#include <unistd.h>

static int Is(const char* machine) {
    const char* wanted = getenv("OTHER_MACHINE");
    return wanted != NULL && strcmp(wanted, machine) == 0;
}

int inotify_init1(int flags) {
    if (Is("instances")) {
        errno = EMFILE;
        return -1;
    }
    return (int)syscall(SYS_inotify_init1, flags);
}

int inotify_add_watch(int fd, const char* path, uint32_t mask) {
    if (Is("watches")) {
        errno = ENOSPC;
        return -1;
    }
    return (int)syscall(SYS_inotify_add_watch, fd, path, mask);
}

int fsync(int fd) {
    if (Is("unsynced")) {
        errno = EIO;
        return -1;
    }
    return (int)syscall(SYS_fsync, fd);
}

int statfs(const char* path, struct statfs* info) {
    const int result = (int)syscall(SYS_statfs, path, info);
    if (Is("full")) {
        info->f_bavail = 1;
    } else if (Is("disks")) {
        info->f_type = 0xEF53;
    }
    return result;
}

uid_t geteuid(void) {
    return (uid_t)syscall(SYS_geteuid) + (Is("user") ? 1 : 0);
}
