// The device's root and network, built with direct system calls: a shell
// script would spend a process start (~2 ms) on each of the forty steps.
// Runs as "device_sim --setup [MODE HOST INSIDE]..." from run-in-device, as
// PID 1 of fresh mount, PID and network namespaces, before any test code.
// Each triplet names a host directory (the checkout, the build tree, a --rw
// folder) to bind at a fixed path inside, read-only ("ro") or writable
// ("rw").
#include <errno.h>
#include <fcntl.h>
#include <sched.h>
#include <stdio.h>
#include <string.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>

#include <dirent.h>
#include <string>
#include <utility>
#include <vector>

#include "device_state.h"

int device_install(const std::string &root, const std::string &self);

namespace {

namespace st = devtest::state;

bool fail(const char *what, const std::string &arg) {
    fprintf(stderr, "run-in-device: %s %s: %s\n", what, arg.c_str(), strerror(errno));
    return false;
}

bool do_mount(const char *src, const std::string &dst, const char *type, unsigned long flags,
              const char *data = nullptr) {
    if (::mount(src, dst.c_str(), type, flags, data) == 0) return true;
    return fail("cannot mount", dst);
}

bool make_dir(const std::string &path) { return ::mkdir(path.c_str(), 0755) == 0 || errno == EEXIST; }

bool dir_is_empty(const std::string &path) {
    DIR *d = ::opendir(path.c_str());
    if (!d) return true;
    bool empty = true;
    while (dirent *e = ::readdir(d))
        if (strcmp(e->d_name, ".") != 0 && strcmp(e->d_name, "..") != 0) empty = false;
    ::closedir(d);
    return empty;
}

struct Node {
    const char *name;
    unsigned major, minor;
};
// The character devices programs expect; nothing else of the host's /dev
// (no disks) is reachable inside.
constexpr Node kDevNodes[] = {{"null", 1, 3}, {"zero", 1, 5},    {"full", 1, 7},
                              {"random", 1, 8}, {"urandom", 1, 9}, {"tty", 5, 0}};
constexpr const char *kDevLinks[][2] = {{"pts/ptmx", "ptmx"},       {"/proc/self/fd", "fd"},
                                        {"/proc/self/fd/0", "stdin"}, {"/proc/self/fd/1", "stdout"},
                                        {"/proc/self/fd/2", "stderr"}};
// Data directories that must start empty even if the build host had them.
constexpr const char *kMustBeEmpty[] = {"/mnt/data/etc/qxcfg", "/productinfo", "/data"};

bool make_dev(const std::string &dev) {
    if (!do_mount("device-dev", dev, "tmpfs", MS_NOSUID, "mode=0755")) return false;
    for (const Node &n : kDevNodes) {
        std::string path = dev + "/" + n.name;
        if (::mknod(path.c_str(), S_IFCHR | 0666, makedev(n.major, n.minor)) != 0 || ::chmod(path.c_str(), 0666) != 0)
            return fail("cannot create", path);
    }
    make_dir(dev + "/pts");
    make_dir(dev + "/shm");
    if (!do_mount("devpts", dev + "/pts", "devpts", 0, "newinstance,ptmxmode=0666,mode=0620")) return false;
    for (const auto &l : kDevLinks)
        if (::symlink(l[0], (dev + "/" + l[1]).c_str()) != 0) return fail("cannot create", dev + "/" + l[1]);
    return true;
}

// An open descriptor, closed with its owner.
class Fd {
  public:
    Fd() = default;
    explicit Fd(int fd) : fd_(fd) {}
    Fd(Fd &&o) noexcept : fd_(std::exchange(o.fd_, -1)) {}
    Fd &operator=(Fd &&o) noexcept {
        std::swap(fd_, o.fd_);
        return *this;
    }
    Fd(const Fd &) = delete;
    Fd &operator=(const Fd &) = delete;
    ~Fd() {
        if (fd_ >= 0) ::close(fd_);
    }
    int get() const { return fd_; }

