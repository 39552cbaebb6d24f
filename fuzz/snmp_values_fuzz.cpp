// The SNMP getters over a record whose radio and identity fields hold
// arbitrary text (at their full width, unterminated, or with any bytes),
// read into buffers of every small size: never a byte past the buffer, the
// value always terminated, the result 0 exactly when the value is not empty.
#include <stdint.h>
#include <string.h>

#include <vector>

#include "cmdlib/cmdlib_snmp_data.h"

namespace {

template <size_t N>
void fill(char (&field)[N], const uint8_t *&data, size_t &size) {
    memset(field, 0, N);
    if (size == 0) return;
    size_t n = data[0] % (N + 1);  // up to the full width, no terminator
    ++data, --size;
    if (n > size) n = size;
    memcpy(field, data, n);
    data += n, size -= n;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    InfoStruct &r = global_system_info_struct;
    util_snmp_data_have_initialized = 1;  // the record comes from the input, not from files
    fill(r.imei, data, size);
    fill(r.imsi, data, size);
    fill(r.CellID, data, size);
    fill(r.QXPHYCELLID, data, size);
    fill(r.QXRSRP, data, size);
    fill(r.QXRSRP2, data, size);
    fill(r.QXRSRQ, data, size);
    fill(r.QXRSSI, data, size);
    fill(r.QXRSSI2, data, size);
    fill(r.QXSINR, data, size);
    fill(r.QXSINR2, data, size);
    fill(r.QXTXPOWER, data, size);
    fill(r.module_version, data, size);
    fill(r.model_type, data, size);
    fill(r.device, data, size);

    static const char *const kRecordOnly[] = {
        "IMEI", "IMSI",    "EUTRACELLID", "PCI",       "RSRP",       "RSRQ",       "RSSI",
        "SINR", "TxPower", "LTEVer",      "TypeofCPE", "ModelofCPE", "BrandofCPE", "WLANSSID"};
    for (const char *name : kRecordOnly) {
        for (int cap = 0; cap <= 40; ++cap) {
            std::vector<char> buf(static_cast<size_t>(cap) + 8, '\x5a');
            int rc = util_snmp_data_get_specified_parameter(name, buf.data(), cap);
            for (size_t i = static_cast<size_t>(cap); i < buf.size(); ++i)
                if (buf[i] != '\x5a') __builtin_trap();
            if (cap == 0) {
                if (rc != 1) __builtin_trap();
                continue;
            }
            size_t len = strnlen(buf.data(), static_cast<size_t>(cap));
            if (len == static_cast<size_t>(cap)) __builtin_trap();
            if ((rc == 0) != (len > 0) || (rc != 0 && rc != 1)) __builtin_trap();
        }
    }
    return 0;
}
