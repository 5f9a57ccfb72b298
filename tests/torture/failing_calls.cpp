// Runs a program with one of its system calls failing, or with the program killed in front of it.
//
//     failing-calls STATUS TRACE NTH HOW PROGRAM [ARGUMENT...]
//
// The calls of the program and of all processes that it starts are counted together, where they are
// in kCalls. NTH is the call that is struck, 0 for none. HOW is "kill", or a name of kTroubles:
// that call fails with it, and with a "+" behind the name so does every later one that it can hit.
//
// TRACE gets a line for each call, NUMBER PROGRAM CALL TROUBLES DETAIL, or for the one that was
// struck. STATUS gets "main EXIT" when the program has ended (EXIT as a shell has it), and "all"
// when the last of its processes has: until then this program serves them. SIGTERM ends all of
// them.
//
// It listens to the kernel's notifications of a seccomp filter: no call is slowed down but those of
// kCalls, whoever makes them, and there is no debugger that a container would have to allow.
#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

// What keeps calls from succeeding; each stands for all calls that it can hit.
enum Trouble : unsigned {
    kFull = 1U << 0U,     // ENOSPC: the disk is full
    kBroken = 1U << 1U,   // EIO: the disk is broken
    kDenied = 1U << 2U,   // EACCES: the folder is somebody else's
    kFiles = 1U << 3U,    // EMFILE: no more descriptors
    kMemory = 1U << 4U,   // ENOMEM: no more memory, or processes
    kLocks = 1U << 5U,    // ENOLCK: no more locks
    kSignal = 1U << 6U,   // EPERM: nobody may be signalled
    kWatches = 1U << 7U,  // ENOSPC: no more watches
};

struct NamedTrouble {
    const char* name;
    Trouble trouble;
    int error;
};
constexpr NamedTrouble kTroubles[] = {
    {"full", kFull, ENOSPC},    {"broken", kBroken, EIO},      {"denied", kDenied, EACCES},
    {"files", kFiles, EMFILE},  {"memory", kMemory, ENOMEM},   {"locks", kLocks, ENOLCK},
    {"signal", kSignal, EPERM}, {"watches", kWatches, ENOSPC},
};

constexpr unsigned kChange = kFull | kBroken | kDenied;