  private:
    int fd_ = -1;
};

// A host directory to show inside, held open from before the first mount:
// a checkout under /tmp would otherwise be hidden by the staging tmpfs, and
// the descriptor needs no path lookup that a mount could hide.
struct Bind {
    bool read_only;
    std::string host, inside;
    Fd dir;
};

bool open_binds(std::vector<Bind> &binds) {
    for (Bind &b : binds) {
        b.dir = Fd(::open(b.host.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (b.dir.get() < 0) return fail("cannot open", b.host);
    }
    return true;
}

bool bind_trees(const std::string &root, const std::vector<Bind> &binds) {
    for (const Bind &b : binds) {
        const std::string dst = root + b.inside;
        // A tree nested in an earlier one (build/ in the checkout) already
        // has its directory, possibly on a read-only bind.
        for (size_t i = root.size() + 1; i <= dst.size(); ++i)
            if (i == dst.size() || dst[i] == '/') make_dir(dst.substr(0, i));
        const std::string src = "/proc/self/fd/" + std::to_string(b.dir.get());
        if (!do_mount(src.c_str(), dst, nullptr, MS_BIND | MS_REC)) return false;
        if (b.read_only && !do_mount(nullptr, dst, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY)) return false;
    }
    return true;
}

// Builds the overlay root under /tmp/root (a tmpfs over /tmp, private to
// this mount namespace), lays the fresh /proc, /sys, /tmp, /run and /dev,
// binds the trees at their fixed paths and switches to it.
bool make_root(const std::vector<Bind> &binds) {
    const std::string R = "/tmp/root";
    if (!do_mount("device-stage", "/tmp", "tmpfs", 0, "mode=0755,size=64m")) return false;
    make_dir("/tmp/upper");
    make_dir("/tmp/work");
    make_dir(R);
    if (!do_mount("device-root", R, "overlay", 0, "lowerdir=/,upperdir=/tmp/upper,workdir=/tmp/work")) return false;
    if (!do_mount("proc", R + "/proc", "proc", MS_NOSUID | MS_NODEV | MS_NOEXEC) ||
        !do_mount("sysfs", R + "/sys", "sysfs", MS_NOSUID | MS_NODEV | MS_NOEXEC) ||
        !do_mount("device-tmp", R + "/tmp", "tmpfs", MS_NOSUID | MS_NODEV, "mode=1777") ||
        !do_mount("device-run", R + "/run", "tmpfs", MS_NOSUID | MS_NODEV, "mode=0755") || !make_dev(R + "/dev"))
        return false;
    // The trees are bound, not seen through the overlay: the overlay alone
    // would keep a stale view of files changed later, and writes to the
    // build tree must reach the host.
    if (!bind_trees(R, binds)) return false;
    // The running binary, whatever its host path: the tools link to a copy.
    if (device_install(R, "/proc/self/exe") != 0) return false;
    for (const char *d : kMustBeEmpty)
        if (!dir_is_empty(R + d) && !do_mount("device-empty", R + d, "tmpfs", 0, "mode=0755")) return false;

    const std::string old = R + "/.oldroot";
    make_dir(old);
    if (::syscall(SYS_pivot_root, R.c_str(), old.c_str()) != 0) return fail("cannot pivot_root to", R);
    if (::chdir("/") != 0 || ::umount2("/.oldroot", MNT_DETACH) != 0) return fail("cannot detach", "/.oldroot");
    ::rmdir("/.oldroot");
    return true;
}

bool write_text(const char *path, const char *text) {
    int fd = ::open(path, O_WRONLY | O_CLOEXEC);
    if (fd < 0) return fail("cannot open", path);
    bool ok = ::write(fd, text, strlen(text)) == static_cast<ssize_t>(strlen(text));
    ::close(fd);
    return ok || fail("cannot write", path);
}

// A second network namespace, kept alive by a bind mount on a file: the
// far ends of usb0 (the operator) and of eth0 (a LAN host).
bool make_outside_ns() {
    int fd = ::open(st::kOperatorNs, O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) return fail("cannot create", st::kOperatorNs);
    ::close(fd);
    pid_t pid = ::fork();
    if (pid == 0) {
        if (::unshare(CLONE_NEWNET) != 0 ||
            ::mount("/proc/self/ns/net", st::kOperatorNs, nullptr, MS_BIND, nullptr) != 0)
            ::_exit(1);
        ::_exit(0);
    }
    int status = 0;
    if (pid < 0 || ::waitpid(pid, &status, 0) < 0 || status != 0) return fail("cannot create namespace", "outside");
    return true;
}

// Runs "ip -batch FILE", in the outside namespace when asked.  On failure
// ip's first line of complaint becomes the one line the runner reports.
bool run_ip_batch(const char *file, bool outside) {
    int err[2];
    if (::pipe2(err, O_CLOEXEC) != 0) return fail("cannot create pipe for", file);
    pid_t pid = ::fork();
    if (pid == 0) {
        ::dup2(err[1], 2);
        if (outside) {
            int ns = ::open(st::kOperatorNs, O_RDONLY | O_CLOEXEC);
            if (ns < 0 || ::setns(ns, CLONE_NEWNET) != 0) {
                ::dprintf(2, "cannot enter %s: %s\n", st::kOperatorNs, strerror(errno));
                ::_exit(126);
            }
        }
        ::execlp("ip", "ip", "-batch", file, static_cast<char *>(nullptr));
        ::dprintf(2, "cannot run ip: %s\n", strerror(errno));
        ::_exit(127);
    }
    ::close(err[1]);
    std::string complaint;
    char buf[512];
    ssize_t n;
    while ((n = ::read(err[0], buf, sizeof buf)) != 0) {
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) break;
        if (complaint.size() < 4096) complaint.append(buf, static_cast<size_t>(n));
    }
    ::close(err[0]);
    int status = 0;
    if (pid >= 0 && ::waitpid(pid, &status, 0) == pid && status == 0) return true;
    complaint = complaint.substr(0, complaint.find('\n'));
    ::fprintf(stderr, "run-in-device: network set-up failed (%s): %s\n", file,
              complaint.empty() ? "ip failed" : complaint.c_str());
    return false;
}

bool write_batch(const char *path, const std::string &text) {
    int fd = ::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) return fail("cannot create", path);
    bool ok = ::write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    ::close(fd);
    return ok || fail("cannot write", path);
}

bool make_network() {
    // IPv6 addresses usable at once: no duplicate address detection wait.
    if (!write_text("/proc/sys/net/ipv6/conf/all/accept_dad", "0") ||
        !write_text("/proc/sys/net/ipv6/conf/default/accept_dad", "0") ||
        !write_text("/proc/sys/net/ipv4/ip_forward", "1") || !make_outside_ns())
        return false;
    const std::string ns = st::kOperatorNs;
    const std::string inside =
        "link set lo up\n"
        "link add usb0 address 02:00:0a:40:00:02 type veth peer name wan0 address 02:00:0a:40:00:01 netns " + ns + "\n"
        "addr add 10.64.0.2/24 dev usb0\n"
        "addr add 2001:db8:64::2/64 dev usb0 nodad\n"
        "link set usb0 up\n"
        "link add br0 address 02:00:c0:a8:01:01 type bridge stp_state 0 forward_delay 0\n"
        "link add eth0 address 02:00:c0:a8:01:02 type veth peer name lan0 address 02:00:c0:a8:01:64 netns " + ns + "\n"
        "link set eth0 master br0\n"
        "link set eth0 up\n"
        "addr add 192.168.1.1/24 dev br0\n"
        "link set br0 up\n"
        "route add default via 10.64.0.1 dev usb0\n"
        "route add ::/0 via 2001:db8:64::1 dev usb0\n";
    const std::string outside =
        "link set lo up\n"
        "addr add 10.64.0.1/24 dev wan0\n"
        "addr add 2001:db8:64::1/64 dev wan0 nodad\n"
        "link set wan0 up\n"
        "addr add 192.168.1.100/24 dev lan0\n"
        "link set lan0 up\n"
        "route add default via 192.168.1.1 dev lan0\n";
    const char *in_file = "/var/lib/device/ns/inside.batch";
    const char *out_file = "/var/lib/device/ns/outside.batch";
    return write_batch(in_file, inside) && write_batch(out_file, outside) && run_ip_batch(in_file, false) &&
           run_ip_batch(out_file, true);
}

}  // namespace

// "--setup [MODE HOST INSIDE]...": every tree is opened before anything is
// mounted.
int device_setup(int argc, char **argv) {
    if ((argc - 2) % 3 != 0) {
        ::fputs("run-in-device: device_sim --setup needs MODE HOST INSIDE triplets\n", stderr);
        return 2;
    }
    std::vector<Bind> binds;
    for (int i = 2; i + 2 < argc; i += 3) {
        const std::string mode = argv[i], inside = argv[i + 2];
        if ((mode != "ro" && mode != "rw") || inside.size() < 2 || inside[0] != '/') {
            ::fprintf(stderr, "run-in-device: bad bind %s %s %s\n", argv[i], argv[i + 1], argv[i + 2]);
            return 2;
        }
        binds.push_back(Bind{mode == "ro", argv[i + 1], inside, Fd()});
    }
    return open_binds(binds) && make_root(binds) && make_network() ? 0 : 1;
}
