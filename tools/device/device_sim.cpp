// device_sim: one binary that plays every firmware tool inside the test
// device.  run-in-device links each tool's path (mdlcfg, sendat,
// /etc/qxscript/..., /sbin/reboot, ...) to it; the name it was started
// under picks the behaviour.  Every call is appended to the call log as its
// exact argv, then the tool answers:
//   1. a scripted answer set by the test (stdout text, exit code, delay);
//   2. otherwise its own behaviour: mdlcfg keeps a real key/value store,
//      configloader turns a requirement file into an export, sendat/atcmd
//      answer AT commands from a table, packtoolpro lists image headers;
//      every other tool does nothing and exits 0.
// A real binary (not a script) keeps /proc/<pid>/cmdline and comm equal to
// the tool's name, so process walks and the real killall see "sendat".
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <dirent.h>
#include <string>
#include <vector>

#include "device_state.h"

namespace {

namespace st = devtest::state;

enum class Kind { Generic, Mdlcfg, Configloader, Sendat, Atcmd, Packtoolpro };

struct Tool {
    const char *path;  // where it is installed in the device
    Kind kind;
};

// Every firmware tool and script the library runs.  Tools found through
// PATH go to /usr/local/bin; scripts and tools run by absolute path sit at
// that path.  The base name of each path is unique: it selects the entry.
constexpr Tool kTools[] = {
    {"/usr/local/bin/mdlcfg", Kind::Mdlcfg},
    {"/usr/local/bin/configloader", Kind::Configloader},
    {"/usr/local/bin/sendat", Kind::Sendat},
    {"/usr/local/bin/atcmd", Kind::Atcmd},
    {"/usr/local/bin/packtoolpro", Kind::Packtoolpro},
    {"/usr/bin/qxupdate", Kind::Generic},
    {"/usr/local/bin/sockmsg_send", Kind::Generic},
    {"/usr/local/bin/wlanconfig", Kind::Generic},
    {"/usr/local/bin/arpscan", Kind::Generic},
    {"/usr/local/bin/iwpriv", Kind::Generic},
    {"/usr/local/bin/qxsys", Kind::Generic},
    {"/usr/local/bin/qxfotaonsnmp", Kind::Generic},
    {"/usr/bin/nfc-tool", Kind::Generic},
    {"/usr/sbin/reboot", Kind::Generic},  // /sbin is /usr/sbin on the build host
    {"/etc/qxscript/ntp_sw.sh", Kind::Generic},
    {"/etc/qxscript/netcwmpd_start.sh", Kind::Generic},
    {"/etc/qxscript/yaddns_start.sh", Kind::Generic},
    {"/etc/qxscript/modem_log_sw.sh", Kind::Generic},
    {"/etc/qxscript/siproxy_startup.sh", Kind::Generic},
    {"/etc/qxscript/utnd_sw.sh", Kind::Generic},
    {"/etc/qxscript/adb_sw.sh", Kind::Generic},
    {"/etc/qxscript/dropbear_sw.sh", Kind::Generic},
    {"/etc/qxscript/rpcapd.sh", Kind::Generic},
    {"/etc/qxscript/ddos.sh", Kind::Generic},
    {"/etc/qxscript/voiceEnable.sh", Kind::Generic},
    {"/etc/qxscript/firewall_level.sh", Kind::Generic},
    {"/etc/qxscript/qx_set_l2tp_5_static_ip.sh", Kind::Generic},
    {"/etc/qxscript/port_isolate.sh", Kind::Generic},
    {"/etc/qxscript/net_monitor.sh", Kind::Generic},
    {"/etc/qxscript/uspad_start.sh", Kind::Generic},
    {"/etc/qxscript/fota_start.sh", Kind::Generic},
    {"/etc/qxscript/start_voice", Kind::Generic},
    {"/etc/qxscript/rc.backup-before-fota-upgrade", Kind::Generic},
    {"/etc/qxscript/rc.execute-config-fota-upgrade", Kind::Generic},
    {"/etc/qxscript/rc.restore-after-fota-upgrade", Kind::Generic},
    {"/etc/qxscript/rc.save-wan-ip-info", Kind::Generic},
    {"/etc/init.d/dialer", Kind::Generic},
    {"/etc/init.d/sms_mgr", Kind::Generic},
    {"/etc/init.d/wifidog", Kind::Generic},
    {"/etc/rc.d/rc.disable-wan-communication", Kind::Generic},
    {"/etc/rc.d/rc.enable-wan-communication", Kind::Generic},
    {"/etc/rc.d/rc.ipv6.dhcp6s", Kind::Generic},
    {"/etc/rc.d/rc.ipv6.radvd", Kind::Generic},
    {"/etc/rc.d/rc.ipv6.totd", Kind::Generic},
    {"/etc/iptables_restore_all", Kind::Generic},
    {"/usr/script/dnsmasq_init.sh", Kind::Generic},
};

// Directories the firmware expects; created empty in every device.
constexpr const char *kFirmwareDirs[] = {
    "/tmp/cmdlib", "/mnt/data/etc/qxcfg", "/productinfo", "/data", "/var/run", "/etc/qxscript",
};

std::string base_name(const std::string &path) {
    auto slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

// DIR/NAME, built in place.
std::string in_dir(const std::string &dir, const std::string &name) {
    std::string path;
    path.reserve(dir.size() + 1 + name.size());
    path.append(dir).append(1, '/').append(name);
    return path;
}

const Tool *find_tool(const std::string &name) {
    for (const Tool &t : kTools)
        if (base_name(t.path) == name) return &t;
    return nullptr;
}

bool read_file(const std::string &path, std::string *out) {
    int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    out->clear();
    char buf[4096];
    ssize_t n;
    while ((n = ::read(fd, buf, sizeof buf)) > 0) out->append(buf, static_cast<size_t>(n));
    ::close(fd);
    return true;
}

bool write_file(const std::string &path, const std::string &data, int flags = O_TRUNC) {
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | flags, 0644);
    if (fd < 0) return false;
    size_t done = 0;
    while (done < data.size()) {
        ssize_t n = ::write(fd, data.data() + done, data.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        done += static_cast<size_t>(n);
    }
    ::close(fd);
    return done == data.size();
}

void mkdirs(const std::string &path) {
    for (size_t i = 1; i <= path.size(); ++i)
        if (i == path.size() || path[i] == '/') ::mkdir(path.substr(0, i).c_str(), 0755);
}

void write_stdout(const std::string &text) {
    size_t done = 0;
    while (done < text.size()) {
        ssize_t n = ::write(1, text.data() + done, text.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return;
        done += static_cast<size_t>(n);
    }
}

// Sleeps ms milliseconds; a negative delay never returns (the tool hangs
// until it is killed, like a modem that does not answer).
void delay_ms(long ms) {
    if (ms < 0)
        for (;;) ::pause();
    timespec ts{ms / 1000, (ms % 1000) * 1000000L};
    while (::nanosleep(&ts, &ts) < 0 && errno == EINTR) {
    }
}

long read_long(const std::string &path, long fallback) {
    std::string text;
    if (!read_file(path, &text) || text.empty()) return fallback;
    return ::strtol(text.c_str(), nullptr, 10);
}

std::string trim(const std::string &s) {
    size_t b = s.find_first_not_of(" \t\r\n");
    if (b == std::string::npos) return "";
    size_t e = s.find_last_not_of(" \t\r\n");
    return s.substr(b, e - b + 1);
}

// One line a call, appended with a single write so that concurrent tools
// never interleave inside a line.  A line feed inside an argument is
// written as the two characters \n to keep one call on one line.
void log_call(int argc, char **argv) {
    std::string line;
    for (int i = 0; i < argc; ++i) {
        if (i) line += ' ';
        for (const char *p = argv[i]; *p; ++p) {
            if (*p == '\n')
                line += "\\n";
            else
                line += *p;
        }
    }
    line += '\n';
    write_file(st::kCallLog, line, O_APPEND);
}

// ---- mdlcfg ------------------------------------------------------------------

bool valid_key(const std::string &key) {
    if (key.empty() || key == "." || key == "..") return false;
    return key.find('/') == std::string::npos;
}

// The exporter's quoting: double quotes, with \ " $ ` escaped by a backslash.
std::string export_quote(const std::string &value) {
    std::string out = "\"";
    for (char c : value) {
        if (c == '\\' || c == '"' || c == '$' || c == '`') out += '\\';
        out += c;
    }
    out += '"';
    return out;
}

std::vector<std::string> list_dir(const char *dir) {
    std::vector<std::string> names;
    if (DIR *d = ::opendir(dir)) {
        while (dirent *e = ::readdir(d))
            if (e->d_name[0] != '.') names.emplace_back(e->d_name);
        ::closedir(d);
    }
    std::sort(names.begin(), names.end());
    return names;
}

int mdlcfg(int argc, char **argv) {
    if (argc < 2) {
        ::fputs("usage: mdlcfg -e | -g KEY | -a KEY=value | -c\n", stderr);
        return 1;
    }
    mkdirs(st::kMdlcfgStore);
    std::string store = st::kMdlcfgStore;
    for (int i = 1; i < argc; ++i) {
        std::string opt = argv[i];
        if (opt == "-e") {
            std::string out;
            for (const std::string &key : list_dir(st::kMdlcfgStore)) {
                std::string value;
                read_file(in_dir(store, key), &value);
                out.append("export ").append(key).append(1, '=').append(export_quote(value)).append(1, '\n');
            }
            write_stdout(out);
        } else if (opt == "-g" && i + 1 < argc) {
            std::string key = argv[++i], value;
            if (valid_key(key) && read_file(in_dir(store, key), &value)) write_stdout(value + "\n");
        } else if (opt == "-a" && i + 1 < argc) {
            std::string assignment = argv[++i];
            size_t eq = assignment.find('=');
            std::string key = eq == std::string::npos ? "" : assignment.substr(0, eq);
            if (!valid_key(key)) {
                ::fprintf(stderr, "mdlcfg: bad assignment '%s'\n", assignment.c_str());
                return 1;
            }
            write_file(in_dir(store, key), assignment.substr(eq + 1));
        } else if (opt == "-c") {
            std::string committed = st::kMdlcfgCommitted;
            mkdirs(committed);
            for (const std::string &key : list_dir(st::kMdlcfgCommitted)) ::unlink((in_dir(committed, key)).c_str());
            for (const std::string &key : list_dir(st::kMdlcfgStore)) {
                std::string value;
                read_file(in_dir(store, key), &value);
                write_file(in_dir(committed, key), value);
            }
        } else {
            ::fprintf(stderr, "mdlcfg: unknown option '%s'\n", opt.c_str());
            return 1;
        }
    }
    return 0;
}

// ---- configloader --------------------------------------------------------------

// "configloader -c IN -o OUT -e OUT2 -n": reads a requirement configuration
// (KEY=value lines, "export " optional, '#' comments) and writes it to OUT
// in export form; OUT2 receives an empty log.  A missing IN writes nothing.
int configloader(int argc, char **argv) {
    std::string in, out, err;
    for (int i = 1; i < argc; ++i) {
        std::string opt = argv[i];
        if (i + 1 < argc && opt == "-c")
            in = argv[++i];
        else if (i + 1 < argc && opt == "-o")
            out = argv[++i];
        else if (i + 1 < argc && opt == "-e")
            err = argv[++i];
    }
    std::string text;
    if (in.empty() || out.empty() || !read_file(in, &text)) {
        ::fprintf(stderr, "configloader: cannot read '%s'\n", in.c_str());
        return 2;
    }
    std::string result;
    size_t pos = 0;
    while (pos < text.size()) {
        size_t nl = text.find('\n', pos);
        if (nl == std::string::npos) nl = text.size();
        std::string line = trim(text.substr(pos, nl - pos));
        pos = nl + 1;
        if (line.empty() || line[0] == '#') continue;
        if (line.compare(0, 7, "export ") == 0) line = trim(line.substr(7));
        size_t eq = line.find('=');
        if (eq == std::string::npos || eq == 0) continue;
        std::string key = trim(line.substr(0, eq)), value = trim(line.substr(eq + 1));
        if (value.size() >= 2 && value.front() == '"' && value.back() == '"') value = value.substr(1, value.size() - 2);
        result += "export " + key + "=" + export_quote(value) + "\n";
    }
    if (!write_file(out, result)) return 3;
    if (!err.empty()) write_file(err, "");
    return 0;
}

// ---- sendat / atcmd ---------------------------------------------------------------

// The answer for one AT command from the table (the entry added last wins);
// "\r\nERROR\r\n" with no delay when the command is not scripted.
std::string at_answer(const std::string &command, long *delay) {
    std::string dir = st::kSendat;
    long best = -1;
    for (const std::string &name : list_dir(st::kSendat)) {
        if (name.size() < 5 || name.compare(name.size() - 4, 4, ".cmd") != 0) continue;
        std::string cmd;
        if (!read_file(in_dir(dir, name), &cmd) || trim(cmd) != command) continue;
        best = std::max(best, ::strtol(name.c_str(), nullptr, 10));
    }
    if (best < 0) {
        *delay = 0;
        return "\r\nERROR\r\n";
    }
    std::string stem = dir + "/" + std::to_string(best), resp;
    read_file(stem + ".resp", &resp);
    *delay = read_long(stem + ".delay", 0);
    return resp;
}

// Options come as "-dDEV" or "-d DEV" (the library uses the joined form).
std::string option_value(int argc, char **argv, int *i, char letter) {
    const char *a = argv[*i];
    if (a[0] != '-' || a[1] != letter) return "";
    if (a[2]) return a + 2;
    return *i + 1 < argc ? argv[++*i] : "";
}

int sendat(int argc, char **argv) {
    std::string device, in, out;
    for (int i = 1; i < argc; ++i) {
        if (argv[i][0] != '-') continue;
        switch (argv[i][1]) {
            case 'd': device = option_value(argc, argv, &i, 'd'); break;
            case 'f': in = option_value(argc, argv, &i, 'f'); break;
            case 'o': out = option_value(argc, argv, &i, 'o'); break;
            default: break;
        }
    }
    std::string command;
    if (in.empty() || !read_file(in, &command)) {
        ::fprintf(stderr, "sendat: cannot read command file '%s'\n", in.c_str());
        return 1;
    }
    long delay = 0;
    std::string answer = at_answer(trim(command), &delay);
    delay_ms(delay);
    if (out.empty()) {
        write_stdout(answer);
        return 0;
    }
    // Written whole under another name and renamed: a reader never sees a
    // half-written answer.
    std::string tmp = out + ".sendat-part";
    if (!write_file(tmp, answer) || ::rename(tmp.c_str(), out.c_str()) != 0) return 1;
    return 0;
}

int atcmd(int argc, char **argv) {
    if (argc < 2) return 1;
    long delay = 0;
    std::string answer = at_answer(trim(argv[1]), &delay);
    delay_ms(delay);
    write_stdout(answer);
    return 0;
}

// ---- packtoolpro --------------------------------------------------------------------

// An image made by the tests starts with the line "PKTP", then header lines
// ("name: x", "feature: board", ...) up to an empty line, then the payload.
// "packtoolpro -l IMAGE" lists the header lines.
int packtoolpro(int argc, char **argv) {
    if (argc < 3 || std::string(argv[1]) != "-l") {
        ::fputs("usage: packtoolpro -l IMAGE\n", stderr);
        return 1;
    }
    std::string data;
    if (!read_file(argv[2], &data)) {
        ::fprintf(stderr, "packtoolpro: cannot open '%s'\n", argv[2]);
        return 1;
    }
    if (data.compare(0, 5, "PKTP\n") != 0) {
        ::fprintf(stderr, "packtoolpro: '%s' is not a firmware image\n", argv[2]);
        return 1;
    }
    size_t end = data.find("\n\n", 4);
    write_stdout(data.substr(5, end == std::string::npos ? std::string::npos : end - 4));
    return 0;
}

}  // namespace

// ---- installation --------------------------------------------------------------------

// Prepares the device tree under ROOT (the merged overlay, before the root
// is switched): firmware directories, simulator state, and at every tool's
// path a link to a copy of SELF (this binary, read through /proc/self/exe
// since its host path may be hidden by then).
int device_install(const std::string &root, const std::string &self) {
    for (const char *dir : kFirmwareDirs) mkdirs(root + dir);
    mkdirs(root + st::kAnswers);
    mkdirs(root + st::kMdlcfgStore);
    mkdirs(root + st::kMdlcfgCommitted);
    mkdirs(root + st::kSendat);
    mkdirs(root + "/var/lib/device/ns");
    // The tools link to a copy inside the device, never to the build tree:
    // a test that writes through a tool's path (to replace a script) then
    // changes only the throwaway copy.
    const std::string local = "/usr/lib/device/device_sim";
    mkdirs(root + "/usr/lib/device");
    std::string self_text;
    if (!read_file(self, &self_text) || self_text.empty()) {
        ::fprintf(stderr, "run-in-device: cannot read %s\n", self.c_str());
        return 1;
    }
    write_file(root + local, self_text);
    ::chmod((root + local).c_str(), 0755);
    for (const Tool &t : kTools) {
        std::string path = root + t.path;
        mkdirs(path.substr(0, path.rfind('/')));
        ::unlink(path.c_str());
        if (::symlink(local.c_str(), path.c_str()) != 0) {
            ::fprintf(stderr, "run-in-device: cannot link %s: %s\n", path.c_str(), strerror(errno));
            return 1;
        }
    }
    // Factory copy that a factory reset restores /etc/map from.
    mkdirs(root + "/rom/etc/map");
    write_file(root + "/rom/etc/map/map.conf", "# factory map settings\n");
    write_file(root + st::kCallLog, "");
    write_file(root + st::kMarker, "1\n");
    return 0;
}


int device_setup(int argc, char **argv);

// A scripted end by a signal (set_answer_signal): the tool prints its
// answer, then dies of the signal, as a tool killed under the caller
// would.
int end_by_signal(const std::string &out, int sig) {
    write_stdout(out);
    ::signal(sig, SIG_DFL);
    ::raise(sig);
    return 128 + sig;  // a signal that cannot end a process
}

int main(int argc, char **argv) {
    if (argc < 1) return 1;
    if (argc >= 2 && std::string(argv[1]) == "--setup") return device_setup(argc, argv);
    log_call(argc, argv);

    std::string name = base_name(argv[0]);
    std::string stem = std::string(st::kAnswers) + "/" + st::tool_key(name);
    delay_ms(read_long(stem + ".delay", 0));
    std::string out;
    bool has_out = read_file(stem + ".out", &out);
    long rc = read_long(stem + ".rc", -1);
    if (long sig = read_long(stem + ".signal", 0); sig > 0) return end_by_signal(out, static_cast<int>(sig));
    if (has_out || rc >= 0) {
        write_stdout(out);
        return rc >= 0 ? static_cast<int>(rc) : 0;
    }

    const Tool *tool = find_tool(name);
    switch (tool ? tool->kind : Kind::Generic) {
        case Kind::Mdlcfg: return mdlcfg(argc, argv);
        case Kind::Configloader: return configloader(argc, argv);
        case Kind::Sendat: return sendat(argc, argv);
        case Kind::Atcmd: return atcmd(argc, argv);
        case Kind::Packtoolpro: return packtoolpro(argc, argv);
        case Kind::Generic: break;
    }
    return 0;
}