struct Call {
    int number;
    const char* name;
    unsigned troubles;
    int path;  // which argument is one; -1: the first is a descriptor; -2: none of interest
};
constexpr Call kCalls[] = {
    {SYS_openat, "openat", kBroken | kFiles | kDenied, 1},  // and more where it writes
    {SYS_open, "open", kBroken | kFiles | kDenied, 0},
    {SYS_newfstatat, "newfstatat", kBroken | kDenied, 1},
    {SYS_statx, "statx", kBroken | kDenied, 1},
    {SYS_stat, "stat", kBroken | kDenied, 0},
    {SYS_lstat, "lstat", kBroken | kDenied, 0},
    {SYS_fstat, "fstat", kBroken, -1},
    {SYS_access, "access", kBroken | kDenied, 0},
    {SYS_faccessat, "faccessat", kBroken | kDenied, 1},
    {SYS_faccessat2, "faccessat2", kBroken | kDenied, 1},
    {SYS_readlink, "readlink", kBroken | kDenied, 0},
    {SYS_readlinkat, "readlinkat", kBroken | kDenied, 1},
    {SYS_read, "read", kBroken, -1},
    {SYS_pread64, "pread64", kBroken, -1},
    {SYS_getdents64, "getdents64", kBroken, -1},
    {SYS_write, "write", kFull | kBroken, -1},
    {SYS_writev, "writev", kFull | kBroken, -1},
    {SYS_pwrite64, "pwrite64", kFull | kBroken, -1},
    {SYS_close, "close", 0, -1},  // by its file, below
    {SYS_fsetxattr, "fsetxattr", kChange, -1},
    {SYS_fgetxattr, "fgetxattr", kBroken, -1},
    {SYS_fsync, "fsync", kFull | kBroken, -1},
    {SYS_fdatasync, "fdatasync", kFull | kBroken, -1},
    {SYS_ftruncate, "ftruncate", kBroken, -1},
    {SYS_truncate, "truncate", kBroken | kDenied, 0},
    {SYS_fallocate, "fallocate", kFull | kBroken, -1},
    {SYS_rename, "rename", kChange, 0},
    {SYS_renameat, "renameat", kChange, 1},
    {SYS_renameat2, "renameat2", kChange, 1},
    {SYS_unlink, "unlink", kBroken | kDenied, 0},
    {SYS_unlinkat, "unlinkat", kBroken | kDenied, 1},
    {SYS_rmdir, "rmdir", kBroken | kDenied, 0},
    {SYS_mkdir, "mkdir", kChange, 0},
    {SYS_mkdirat, "mkdirat", kChange, 1},
    {SYS_link, "link", kChange, 0},
    {SYS_linkat, "linkat", kChange, 1},
    {SYS_symlink, "symlink", kChange, 0},
    {SYS_symlinkat, "symlinkat", kChange, 0},
    {SYS_fchmod, "fchmod", kBroken | kDenied, -1},
    {SYS_fchown, "fchown", kBroken | kDenied, -1},
    {SYS_sendfile, "sendfile", kFull | kBroken, -1},
    {SYS_copy_file_range, "copy_file_range", kFull | kBroken, -1},
    {SYS_flock, "flock", kLocks, -1},
    {SYS_fcntl, "fcntl", 0, -1},  // by its command, below
    {SYS_dup, "dup", kFiles, -1},
    {SYS_dup2, "dup2", kFiles, -1},
    {SYS_dup3, "dup3", kFiles, -1},
    {SYS_pipe2, "pipe2", kFiles, -2},
    {SYS_socket, "socket", kFiles, -2},
    {SYS_memfd_create, "memfd_create", kFiles | kMemory, -2},
    {SYS_signalfd4, "signalfd4", kFiles | kMemory, -2},
    {SYS_eventfd2, "eventfd2", kFiles | kMemory, -2},
    {SYS_epoll_create1, "epoll_create1", kFiles | kMemory, -2},
    {SYS_inotify_init1, "inotify_init1", kFiles | kMemory, -2},
    {SYS_inotify_add_watch, "inotify_add_watch", kWatches | kMemory, 1},
    {SYS_mmap, "mmap", kMemory, -2},
    {SYS_mremap, "mremap", kMemory, -2},
    {SYS_clone, "clone", kMemory, -2},
    {SYS_clone3, "clone3", kMemory, -2},
    {SYS_vfork, "vfork", kMemory, -2},
    {SYS_fork, "fork", kMemory, -2},
    {SYS_execve, "execve", kMemory | kDenied, 0},
    {SYS_pidfd_open, "pidfd_open", kFiles | kMemory, -2},
    {SYS_pidfd_send_signal, "pidfd_send_signal", kSignal, -2},
};

const Call& CallOf(int number) {
    for (const Call& call : kCalls) {
        if (call.number == number) {
            return call;
        }
    }
    std::abort();  // the filter tells of no other
}

[[noreturn]] void Die(const char* what) {
    std::fprintf(stderr, "failing-calls: %s: %s\n", what, std::strerror(errno));
    _exit(99);
}

// ---------------------------------------------------------------------------------------------
// The program's side
// ---------------------------------------------------------------------------------------------

int InstallFilter() {
    std::vector<sock_filter> code = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
    for (const Call& call : kCalls) {
        code.push_back(
            BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(call.number), 0, 1));
        code.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF));
    }
    code.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    const sock_fprog program = {static_cast<unsigned short>(code.size()), code.data()};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) {
        Die("PR_SET_NO_NEW_PRIVS");
    }
    const long listener =
        syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_NEW_LISTENER, &program);
    if (listener < 0) {
        Die("seccomp");
    }
    return static_cast<int>(listener);
}

// By sendmsg() and recvmsg(), which are in no filter.
void SendDescriptor(int socket, int descriptor) {
    char byte = 0;
    iovec data = {&byte, 1};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    msghdr message = {};
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr* const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(int));
    std::memcpy(CMSG_DATA(header), &descriptor, sizeof descriptor);
    if (sendmsg(socket, &message, 0) != 1) {
        Die("sendmsg");
    }
}

