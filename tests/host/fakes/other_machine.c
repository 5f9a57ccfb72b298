/* Loaded before all libraries of a program: a machine on which nothing is left to watch with
 * (OTHER_MACHINE=instances, or watches), on which the program is another user's (user), nothing can
 * be synced (unsynced), every disk is full (full) or none is in memory (disks), and the user is the
 * only member of each group (alone), or not (shared). The file whose number is in FOREIGN_FILE
 * belongs to another user. */
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <sys/inotify.h>
#include <sys/stat.h>
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

struct group* getgrgid(gid_t id) {
    static char texts[4096];
    static char* nobody[] = {NULL};
    static char* others[] = {texts, NULL};
    static struct group found;
    struct group* result = NULL;
    getgrgid_r(id, &found, texts, sizeof texts, &result);
    if (result != NULL && (Is("alone") || Is("shared"))) {
        result->gr_name = getpwuid(geteuid())->pw_name;
        result->gr_mem = Is("alone") ? nobody : others;
    }
    return result;
}

int fstatat64(int dir, const char* name, struct stat64* status, int flags) {
    const int result = (int)syscall(SYS_newfstatat, dir, name, status, flags);
    const char* foreign = getenv("FOREIGN_FILE");
    if (result == 0 && foreign != NULL && strtoul(foreign, NULL, 10) == status->st_ino) {
        ++status->st_uid;
    }
    return result;
}

int stat64(const char* path, struct stat64* status) {
    return fstatat64(AT_FDCWD, path, status, 0);
}
