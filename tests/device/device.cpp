// Helpers of the device tests; see device.h.
#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/if_packet.h>
#include <net/ethernet.h>
#include <net/if.h>
#include <poll.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include "device.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "device_state.h"

namespace fs = std::filesystem;
namespace st = devtest::state;

namespace devtest {

namespace {

// Removes every entry of a directory but keeps the directory itself.
void clear_dir(const std::string &dir) {
    std::error_code ec;
    for (const auto &entry : fs::directory_iterator(dir, ec)) fs::remove_all(entry.path(), ec);
}

std::string answer_stem(const std::string &tool) {
    return std::string(st::kAnswers) + "/" + st::tool_key(tool);
}

std::string quote(const std::string &text) {
    std::string out = "'";
    for (char c : text) {
        if (c == '\'')
            out += "'\\''";
        else
            out += c;
    }
    return out + "'";
}

bool entry_is_tool(const std::string &entry, const std::string &tool) {
    std::string argv0 = entry.substr(0, entry.find(' '));
    if (argv0 == tool) return true;
    return tool.find('/') == std::string::npos && argv0.size() > tool.size() &&
           argv0.compare(argv0.size() - tool.size() - 1, std::string::npos, "/" + tool) == 0;
}

}  // namespace

namespace {

std::string env_dir(const char *name) {
    const char *value = ::getenv(name);
    if (value && *value) return value;
    ADD_FAILURE() << name << " is not set: run device tests through tools/device/run-in-device "
                  << "(host tests through ctest)";
    // Nothing can be created below /dev/null: a test that goes on anyway
    // cannot litter the host.
    return std::string("/dev/null/") + name + "-unset";
}

}  // namespace

std::string src_dir() { return env_dir("CMDLIB_SRC"); }

std::string build_dir() { return env_dir("CMDLIB_BUILD"); }

std::string src_path(const std::string &relative) { return src_dir() + "/" + relative; }

bool in_device() {
    return ::access(st::kMarker, F_OK) == 0 && ::getenv("CMDLIB_IN_DEVICE") != nullptr;
}

void write_file(const std::string &path, const std::string &content, int mode) {
    std::error_code ec;
    fs::path parent = fs::path(path).parent_path();
    if (!parent.empty()) fs::create_directories(parent, ec);
    // A tool's path is a link to the shared simulator binary: replace the
    // link, never write through it.
    if (fs::is_symlink(fs::symlink_status(path, ec))) fs::remove(path, ec);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << content;
    out.close();
    ::chmod(path.c_str(), static_cast<mode_t>(mode));
}

std::string read_file(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return "";
    std::ostringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

bool file_exists(const std::string &path) {
    struct stat sb;
    return ::lstat(path.c_str(), &sb) == 0;
}

void remove_all(const std::string &path) {
    std::error_code ec;
    fs::remove_all(path, ec);
}

bool bind_dir(const std::string &src, const std::string &dst) {
    std::error_code ec;
    if (fs::is_directory(src, ec))
        fs::create_directories(dst, ec);
    else if (!file_exists(dst))
        write_file(dst, "");
    return ::mount(src.c_str(), dst.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0;
}

bool unbind(const std::string &dst) { return ::umount2(dst.c_str(), MNT_DETACH) == 0; }

int sh(const std::string &cmd) {
    fflush(nullptr);
    pid_t pid = ::fork();
    if (pid < 0) return -1;
    if (pid == 0) {
        ::execl("/bin/sh", "sh", "-c", cmd.c_str(), static_cast<char *>(nullptr));
        ::_exit(127);
    }
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0)
        if (errno != EINTR) return -1;
    if (WIFEXITED(status)) return WEXITSTATUS(status);
    if (WIFSIGNALED(status)) return 128 + WTERMSIG(status);
    return -1;
}

std::string sh_out(const std::string &cmd) {
    fflush(nullptr);
    FILE *p = ::popen(cmd.c_str(), "r");
    if (!p) return "";
    std::string out;
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0) out.append(buf, n);
    ::pclose(p);
    return out;
}

std::vector<std::string> calls() {
    std::vector<std::string> out;
    std::istringstream in(read_file(st::kCallLog));
    for (std::string line; std::getline(in, line);) out.push_back(line);
    return out;
}

std::vector<std::string> calls(const std::string &tool) {
    std::vector<std::string> out;
    for (std::string &entry : calls())
        if (entry_is_tool(entry, tool)) out.push_back(std::move(entry));
    return out;
}

void clear_calls() { write_file(st::kCallLog, ""); }

bool wait_until(const std::function<bool()> &condition, int timeout_ms) {
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

bool wait_for_calls(const std::string &tool, size_t count, int timeout_ms) {
    return wait_until([&] { return calls(tool).size() >= count; }, timeout_ms);
}

void set_answer(const std::string &tool, const std::string &stdout_text, int exit_code) {
    write_file(answer_stem(tool) + ".out", stdout_text);
    write_file(answer_stem(tool) + ".rc", std::to_string(exit_code));
}

void set_answer_delay(const std::string &tool, int delay_ms) {
    write_file(answer_stem(tool) + ".delay", std::to_string(delay_ms));
}

void reset_answers() { clear_dir(st::kAnswers); }

void mdlcfg_set(const std::string &key, const std::string &value) {
    write_file(std::string(st::kMdlcfgStore) + "/" + key, value);
}

std::string mdlcfg_get(const std::string &key, bool committed) {
    return read_file(std::string(committed ? st::kMdlcfgCommitted : st::kMdlcfgStore) + "/" + key);
}

bool mdlcfg_has(const std::string &key, bool committed) {
    return file_exists(std::string(committed ? st::kMdlcfgCommitted : st::kMdlcfgStore) + "/" + key);
}

void sendat_answer(const std::string &at_command, const std::string &response, int delay_ms) {
    // Entries are numbered in the order they are added; the sendat
    // simulator takes the highest-numbered match.
    size_t n = 0;
    std::error_code ec;
    for (const auto &entry : fs::directory_iterator(st::kSendat, ec))
        if (entry.path().extension() == ".cmd") ++n;
    std::string stem = std::string(st::kSendat) + "/" + std::to_string(n);
    write_file(stem + ".resp", response);
    write_file(stem + ".delay", std::to_string(delay_ms));
    write_file(stem + ".cmd", at_command);  // last: the entry is complete once visible
}

void make_image(const std::string &path, const std::string &feature, const std::string &payload) {
    std::string header = "PKTP\nname: " + fs::path(path).filename().string() + "\nversion: 1.0.0\n";
    if (!feature.empty()) header += "feature: " + feature + "\n";
    write_file(path, header + "\n" + payload);
}

void reset_device_state() {
    clear_calls();
    reset_answers();
    clear_dir(st::kMdlcfgStore);
    clear_dir(st::kMdlcfgCommitted);
    clear_dir(st::kSendat);
    std::error_code ec;
    fs::create_directories("/tmp/cmdlib", ec);
    clear_dir("/tmp/cmdlib");
}

int ip(const std::string &args) { return sh("ip " + args); }

int outside(const std::string &cmd) {
    return sh(std::string("nsenter --net=") + st::kOperatorNs + " sh -c " + quote(cmd));
}

bool add_neighbour(const std::string &ip_addr, const std::string &mac, const std::string &dev,
                   const std::string &nud) {
    return ip("neigh replace " + ip_addr + " lladdr " + mac + " dev " + dev + " nud " + nud) == 0;
}

bool add_interface(const std::string &name, const std::string &cidr) {
    // The kernel of the build machine may lack dummy interfaces; a veth
    // whose far end sits (up) in the outside namespace has carrier as well.
    std::string peer = name.substr(0, 13) + "-p";
    return ip("link add " + name + " type veth peer name " + peer + " netns " + st::kOperatorNs) == 0 &&
           outside("ip link set " + peer + " up") == 0 && ip("addr add " + cidr + " dev " + name) == 0 &&
           ip("link set " + name + " up") == 0;
}

}  // namespace devtest

void DeviceTest::SetUp() {
    ASSERT_TRUE(devtest::in_device()) << "not inside a device: run this binary through tools/device/run-in-device";
    devtest::reset_device_state();
}

namespace devtest {

void set_answer_signal(const std::string &tool, int signal_number) {
    write_file(answer_stem(tool) + ".signal", std::to_string(signal_number));
}

bool add_lan_host(const std::string &name, const std::string &mac) {
    std::string near = name.substr(0, 12) + "-br";
    return ip("link add " + near + " type veth peer name " + name + " netns " + st::kOperatorNs) == 0 &&
           ip("link set " + near + " master br0 up") == 0 &&
           outside("ip link set " + name + " address " + mac + " up") == 0;
}

}  // namespace devtest

// ---- servers and captures on the operator side -------------------------------

namespace devtest {

int outside_socket(int domain, int type, int protocol) {
    // A socket belongs to the namespace its creator was in: step into the
    // operator's namespace for the one call and back.
    int home = ::open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC), there = ::open(st::kOperatorNs, O_RDONLY | O_CLOEXEC);
    int fd = -1;
    if (home >= 0 && there >= 0 && ::setns(there, CLONE_NEWNET) == 0) {
        fd = ::socket(domain, type | SOCK_CLOEXEC, protocol);
        if (::setns(home, CLONE_NEWNET) != 0) ::abort();  // the test would run on the wrong side
    }
    ::close(home);
    ::close(there);
    return fd;
}

UdpCapture::UdpCapture() {
    fd_ = outside_socket(AF_PACKET, SOCK_DGRAM, 0);
    struct ifreq ifr = {};
    snprintf(ifr.ifr_name, sizeof ifr.ifr_name, "wan0");
    struct sockaddr_ll ll = {};
    ll.sll_family = AF_PACKET;
    ll.sll_protocol = htons(ETH_P_ALL);
    if (fd_ < 0 || ::ioctl(fd_, SIOCGIFINDEX, &ifr) != 0 ||
        (ll.sll_ifindex = ifr.ifr_ifindex, ::bind(fd_, reinterpret_cast<struct sockaddr *>(&ll), sizeof ll)) != 0)
        ADD_FAILURE() << "no capture on wan0: " << strerror(errno);
}

UdpCapture::~UdpCapture() {
    if (fd_ >= 0) ::close(fd_);
}

void UdpCapture::read_ready(int timeout_ms) {
    struct pollfd pfd = {fd_, POLLIN, 0};
    if (fd_ < 0 || ::poll(&pfd, 1, timeout_ms) <= 0) return;
    unsigned char p[65536];
    struct sockaddr_ll from = {};
    socklen_t len = sizeof from;
    for (ssize_t n; (n = ::recvfrom(fd_, p, sizeof p, MSG_DONTWAIT, reinterpret_cast<struct sockaddr *>(&from), &len)) >= 0;
         len = sizeof from) {
        // UDP in IPv4 (unfragmented) or IPv6 (no extension headers) arriving from usb0
        const bool v4 = ntohs(from.sll_protocol) == ETH_P_IP && n >= 28 && p[9] == IPPROTO_UDP && !(p[6] & 0x3f) && !p[7];
        const bool v6 = ntohs(from.sll_protocol) == ETH_P_IPV6 && n >= 48 && p[6] == IPPROTO_UDP;
        if (from.sll_pkttype == PACKET_OUTGOING || !(v4 || v6)) continue;
        const size_t off = v4 ? (p[0] & 15u) * 4 : 40, udp_len = static_cast<size_t>(p[off + 4] << 8 | p[off + 5]);
        if (udp_len < 8 || off + udp_len > static_cast<size_t>(n)) continue;
        UdpDatagram d;
        char a[INET6_ADDRSTRLEN];
        d.src = inet_ntop(v4 ? AF_INET : AF_INET6, p + (v4 ? 12 : 8), a, sizeof a);
        d.dst = inet_ntop(v4 ? AF_INET : AF_INET6, p + (v4 ? 16 : 24), a, sizeof a);
        d.sport = static_cast<uint16_t>(p[off] << 8 | p[off + 1]);
        d.dport = static_cast<uint16_t>(p[off + 2] << 8 | p[off + 3]);
        d.payload.assign(reinterpret_cast<const char *>(p + off + 8), udp_len - 8);
        seen_.push_back(d);
    }
}

std::vector<UdpDatagram> UdpCapture::wait_for(uint16_t dport, size_t n, int timeout_ms) {
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
    for (;;) {
        std::vector<UdpDatagram> out;
        for (const auto &d : seen_)
            if (d.dport == dport) out.push_back(d);
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (out.size() >= n || left.count() <= 0) return out;
        read_ready(static_cast<int>(left.count()));
    }
}

UdpResponder::UdpResponder(const std::string &addr, uint16_t port, Reply reply) : reply_(std::move(reply)) {
    fd_ = outside_socket(AF_INET, SOCK_DGRAM, 0);
    struct sockaddr_in a = {};
    a.sin_family = AF_INET;
    a.sin_port = htons(port);
    if (fd_ < 0 || inet_pton(AF_INET, addr.c_str(), &a.sin_addr) != 1 ||
        ::bind(fd_, reinterpret_cast<struct sockaddr *>(&a), sizeof a) != 0) {
        ADD_FAILURE() << "no responder on " << addr << ":" << port << ": " << strerror(errno);
        return;
    }
    thread_ = std::thread([this] {
        while (!stop_) {
            struct pollfd p = {fd_, POLLIN, 0};
            char buf[65536];
            struct sockaddr_storage from;
            socklen_t len = sizeof from;
            ssize_t n = ::poll(&p, 1, 20) > 0 ? ::recvfrom(fd_, buf, sizeof buf, 0, reinterpret_cast<struct sockaddr *>(&from), &len) : -1;
            if (n < 0) continue;
            std::string request(buf, static_cast<size_t>(n)), answer = reply_ ? reply_(request) : "";
            {
                std::lock_guard<std::mutex> lock(mutex_);
                received_.push_back(request);
            }
            if (!answer.empty()) ::sendto(fd_, answer.data(), answer.size(), 0, reinterpret_cast<struct sockaddr *>(&from), len);
        }
    });
}

UdpResponder::~UdpResponder() {
    stop_ = true;
    if (thread_.joinable()) thread_.join();
    if (fd_ >= 0) ::close(fd_);
}

std::vector<std::string> UdpResponder::received(size_t n, int timeout_ms) {
    auto count = [&] {
        std::lock_guard<std::mutex> lock(mutex_);
        return received_.size();
    };
    wait_until([&] { return count() >= n; }, timeout_ms);
    std::lock_guard<std::mutex> lock(mutex_);
    return received_;
}

Process::Process(const std::vector<std::string> &argv) {
    const std::string name = fs::path(argv[0]).filename().string();
    std::error_code ec;
    fs::create_directories(fs::path(argv[0]).parent_path(), ec);
    fs::remove(argv[0], ec);  // whatever stood there, in the device's throwaway root
    fs::create_symlink(fs::read_symlink("/usr/local/bin/mdlcfg", ec), argv[0], ec);
    set_answer_delay(name, -1);
    pid_ = ::fork();
    if (pid_ == 0) {
        std::vector<char *> v;
        for (const std::string &a : argv) v.push_back(const_cast<char *>(a.c_str()));
        v.push_back(nullptr);
        ::execv(argv[0].c_str(), v.data());
        ::_exit(127);
    }
    // until it sleeps under its own name (comm holds at most 15 characters)
    const std::string stat = "/proc/" + std::to_string(pid_) + "/stat", want = "(" + name.substr(0, 15) + ") S";
    EXPECT_TRUE(wait_until([&] { return read_file(stat).find(want) != std::string::npos; })) << argv[0];
}

Process::~Process() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
}

}  // namespace devtest