// -1 from a process that was killed before it could send one.
int ReceiveDescriptor(int socket) {
    char byte = 0;
    iovec data = {&byte, 1};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    msghdr message = {};
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    if (recvmsg(socket, &message, MSG_CMSG_CLOEXEC) != 1 || CMSG_FIRSTHDR(&message) == nullptr) {
        return -1;
    }
    int descriptor = -1;
    std::memcpy(&descriptor, CMSG_DATA(CMSG_FIRSTHDR(&message)), sizeof descriptor);
    return descriptor;
}

// ---------------------------------------------------------------------------------------------
// The listener's side
// ---------------------------------------------------------------------------------------------

// Text of another process; what cannot be read is empty.
std::string TextAt(pid_t pid, __u64 address) {
    char text[256] = "";
    const int memory =
        open(("/proc/" + std::to_string(pid) + "/mem").c_str(), O_RDONLY | O_CLOEXEC);
    const ssize_t size = pread(memory, text, sizeof text - 1, static_cast<off_t>(address));
    close(memory);
    return size > 0 ? text : "";
}

std::string FileOf(pid_t pid, __u64 descriptor) {
    const std::string link = "/proc/" + std::to_string(pid) + "/fd/" + std::to_string(descriptor);
    char target[512] = "";
    const ssize_t size = readlink(link.c_str(), target, sizeof target - 1);
    return std::to_string(descriptor) + ":" + (size > 0 ? target : "?");
}

// The name of what a process runs.
std::string ProgramOf(pid_t pid) {
    char name[64] = "?";
    FILE* const file = std::fopen(("/proc/" + std::to_string(pid) + "/comm").c_str(), "re");
    if (file != nullptr) {
        static_cast<void>(std::fscanf(file, "%63s", name));
        std::fclose(file);
    }
    return name;
}

std::string DetailOf(const Call& call, const seccomp_notif& note) {
    if (call.path >= 0) {
        return TextAt(static_cast<pid_t>(note.pid), note.data.args[call.path]);
    }
    return call.path == -1 ? FileOf(static_cast<pid_t>(note.pid), note.data.args[0]) : "";
}

unsigned TroublesOfOpening(__u64 flags) {
    return (flags & O_CREAT) != 0 ? kFull : 0U;
}

std::string LinkOf(const seccomp_notif& note) {
    return "/proc/" + std::to_string(note.pid) + "/fd/" + std::to_string(note.data.args[0]);
}

// Whether the descriptor is of a plain file, and open for writing: of any other a close has nothing
// to lose.
bool IsWritten(const seccomp_notif& note) {
    struct stat file = {};
    struct stat link = {};
    const std::string name = LinkOf(note);
    return stat(name.c_str(), &file) == 0 && S_ISREG(file.st_mode) &&
           lstat(name.c_str(), &link) == 0 && (link.st_mode & S_IWUSR) != 0;
}

// The troubles that this very call can have; none for what is not worth a point.
unsigned TroublesOf(const Call& call, const seccomp_notif& note) {
    switch (call.number) {
        case SYS_openat:
            return call.troubles | TroublesOfOpening(note.data.args[2]);
        case SYS_open:
            return call.troubles | TroublesOfOpening(note.data.args[1]);
        case SYS_write:
        case SYS_writev:
            // Where what went wrong is told.
            return note.data.args[0] == STDERR_FILENO ? 0 : call.troubles;
        case SYS_close:
            return IsWritten(note) ? kFull | kBroken : 0;
        case SYS_fcntl:
            switch (note.data.args[1]) {
                case F_DUPFD:
                case F_DUPFD_CLOEXEC:
                    return kFiles;
                case F_SETLK:
                case F_SETLKW:
                case F_GETLK:
                    return kLocks;
                default:
                    return 0;
            }
        default:
            return call.troubles;
    }
}

struct Strike {
    int nth = 0;
    bool kills = false;
    bool fromThenOn = false;
    const NamedTrouble* trouble = nullptr;
};

Strike ParseStrike(const char* nth, std::string how) {
    Strike strike;
    strike.nth = std::atoi(nth);
    strike.kills = how == "kill";
    if (how.back() == '+') {
        strike.fromThenOn = true;
        how.pop_back();
    }
    for (const NamedTrouble& named : kTroubles) {
        if (how == named.name) {
            strike.trouble = &named;
        }
    }
    if (strike.nth > 0 && !strike.kills && strike.trouble == nullptr) {
        std::fprintf(stderr, "failing-calls: \"%s\" is no way to strike\n", how.c_str());
        _exit(99);
    }
    return strike;
}

