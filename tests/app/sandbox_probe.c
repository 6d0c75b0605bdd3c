// SPDX-License-Identifier: MIT
// Preloaded, tries from within the opening of an input what a decoder that was taken over would try, and
// tells on standard error what each attempt came to. LANDLOCK=N makes the system look like one of an earlier
// generation, and NO_SECCOMP like one without that.
#define _GNU_SOURCE
#include <arpa/inet.h>
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <linux/landlock.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#define SEEN __attribute__((visibility("default")))

SEEN long syscall(long number, ...) {
    va_list list;
    va_start(list, number);
    long a[6];
    for (int i = 0; i < 6; ++i) a[i] = va_arg(list, long);
    va_end(list);
    const char* version = getenv("LANDLOCK");
    if (number == SYS_landlock_create_ruleset && a[2] == LANDLOCK_CREATE_RULESET_VERSION && version != NULL) {
        errno = ENOSYS;
        return atoi(version) > 0 ? atoi(version) : -1;
    }
    if (number == SYS_seccomp && getenv("NO_SECCOMP") != NULL) {
        errno = ENOSYS;
        return -1;
    }
    long (*const real)(long, ...) = dlsym(RTLD_NEXT, "syscall");
    return real(number, a[0], a[1], a[2], a[3], a[4], a[5]);
}

/// Where the program may write, as long as nobody else takes such names.
static const char* within(const char* name) {
    static _Thread_local char path[256];
    snprintf(path, sizeof path, ".vireo-%d-1.part/%s", (int)getpid(), name);
    return path;
}

static long readAnother(void) { return open("secret", O_RDONLY); }
static long readByALink(void) {
    const int root = open("/proc/self/root", O_PATH);
    return openat(root, "etc/passwd", O_RDONLY);
}
static long readByTracks(void) { return open("/usr/../etc/passwd", O_RDONLY); }
static long readByOpenat2(void) {
    unsigned long long how[3] = {O_RDONLY, 0, 0};
    return syscall(SYS_openat2, AT_FDCWD, "secret", how, sizeof how);
}
static long list(void) { return open(".", O_RDONLY | O_DIRECTORY); }
static long writeAnother(void) { return open("secret", O_WRONLY | O_APPEND); }
static long writeTheInput(void) { return open("in.mkv", O_RDWR); }
static long cutTheInput(void) { return open("in.mkv", O_RDONLY | O_TRUNC); }
static long cutAnother(void) { return truncate("other", 0); }
static long makeAFile(void) { return open("new", O_WRONLY | O_CREAT, 0600); }
static long makeAProgramOfTheOwner(void) { return open(within("owned"), O_WRONLY | O_CREAT, 04755); }
static long makeAFolder(void) { return mkdir("folder", 0700); }
static long makeALink(void) { return symlink("secret", "link"); }
static long takeByALink(void) { return link("secret", within("link")); }
static long takeByARename(void) { return rename("secret", within("taken")); }
static long replaceAnother(void) {
    char own[256];
    snprintf(own, sizeof own, "%s", within("own"));
    close(open(own, O_WRONLY | O_CREAT, 0600));
    const long result = rename(own, "other");
    const int error = errno;
    unlink(own);
    errno = error;
    return result;
}
static long renameAnother(void) { return rename("other", "renamed"); }
static long removeAnother(void) { return unlink("other"); }
static long changeRights(void) { return chmod("secret", 0777); }
static long changeTimes(void) { return utimensat(AT_FDCWD, "secret", NULL, 0); }
static long network(void) {
    const struct sockaddr_in nobody = {.sin_family = AF_INET, .sin_port = htons(9)};
    const int file = socket(AF_INET, SOCK_DGRAM, 0);
    return file < 0 ? -1 : connect(file, (const struct sockaddr*)&nobody, sizeof nobody);
}
static long localSocket(void) { return socket(AF_UNIX, SOCK_STREAM, 0); }
static long runAProgram(void) {
    // Without a process of its own, so that a confined one need not be left.
    char* const words[] = {"no-program", NULL};
    return execv("/usr/bin/no-program", words) < 0 && errno == ENOENT ? 0 : -1;
}
static long fork1(void) {
    const pid_t child = fork();
    if (child == 0) _exit(0);
    return child < 0 ? -1 : waitpid(child, NULL, 0);
}
static long signalAnother(void) { return kill(getppid(), 0); }
static long signalByAFile(void) {
    int ends[2];
    return pipe(ends) != 0 ? 0 : fcntl(ends[0], F_SETOWN, getppid());
}
static long limitAnother(void) { return prlimit(getppid(), RLIMIT_NOFILE, NULL, &(struct rlimit){0, 0}); }
static long traceAnother(void) {
    const long traced = ptrace(PTRACE_SEIZE, getppid(), 0, 0);
    if (traced == 0) ptrace(PTRACE_DETACH, getppid(), 0, 0);
    return traced;
}
static long readAnothersMemory(void) {
    char bytes[8];
    struct iovec here = {bytes, sizeof bytes}, there = {(void*)bytes, sizeof bytes};
    return process_vm_readv(getppid(), &here, 1, &there, 1, 0);
}
static long typeIntoTheTerminal(void) { return ioctl(STDIN_FILENO, TIOCSTI, NULL); }
static long ownNamespace(void) { return unshare(CLONE_NEWUSER); }
static long mountSomething(void) { return mount("none", ".", "tmpfs", 0, NULL); }
static long ring(void) { return syscall(SYS_io_uring_setup, 1, (char[256]){0}); }
static long keys(void) { return syscall(SYS_keyctl, 0, -3, 0); }
static long faults(void) { return syscall(SYS_userfaultfd, 1); }
static long programsInTheSystem(void) { return syscall(SYS_bpf, 0, (char[128]){0}, 128); }
static long counters(void) { return syscall(SYS_perf_event_open, (char[128]){0}, 0, -1, -1, 0); }

