// SPDX-License-Identifier: MIT
// Landlock holds which files can be opened, made and removed, a filter over system calls everything else.
#include "app/base/sandbox.h"

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/landlock.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>

// Newer than the oldest headers that this is built with.
#ifndef LANDLOCK_ACCESS_FS_REFER
#define LANDLOCK_ACCESS_FS_REFER (1ULL << 13)
#endif
#ifndef LANDLOCK_ACCESS_FS_TRUNCATE
#define LANDLOCK_ACCESS_FS_TRUNCATE (1ULL << 14)
#endif

namespace vireo {
namespace {

/// What system libraries read while the program runs.
constexpr const char* systemPlaces[] = {"/usr",
                                        "/lib",
                                        "/lib32",
                                        "/lib64",
                                        "/nix/store",
                                        "/etc/ld.so.cache",
                                        "/proc/cpuinfo",
                                        "/proc/meminfo",
                                        "/proc/stat",
                                        "/proc/self/cgroup",
                                        "/proc/self/maps",
                                        "/proc/self/stat",
                                        "/proc/self/statm",
                                        "/proc/self/status",
                                        "/proc/sys/vm/overcommit_memory",
                                        "/sys/devices/system/cpu",
                                        "/sys/devices/system/node",
                                        "/dev/random",
                                        "/dev/urandom",
                                        "/dev/zero"};

/// As the system lays it out; older ones take its beginning.
struct Restrictions {
    std::uint64_t files, network, scopes;
};

/// Which generation of Landlock the system has; 0 where it has none or does not let it be used.
int landlockVersion() {
    const long version = syscall(__NR_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    return static_cast<int>(std::max(0L, version));
}

std::uint64_t fileRights(const SandboxPlace& place) {
    using Place = SandboxPlace;
    constexpr std::uint64_t read = LANDLOCK_ACCESS_FS_READ_FILE, list = LANDLOCK_ACCESS_FS_READ_DIR;
    constexpr std::uint64_t write = LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_TRUNCATE;
    constexpr std::uint64_t appear = LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_REFER;
    constexpr std::uint64_t replace = LANDLOCK_ACCESS_FS_REMOVE_FILE, clear = LANDLOCK_ACCESS_FS_REMOVE_DIR;
    constexpr std::uint64_t keep =
        read | list | write | appear | replace | clear | LANDLOCK_ACCESS_FS_MAKE_DIR;
    std::uint64_t rights = 0;
    for (const auto& [right, all] : {std::pair{Place::Read, read},
                                     {Place::List, list},
                                     {Place::Write, write},
                                     {Place::Appear, appear},
                                     {Place::Replace, replace},
                                     {Place::Clear, clear},
                                     {Place::Keep, keep}}) {
        if ((place.rights & right) != 0) rights |= all;
    }
    return rights;
}

class FileRules {
public:
    explicit FileRules(int version, bool endsChild) {
        constexpr int rightsUntil[] = {0, 13, 14, 15, 15, 16};
        constexpr std::uint64_t bindOrConnect = 3, abstractSockets = 1, signals = 2;
        all_ = {(1ULL << rightsUntil[std::min(version, 5)]) - 1, version >= 4 ? bindOrConnect : 0,
                version < 6 ? 0
                : endsChild ? abstractSockets
                            : abstractSockets | signals};
        const std::size_t size = version < 4   ? offsetof(Restrictions, network)
                                 : version < 6 ? offsetof(Restrictions, scopes)
                                               : sizeof all_;
        ruleset_ = static_cast<int>(syscall(__NR_landlock_create_ruleset, &all_, size, 0));
    }
    FileRules(const FileRules&) = delete;
    FileRules& operator=(const FileRules&) = delete;
    ~FileRules() { close(ruleset_); }

    /// Places that are not there are passed over.
    void allow(const SandboxPlace& place) {
        landlock_path_beneath_attr rule{};
        rule.parent_fd = open(place.path.c_str(), O_PATH | O_CLOEXEC);
        struct stat state {};
        if (rule.parent_fd < 0 || fstat(rule.parent_fd, &state) != 0) return;
        rule.allowed_access = fileRights(place) & all_.files;
        if (!S_ISDIR(state.st_mode)) {
            rule.allowed_access &=
                LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_TRUNCATE;
        }
        // Pipes without a name need no right and take none.
        if (rule.allowed_access != 0)
            syscall(__NR_landlock_add_rule, ruleset_, LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
        close(rule.parent_fd);
    }

    void enforce() const { syscall(__NR_landlock_restrict_self, ruleset_, 0); }

private:
    Restrictions all_{};
    int ruleset_ = -1;
};

#if defined(__x86_64__)
constexpr std::uint32_t architecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr std::uint32_t architecture = AUDIT_ARCH_AARCH64;
#elif defined(__riscv) && __riscv_xlen == 64
constexpr std::uint32_t architecture = AUDIT_ARCH_RISCV64;
#else
constexpr std::uint32_t architecture = 0;
#endif

/// What later ones do is not known here. The other way to number calls on x86 lies far beyond.
constexpr std::uint32_t lastKnownCall = 450;

constexpr std::uint32_t refusedCalls[] = {
#if defined(__x86_64__)
    // Older forms of what follows.
    __NR_fork, __NR_vfork, __NR_chmod, __NR_chown, __NR_lchown, __NR_utime, __NR_utimes, __NR_futimesat,
    __NR_link, __NR_mknod, __NR_inotify_init, __NR_ioperm, __NR_iopl, __NR_modify_ldt, __NR_uselib,
#endif
    // Networks and local sockets.
    __NR_socket, __NR_socketpair, __NR_connect, __NR_bind, __NR_listen, __NR_accept, __NR_accept4,
    // Programs and other processes.
    __NR_execve, __NR_execveat, __NR_ptrace, __NR_process_vm_readv, __NR_process_vm_writev,
    __NR_migrate_pages, __NR_move_pages, __NR_process_madvise, __NR_process_mrelease, __NR_kcmp,
    __NR_pidfd_open, __NR_pidfd_getfd, __NR_pidfd_send_signal, __NR_rt_sigqueueinfo, __NR_rt_tgsigqueueinfo,
    __NR_tkill, __NR_setpgid, __NR_setsid, __NR_unshare, __NR_setns, __NR_shmget, __NR_shmat, __NR_semget,
    __NR_msgget, __NR_mq_open, __NR_mq_unlink,
    // Of files what Landlock does not know.
    __NR_fchmodat, __NR_fchown, __NR_fchownat, __NR_truncate, __NR_utimensat, __NR_setxattr, __NR_lsetxattr,
    __NR_fsetxattr, __NR_removexattr, __NR_lremovexattr, __NR_fremovexattr, __NR_linkat, __NR_mknodat,
    __NR_name_to_handle_at, __NR_open_by_handle_at, __NR_inotify_init1, __NR_fanotify_init, __NR_chroot,
    __NR_pivot_root, __NR_mount, __NR_umount2, __NR_mount_setattr, __NR_open_tree, __NR_move_mount,
    __NR_fsopen, __NR_fsconfig, __NR_fsmount, __NR_fspick, __NR_quotactl, __NR_quotactl_fd, __NR_swapon,
    __NR_swapoff, __NR_acct,
    // Ways around this filter, and parts of the system that are seldom used and so seldom looked at.
    __NR_io_uring_setup, __NR_io_uring_enter, __NR_io_uring_register, __NR_bpf, __NR_perf_event_open,
    __NR_userfaultfd, __NR_add_key, __NR_request_key, __NR_keyctl, __NR_personality, __NR_vhangup,
    // The machine.
    __NR_init_module, __NR_finit_module, __NR_delete_module, __NR_kexec_load, __NR_kexec_file_load,
    __NR_reboot, __NR_syslog, __NR_sethostname, __NR_setdomainname, __NR_settimeofday, __NR_clock_settime,
    __NR_clock_adjtime, __NR_adjtimex};

class CallFilter {
public:
    explicit CallFilter(int child) {
        load(offsetof(seccomp_data, arch));
        add(BPF_JMP | BPF_JEQ | BPF_K, architecture, 1, 0);
        give(refusal(EPERM));
        load(offsetof(seccomp_data, nr));
        add(BPF_JMP | BPF_JGT | BPF_K, lastKnownCall, 0, 1);
        give(refusal(ENOSYS));
        // Libraries go on with clone and openat, whose arguments can be looked at.
        for (const std::uint32_t call : {__NR_clone3, __NR_openat2}) refuse(call, ENOSYS);
        for (const std::uint32_t call : refusedCalls) refuse(call, EPERM);

        const auto own = static_cast<std::uint32_t>(getpid());
        allowOnly(__NR_kill, 0, {own, child > 0 ? static_cast<std::uint32_t>(child) : own});
        allowOnly(__NR_tgkill, 0, {own});
        allowOnly(__NR_prlimit64, 0, {0, own});
        allowOnly(__NR_clone, 0, {CLONE_THREAD}, CLONE_THREAD);
        // A terminal is asked what it is; nothing is typed into it.
        constexpr std::uint32_t terminalAttributes = 0x802C542A;  // TCGETS2
        allowOnly(__NR_ioctl, 1, {TCGETS, terminalAttributes, TIOCGWINSZ, FIONREAD, FIOCLEX, FIONCLEX});
        // Signals that a file sends go to nobody else.
        refuse(__NR_fcntl, 1, {F_SETOWN, F_SETOWN_EX});
        constexpr std::uint32_t ownersRights = S_ISUID | S_ISGID;
        allowOnly(__NR_fchmod, 1, {0}, ownersRights);
        allowOnly(__NR_openat, 3, {0}, ownersRights);
        // Landlock learned late that this writes.
        constexpr std::uint32_t cuts = O_TRUNC | O_ACCMODE;
        refuse(__NR_openat, 2, {O_TRUNC | O_RDONLY, cuts}, cuts);
#if defined(__x86_64__)
        allowOnly(__NR_creat, 1, {0}, ownersRights);
        allowOnly(__NR_open, 2, {0}, ownersRights);
        refuse(__NR_open, 1, {O_TRUNC | O_RDONLY, cuts}, cuts);
#endif
        give(SECCOMP_RET_ALLOW);
    }

    void enforce() const {
        const sock_fprog program{static_cast<unsigned short>(code_.size()),
                                 const_cast<sock_filter*>(code_.data())};
        // Nothing here needs what slows a processor down against guesses across programs.
        constexpr unsigned long flags = SECCOMP_FILTER_FLAG_TSYNC | SECCOMP_FILTER_FLAG_SPEC_ALLOW;
        syscall(__NR_seccomp, SECCOMP_SET_MODE_FILTER, flags, &program);
    }

private:
    static std::uint32_t refusal(int error) {
        return SECCOMP_RET_ERRNO | (static_cast<std::uint32_t>(error) & SECCOMP_RET_DATA);
    }
    void add(int code, std::uint32_t value, std::size_t jumpTrue = 0, std::size_t jumpFalse = 0) {
        code_.push_back({static_cast<std::uint16_t>(code), static_cast<std::uint8_t>(jumpTrue),
                         static_cast<std::uint8_t>(jumpFalse), value});
    }
    void load(std::size_t offset) { add(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset)); }
    void give(std::uint32_t result) { add(BPF_RET | BPF_K, result); }
    void refuse(std::uint32_t call, int error) {
        add(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 1);
        give(refusal(error));
    }
    /// Refuses a call where its argument, as far as the mask shows it, is one of the values.
    void refuse(std::uint32_t call, std::size_t argument, const std::vector<std::uint32_t>& values,
                std::uint32_t mask = ~0U) {
        compare(call, argument, values, mask, 5);
        add(BPF_JMP | BPF_JA, 1);
        give(refusal(EPERM));
        load(offsetof(seccomp_data, nr));
    }
    /// Refuses it where the argument is none of them.
    void allowOnly(std::uint32_t call, std::size_t argument, const std::vector<std::uint32_t>& values,
                   std::uint32_t mask = ~0U) {
        compare(call, argument, values, mask, 4);
        give(refusal(EPERM));
        load(offsetof(seccomp_data, nr));
    }
    /// Jumps over one step where the argument is one of the values; over all of them for another call.
    void compare(std::uint32_t call, std::size_t argument, const std::vector<std::uint32_t>& values,
                 std::uint32_t mask, std::size_t otherSteps) {
        add(BPF_JMP | BPF_JEQ | BPF_K, call, 0, values.size() + otherSteps);
        // The lower half, which is all that the system looks at.
        load(offsetof(seccomp_data, args) + 8 * argument);
        add(BPF_ALU | BPF_AND | BPF_K, mask);
        for (std::size_t i = 0; i < values.size(); ++i)
            add(BPF_JMP | BPF_JEQ | BPF_K, values[i], values.size() - i, 0);
    }

    std::vector<sock_filter> code_;
};

bool filtersCalls() {
    const std::uint32_t action = SECCOMP_RET_ERRNO;
    return architecture != 0 && syscall(__NR_seccomp, SECCOMP_GET_ACTION_AVAIL, 0, &action) == 0;
}

/// The first generation lets no file go from one folder to another.
constexpr int movesFiles = 2;

}  // namespace

SandboxStrength sandboxStrength() {
    const int version = landlockVersion();
    if (filtersCalls() && version >= movesFiles) return SandboxStrength::Full;
    return filtersCalls() || version > 0 ? SandboxStrength::Partial : SandboxStrength::None;
}

void enterSandbox(const std::vector<SandboxPlace>& places, int child) {
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) return;
    const bool writes = std::any_of(places.begin(), places.end(), [](const SandboxPlace& place) {
        return (place.rights & (SandboxPlace::Appear | SandboxPlace::Keep)) != 0;
    });
    if (const int version = landlockVersion(); version >= (writes ? movesFiles : 1)) {
        FileRules rules(version, child > 0);
        for (const SandboxPlace& place : places) rules.allow(place);
        for (const char* place : systemPlaces) rules.allow({place, SandboxPlace::Read | SandboxPlace::List});
        rules.allow({"/dev/null", SandboxPlace::Read | SandboxPlace::Write});
        rules.enforce();
    }
    if (filtersCalls()) CallFilter(child).enforce();
}

}  // namespace vireo