class Listener {
  public:
    Listener(int notifications, const Strike& strike, int status, int trace)
        : notifications_(notifications), strike_(strike), status_(status), trace_(trace) {}

    // Until the last process has ended, or somebody ends this one: then all are killed.
    void Serve(pid_t program, int signals) {
        if (notifications_ < 0) {
            Reap(program, 0);
            Tell(status_, "all\n");
            return;
        }
        for (;;) {
            pollfd sources[] = {{notifications_, POLLIN, 0}, {signals, POLLIN, 0}};
            if (poll(sources, std::size(sources), -1) < 0) {
                continue;
            }
            if ((sources[0].revents & POLLIN) != 0) {
                Answer();
            }
            if ((sources[1].revents & POLLIN) != 0) {
                signalfd_siginfo info = {};
                const ssize_t size = read(signals, &info, sizeof info);
                if (size == sizeof info && info.ssi_signo == SIGTERM) {
                    KillAll();
                    return;
                }
                Reap(program, WNOHANG);
            }
            if ((sources[0].revents & POLLHUP) != 0) {
                Reap(program, 0);
                Tell(status_, "all\n");
                return;
            }
        }
    }

  private:
    void Answer() {
        seccomp_notif note = {};
        if (ioctl(notifications_, SECCOMP_IOCTL_NOTIF_RECV, &note) != 0) {
            return;  // the process has been killed meanwhile
        }
        seccomp_notif_resp response = {};
        response.id = note.id;
        if (begun_) {
            Decide(note, &response);
        } else {
            begun_ = true;  // the program itself has to be started
        }
        if (response.error == 0) {
            response.flags = SECCOMP_USER_NOTIF_FLAG_CONTINUE;
        }
        ioctl(notifications_, SECCOMP_IOCTL_NOTIF_SEND, &response);
    }

    void Decide(const seccomp_notif& note, seccomp_notif_resp* response) {
        const Call& call = CallOf(note.data.nr);
        const unsigned troubles = TroublesOf(call, note);
        ++count_;
        if (strike_.nth == 0) {
            Trace(call, note, troubles);
        }
        // Where several processes run, the order of their calls differs: the next that can be hit.
        const bool canBeHit =
            strike_.kills || (strike_.nth > 0 && (troubles & strike_.trouble->trouble) != 0);
        if (strike_.nth == 0 || count_ < strike_.nth || !canBeHit ||
            (struck_ != 0 && !(strike_.fromThenOn && IsHit(note.pid)))) {
            FollowWriting(note);
            return;
        }
        if (struck_ == 0) {
            struck_ = note.pid;
            Trace(call, note, troubles);
        }
        if (strike_.kills) {
            kill(static_cast<pid_t>(note.pid), SIGKILL);
        } else {
            response->error = -strike_.trouble->error;
            if (note.data.nr == SYS_close) {
                Lose(note);
            }
        }
    }

    // Which files have content that may get lost: it was written, and neither synced nor closed.
    void FollowWriting(const seccomp_notif& note) {
        struct stat file = {};
        switch (note.data.nr) {
            case SYS_write:
            case SYS_writev:
            case SYS_pwrite64:
            case SYS_sendfile:
                if (stat(LinkOf(note).c_str(), &file) == 0 && S_ISREG(file.st_mode)) {
                    synced_.emplace(std::pair(file.st_dev, file.st_ino), file.st_size);
                }
                break;
            case SYS_close:
                if (!IsWritten(note)) {
                    break;
                }
                [[fallthrough]];
            case SYS_fsync:
            case SYS_fdatasync:
                if (stat(LinkOf(note).c_str(), &file) == 0) {
                    synced_.erase(std::pair(file.st_dev, file.st_ino));
                }
                break;
            default:
                break;
        }
    }