static long readTheInput(void) { return open("in.mkv", O_RDONLY); }

#define ATTEMPT(name) \
    { #name, name }
static const struct {
    const char* name;
    long (*make)(void);
} attempts[] = {
    ATTEMPT(readAnother),
    ATTEMPT(readByALink),
    ATTEMPT(readByTracks),
    ATTEMPT(readByOpenat2),
    ATTEMPT(list),
    ATTEMPT(writeAnother),
    ATTEMPT(writeTheInput),
    ATTEMPT(cutTheInput),
    ATTEMPT(cutAnother),
    ATTEMPT(makeAFile),
    ATTEMPT(makeAProgramOfTheOwner),
    ATTEMPT(makeAFolder),
    ATTEMPT(makeALink),
    ATTEMPT(takeByALink),
    ATTEMPT(takeByARename),
    ATTEMPT(replaceAnother),
    ATTEMPT(renameAnother),
    ATTEMPT(removeAnother),
    ATTEMPT(changeRights),
    ATTEMPT(changeTimes),
    ATTEMPT(network),
    ATTEMPT(localSocket),
    ATTEMPT(runAProgram),
    ATTEMPT(fork1),
    ATTEMPT(signalAnother),
    ATTEMPT(signalByAFile),
    ATTEMPT(limitAnother),
    ATTEMPT(traceAnother),
    ATTEMPT(readAnothersMemory),
    ATTEMPT(typeIntoTheTerminal),
    ATTEMPT(ownNamespace),
    ATTEMPT(mountSomething),
    ATTEMPT(ring),
    ATTEMPT(keys),
    ATTEMPT(faults),
    ATTEMPT(programsInTheSystem),
    ATTEMPT(counters),
    ATTEMPT(readTheInput),
};

static void* makeAttempts(void* unused) {
    for (size_t i = 0; i < sizeof attempts / sizeof *attempts; ++i) {
        const long result = attempts[i].make();
        fprintf(stderr, "attempt %s: %s\n", attempts[i].name, result < 0 ? strerrorname_np(errno) : "done");
    }
    return unused;
}

SEEN int avformat_find_stream_info(void* context, void* options) {
    static int done = 0;
    if (getenv("ATTEMPTS") != NULL && !done++) {
        makeAttempts(NULL);
        pthread_t thread;
        if (pthread_create(&thread, NULL, makeAttempts, NULL) == 0) pthread_join(thread, NULL);
    }
    int (*real)(void*, void*) = dlsym(RTLD_NEXT, "avformat_find_stream_info");
    return real(context, options);
}
