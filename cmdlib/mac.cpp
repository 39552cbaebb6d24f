// mac: the attached units' records and their shared file, the file of the
// server's or the clients' MACs, and MAC text conversions.
#include "cmdlib/mac.h"

#include <errno.h>
#include <fcntl.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <iterator>

#include "base/internal/atomic_file.h"
#include "base/internal/byte_reader.h"
#include "base/internal/raii.h"
#include "base/libbase.h"
#include "cmdlib/internal/mac_files.h"

// The layout is the file format: every offset as listed, nothing between.
#define MAC_IP_PAIR_CHECK_OFFSET(name, count, width, offset)                         \
    static_assert(offsetof(MacIPPair, name) == (offset), #name " sits at " #offset); \
    static_assert(sizeof(MacIPPair::name) == (count) * (width), #name " is " #count " x " #width);
MAC_IP_PAIR_TEXT_FIELDS(MAC_IP_PAIR_CHECK_OFFSET)
#undef MAC_IP_PAIR_CHECK_OFFSET

namespace {

#define MAC_IP_PAIR_NAME(name, count, width, offset) #name,
constexpr const char *kTextFieldNames[] = {MAC_IP_PAIR_TEXT_FIELDS(MAC_IP_PAIR_NAME)};
#undef MAC_IP_PAIR_NAME
static_assert(std::size(kTextFieldNames) == MAC_IP_PAIR_TEXT_FIELD_COUNT, "a record has 110 text fields");
static_assert(offsetof(MacIPPair, mac) == 0 && sizeof(MacAddr) == 8, "the MAC leads the record");
static_assert(sizeof(MacIPPair) == MAC_IP_PAIR_SIZE, "a record is 3480 bytes");
static_assert(offsetof(MacControlInfo, mac_count) == MAC_RECORDS_MAX * MAC_IP_PAIR_SIZE,
              "the count follows the 20 records");
static_assert(sizeof(MacControlInfo) == MAC_CONTROL_INFO_FILE_SIZE, "the records file is 69604 bytes");
static_assert(offsetof(MacBuffer, mac_count) == MAC_RECORDS_MAX * sizeof(MacAddr), "count after the MACs");
static_assert(sizeof(MacBuffer) == MAC_BUFFER_FILE_SIZE, "the client list is 164 bytes");
static_assert(sizeof(int) == 4, "the files hold the counts as 32-bit ints");

constexpr char kRecordsFile[] = "/tmp/cmdlib/.mac_control_info_file";
constexpr char kRecordsChangedFlag[] = "/tmp/cmdlib/.mac_control_info_file_changed";
constexpr char kMacFile[] = "/tmp/cmdlib/.all_macs_tmp_file";
constexpr size_t kRecordsBytes = MAC_RECORDS_MAX * sizeof(MacIPPair);

void put_le32(unsigned char *p, int value) {
    auto v = static_cast<uint32_t>(value);
    for (int i = 0; i < 4; ++i) p[i] = static_cast<unsigned char>(v >> (8 * i));
}

int get_le32(const unsigned char *p) {
    uint32_t v = 0;
    cmdlib::ByteReader(p, 4).le32(&v);
    return static_cast<int>(v);
}

// The slots a search may visit: 0 .. count-1, at most 20.
int used_slots(const MacControlInfo *info) {
    if (info->mac_count < 0) return 0;
    return info->mac_count > MAC_RECORDS_MAX ? MAC_RECORDS_MAX : info->mac_count;
}

int find_unit(const MacControlInfo *info, const unsigned char *mac) {
    for (int i = 0; i < used_slots(info); ++i)
        if (memcmp(info->ip_pair_info[i].mac.value, mac, sizeof info->ip_pair_info[i].mac.value) == 0) return i;
    return -1;
}

// Reads the whole file when it has exactly `size` bytes: one read asking
// for one byte more tells a longer file from a complete one, and its short
// count tells the end of the file without a second read.
bool read_exact(const char *path, unsigned char *buf, size_t size) {
    cmdlib::UniqueFd fd(::open(path, O_RDONLY | O_CLOEXEC));
    if (!fd) return false;
    size_t got = 0;
    for (;;) {
        size_t want = size + 1 - got;
        ssize_t n = ::read(fd.get(), buf + got, want);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        got += static_cast<size_t>(n);
        // A regular file gives less than asked only at its end.
        if (got > size || static_cast<size_t>(n) < want) break;
    }
    return got == size;
}

long file_size(const char *path) {
    struct stat st;
    return ::stat(path, &st) == 0 ? static_cast<long>(st.st_size) : -1;
}

// What the two MAC file writers of this process last wrote.
unsigned char g_server_mac_written[sizeof(MacAddr)];
unsigned char g_client_macs_written[MAC_BUFFER_FILE_SIZE];

}  // namespace

namespace cmdlib {

bool parse_mac_text(std::string_view text, unsigned char out[6]) {
    if (text.size() < 17) return false;
    unsigned char mac[6];
    for (size_t i = 0; i < 6; ++i) {
        int hi = util_char2hex(text[3 * i]), lo = util_char2hex(text[3 * i + 1]);
        if (hi < 0 || lo < 0) return false;
        mac[i] = static_cast<unsigned char>(hi << 4 | lo);
    }
    memcpy(out, mac, sizeof mac);
    return true;
}

bool load_mac_records(const char *path, MacControlInfo *info) {
    // Read aside first: a record is only replaced by a complete file.
    UniqueMalloc<unsigned char> buf(MAC_CONTROL_INFO_FILE_SIZE + 1);
    if (!buf || !read_exact(path, buf.get(), MAC_CONTROL_INFO_FILE_SIZE)) return false;
    memcpy(info->ip_pair_info, buf.get(), kRecordsBytes);
    info->mac_count = get_le32(buf.get() + kRecordsBytes);
    return true;
}

bool save_mac_records(const char *path, const MacControlInfo *info) {
    AtomicFileWriter file(path);
    if (!file.ok()) return false;
    unsigned char count[4];
    put_le32(count, info->mac_count);
    // One write: the records as they lie in memory, then the count.
    struct iovec pieces[2] = {{const_cast<MacIPPair *>(info->ip_pair_info), kRecordsBytes},
                              {count, sizeof count}};
    if (file.write(pieces, 2)) file.commit();
    return true;
}

MacFileWrite save_mac_file(const char *path, unsigned char *memory, const unsigned char *bytes, size_t size,
                           size_t compared) {
    long on_disk = file_size(path);
    bool forced = on_disk >= 0 && static_cast<size_t>(on_disk) != size;
    if (forced) cmd_rm(path);
    if (!forced && memcmp(bytes, memory, compared) == 0) return MacFileWrite::kUnchanged;
    memcpy(memory, bytes, size);
    return replace_file(path, bytes, size) ? MacFileWrite::kWritten : MacFileWrite::kFailed;
}

int load_mac_file(const char *path, MacBuffer *out) {
    unsigned char buf[MAC_BUFFER_FILE_SIZE + 1];
    UniqueFd fd(::open(path, O_RDONLY | O_CLOEXEC));
    if (!fd) return -1;
    ssize_t n;
    do {
        n = ::read(fd.get(), buf, sizeof buf);
    } while (n < 0 && errno == EINTR);
    if (n == static_cast<ssize_t>(sizeof(MacAddr))) {
        memcpy(&out->macs[0], buf, sizeof(MacAddr));
        out->mac_count = 1;
        return 0;
    }
    if (n == MAC_BUFFER_FILE_SIZE) {
        memcpy(out->macs, buf, sizeof out->macs);
        out->mac_count = get_le32(buf + sizeof out->macs);
        return 0;
    }
    if (n >= 0) cmd_rm(path);  // neither form: the file is of no use to anyone
    return -1;
}

void server_mac_bytes(const unsigned char mac[6], unsigned char (&out)[sizeof(MacAddr)]) {
    memset(out, 0, sizeof out);
    memcpy(out, mac, 6);
}

void client_macs_bytes(const MacBuffer &macs, unsigned char (&out)[MAC_BUFFER_FILE_SIZE]) {
    memcpy(out, macs.macs, sizeof macs.macs);
    put_le32(out + sizeof macs.macs, macs.mac_count);
}

}  // namespace cmdlib

extern "C" {

// ---- The records file -------------------------------------------------------------

CMDLIB_API void util_reset_mac_control_info(MacControlInfo *mac_control_info) {
    cmd_rm(kRecordsFile);
    if (mac_control_info) memset(mac_control_info, 0, sizeof *mac_control_info);
}

CMDLIB_API void util_read_mac_control_info(MacControlInfo *mac_control_info, int is_used_by_web_page) {
    (void)is_used_by_web_page;
    if (mac_control_info) cmdlib::load_mac_records(kRecordsFile, mac_control_info);
}

CMDLIB_API void util_save_mac_control_info(MacControlInfo *mac_control_info, int is_used_by_web_page) {
    if (!mac_control_info) return;
    if (cmdlib::save_mac_records(kRecordsFile, mac_control_info) && is_used_by_web_page)
        cmd_touch(kRecordsChangedFlag);
}

// ---- Records in memory --------------------------------------------------------------

CMDLIB_API int util_get_mac_info(MacControlInfo *mac_control_info, unsigned char *mac_addr,
                                 MacIPPair *ip_pair_info) {
    if (!mac_control_info || !mac_addr) return -1;
    int i = find_unit(mac_control_info, mac_addr);
    if (i < 0) return -1;
    if (ip_pair_info) *ip_pair_info = mac_control_info->ip_pair_info[i];
    return 0;
}

CMDLIB_API int util_set_mac_info_ex(MacControlInfo *mac_control_info, unsigned char *mac_addr,
                                    char *ip_addr, char *ssid, char *key, char *primary_ch,
                                    char *txpower) {
    (void)ip_addr, (void)ssid, (void)key, (void)primary_ch, (void)txpower;
    if (!mac_control_info || !mac_addr) return -1;
    if (find_unit(mac_control_info, mac_addr) >= 0) return 0;
    int slot = used_slots(mac_control_info);
    if (mac_control_info->mac_count >= MAC_RECORDS_MAX) return -1;
    MacAddr *m = &mac_control_info->ip_pair_info[slot].mac;
    memcpy(m->value, mac_addr, sizeof m->value);
    memset(m->align_bytes, 0, sizeof m->align_bytes);
    mac_control_info->mac_count = slot + 1;
    return 0;
}

CMDLIB_API int util_set_mac_info2(MacControlInfo *mac_control_info, MacIPPair *mac_ip_pair) {
    if (!mac_control_info || !mac_ip_pair) return -1;
    int i = find_unit(mac_control_info, mac_ip_pair->mac.value);
    if (i < 0) {
        if (mac_control_info->mac_count >= MAC_RECORDS_MAX) return -1;
        i = used_slots(mac_control_info);
        mac_control_info->mac_count = i + 1;
    }
    mac_control_info->ip_pair_info[i] = *mac_ip_pair;
    return 0;
}

CMDLIB_API void util_delete_mac_info(MacControlInfo *mac_control_info, unsigned char *mac_addr) {
    if (!mac_control_info || !mac_addr) return;
    int i = find_unit(mac_control_info, mac_addr);
    if (i < 0) return;
    int used = used_slots(mac_control_info);
    memmove(&mac_control_info->ip_pair_info[i], &mac_control_info->ip_pair_info[i + 1],
            sizeof(MacIPPair) * static_cast<size_t>(used - 1 - i));
    mac_control_info->mac_count = used - 1;
}

// ---- The MAC file -------------------------------------------------------------------

CMDLIB_API void util_save_server_mac(unsigned char *remote_mac_addr) {
    if (!remote_mac_addr) return;
    unsigned char bytes[sizeof(MacAddr)];
    cmdlib::server_mac_bytes(remote_mac_addr, bytes);
    // Only the six MAC bytes decide whether anything changed.
    cmdlib::save_mac_file(kMacFile, g_server_mac_written, bytes, sizeof bytes, 6);
}

CMDLIB_API void util_save_client_macs(MacBuffer *all_client_macs) {
    if (!all_client_macs) return;
    unsigned char bytes[MAC_BUFFER_FILE_SIZE];
    cmdlib::client_macs_bytes(*all_client_macs, bytes);
    cmdlib::save_mac_file(kMacFile, g_client_macs_written, bytes, sizeof bytes, sizeof bytes);
}

CMDLIB_API int util_load_saved_macs(MacBuffer *mac_struct) {
    return mac_struct ? cmdlib::load_mac_file(kMacFile, mac_struct) : -1;
}

// ---- Conversions ---------------------------------------------------------------------

CMDLIB_API void util_get_mac(const char *buf, unsigned char *mac) {
    if (!mac) return;
    if (!buf || !cmdlib::parse_mac_text(std::string_view(buf, strnlen(buf, 17)), mac)) memset(mac, 0, 6);
}

CMDLIB_API int util_load_mac_addr(const char *net_dev_name, char *mac_addr) {
    MacAddr m;
    if (!mac_addr || cmd_netdev_get_mac_addr(net_dev_name, &m) != 0) return -1;
    util_network_get_mac_string(m.value, mac_addr, 18);
    return 0;
}

}  // extern "C"