    // A close that fails has closed all the same, and what was not synced may be lost. The number
    // stays in use until the process ends: the kernel lets nobody else close it.
    void Lose(const seccomp_notif& note) const {
        struct stat file = {};
        const std::string link = LinkOf(note);
        if (stat(link.c_str(), &file) == 0) {
            const auto synced = synced_.find(std::pair(file.st_dev, file.st_ino));
            if (synced != synced_.end() && truncate(link.c_str(), synced->second) != 0) {
                Die("truncate");
            }
        }
        const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
        seccomp_notif_addfd instead = {};
        instead.id = note.id;
        instead.flags = SECCOMP_ADDFD_FLAG_SETFD;
        instead.srcfd = static_cast<unsigned>(nothing);
        instead.newfd = static_cast<unsigned>(note.data.args[0]);
        instead.newfd_flags = O_CLOEXEC;
        if (ioctl(notifications_, SECCOMP_IOCTL_NOTIF_ADDFD, &instead) < 0) {
            Die("close");
        }
        close(nothing);
    }

    // Each process has descriptors and memory of its own; everything else is the machine's.
    bool IsHit(unsigned pid) const {
        return (strike_.trouble->trouble & (kFiles | kMemory)) == 0 || pid == struck_;
    }

    void Trace(const Call& call, const seccomp_notif& note, unsigned troubles) {
        std::string names;
        for (const NamedTrouble& named : kTroubles) {
            if ((troubles & named.trouble) != 0) {
                names += (names.empty() ? "" : ",") + std::string(named.name);
            }
        }
        Tell(trace_, std::to_string(count_) + " " + ProgramOf(static_cast<pid_t>(note.pid)) + " " +
                         call.name + " " + (names.empty() ? "-" : names) + " " +
                         DetailOf(call, note) + "\n");
    }

    void Reap(pid_t program, int options) const {
        int status = 0;
        for (pid_t pid = 0; (pid = waitpid(-1, &status, options)) > 0;) {
            if (pid == program) {
                const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
                Tell(status_, "main " + std::to_string(code) + "\n");
            }
        }
    }

    // Whoever loses its parent becomes a child of this process.
    static void KillAll() {
        const std::string children = "/proc/self/task/" + std::to_string(getpid()) + "/children";
        do {
            FILE* const list = std::fopen(children.c_str(), "re");
            for (int pid = 0; list != nullptr && std::fscanf(list, "%d", &pid) == 1;) {
                kill(pid, SIGKILL);
            }
            if (list != nullptr) {
                std::fclose(list);
            }
        } while (waitpid(-1, nullptr, 0) > 0);
    }

    static void Tell(int descriptor, const std::string& text) {
        if (write(descriptor, text.data(), text.size()) < 0 && errno != EPIPE) {
            Die("write");
        }
    }

    int notifications_;
    Strike strike_;
    int status_;
    int trace_;
    int count_ = 0;
    unsigned struck_ = 0;                              // the process
    std::map<std::pair<dev_t, ino_t>, off_t> synced_;  // how much of a file is, where not all is
    bool begun_ = false;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc < 6) {
        std::fprintf(stderr, "failing-calls STATUS TRACE NTH HOW PROGRAM [ARGUMENT...]\n");
        return 99;
    }
    const Strike strike = ParseStrike(argv[3], argv[4]);
    const int status = open(argv[1], O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    const int trace = open(argv[2], O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    int sockets[2] = {-1, -1};
    sigset_t wanted;
    sigemptyset(&wanted);
    sigaddset(&wanted, SIGCHLD);
    sigaddset(&wanted, SIGTERM);
    sigset_t before;
    sigprocmask(SIG_BLOCK, &wanted, &before);
    const int signals = signalfd(-1, &wanted, SFD_CLOEXEC);
    signal(SIGPIPE, SIG_IGN);
    if (status < 0 || trace < 0 || signals < 0 || prctl(PR_SET_CHILD_SUBREAPER, 1) != 0 ||
        socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0) {
        Die("start");
    }
    const pid_t program = fork();
    if (program == 0) {
        signal(SIGPIPE, SIG_DFL);
        sigprocmask(SIG_SETMASK, &before, nullptr);
        SendDescriptor(sockets[1], InstallFilter());
        execv(argv[5], argv + 5);
        Die(argv[5]);
    }
    close(sockets[1]);
    const int notifications = ReceiveDescriptor(sockets[0]);
    Listener(notifications, strike, status, trace).Serve(program, signals);
    return 0;
}
