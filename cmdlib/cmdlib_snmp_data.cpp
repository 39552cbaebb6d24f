// The SNMP agent's named parameters: the dispatch table, the getters and the
// provider's record, filled once per process on first use.
#include "cmdlib/cmdlib_snmp_data.h"

#include <string.h>

#include <iterator>
#include <string_view>

#include "base/internal/text.h"
#include "cmdlib/cmdlib_fota.h"
#include "cmdlib/cmdlib_snmp.h"
#include "cmdlib/internal/record_field.h"
#include "cmdlib/network.h"

InfoStruct global_system_info_struct;
int util_snmp_data_have_initialized = 0;

#define SNMP_DATA_ROW(name) {#name, util_snmp_data_get_##name},
const GetSnmpData snmp_data_get_specified_parameter_funcs[SNMP_DATA_PARAMETER_COUNT] = {
    SNMP_DATA_PARAMETERS(SNMP_DATA_ROW)};
#undef SNMP_DATA_ROW

namespace {

using cmdlib::field_text;

#define SNMP_DATA_NAME(name) #name,
constexpr const char *kParameterNames[] = {SNMP_DATA_PARAMETERS(SNMP_DATA_NAME)};
#undef SNMP_DATA_NAME
static_assert(std::size(kParameterNames) == SNMP_DATA_PARAMETER_COUNT,
              "the SNMP agent knows 25 parameters");

// The record as the getters see it: filled on the first call.
const InfoStruct &record() {
    if (!util_snmp_data_have_initialized) util_snmp_data_prepare_to_get_parameters();
    return global_system_info_struct;
}

// The getters' common end: the buffer cleared whole, the value cut to fit;
// 0 for a non-empty value written, 1 for an empty one.
int deliver(char *value, int size, std::string_view text) {
    if (!value || size <= 0) return 1;
    memset(value, 0, static_cast<size_t>(size));
    return cmdlib::copy_bounded(value, static_cast<size_t>(size), text) > 0 ? 0 : 1;
}

int deliver_number(char *value, int size, const char *fmt, int number) {
    char text[16];
    cmdlib::format_bounded(text, sizeof text, fmt, number);
    return deliver(value, size, text);
}

template <size_t N>
int deliver_field(char *value, int size, const char (InfoStruct::*field)[N]) {
    return deliver(value, size, field_text(record().*field));
}

// Two antennas' values: the floor of their mean when both are set, else the
// first as it is.  The sum is taken in 64 bits and halved by an arithmetic
// shift, so -95 and -96 give -96.
template <size_t N>
int deliver_mean(char *value, int size, const char (InfoStruct::*first)[N],
                 const char (InfoStruct::*second)[N]) {
    std::string_view a = field_text(record().*first), b = field_text(record().*second);
    if (a.empty() || b.empty()) return deliver(value, size, a);
    int64_t sum = int64_t{cmdlib::atoi_sat(a)} + cmdlib::atoi_sat(b);
    return deliver_number(value, size, "%d", static_cast<int>(sum >> 1));
}

int not_readable(char *value, int size) {
    deliver(value, size, "");
    return -1;
}

}  // namespace

int util_snmp_data_get_specified_parameter(const char *name, char *value, int size) {
    if (!name) return -1;
    for (const GetSnmpData &row : snmp_data_get_specified_parameter_funcs)
        if (strcmp(row.snmp_parameter, name) == 0) return row.get_func(value, size);
    return -1;
}

void util_snmp_data_prepare_to_get_parameters(void) {
    memset(&global_system_info_struct, 0, sizeof global_system_info_struct);
    util_read_version_info("/version", &global_system_info_struct);
    util_load_module_info(&global_system_info_struct);
    util_read_cached_module_status_info(&global_system_info_struct);
    util_snmp_data_have_initialized = 1;
}

int util_snmp_data_is_initialized(void) { return util_snmp_data_have_initialized; }

InfoStruct *util_snmp_data_get_all_parameters(void) { return &global_system_info_struct; }

// ---- The getters, in table order ----------------------------------------------------

int util_snmp_data_get_IMEI(char *value, int size) {
    return deliver_field(value, size, &InfoStruct::imei);
}
int util_snmp_data_get_IMSI(char *value, int size) {
    return deliver_field(value, size, &InfoStruct::imsi);
}
int util_snmp_data_get_EUTRACELLID(char *value, int size) {
    return deliver_number(value, size, "%X", cmdlib::atoi_sat(field_text(record().CellID)));
}
int util_snmp_data_get_PCI(char *value, int size) {
    return deliver_field(value, size, &InfoStruct::QXPHYCELLID);
}
int util_snmp_data_get_RSRP(char *value, int size) {
    return deliver_mean(value, size, &InfoStruct::QXRSRP, &InfoStruct::QXRSRP2);
}
int util_snmp_data_get_RSRQ(char *value, int size) {
    return deliver_field(value, size, &InfoStruct::QXRSRQ);
}
int util_snmp_data_get_RSSI(char *value, int size) {
    return deliver_mean(value, size, &InfoStruct::QXRSSI, &InfoStruct::QXRSSI2);
}
int util_snmp_data_get_SINR(char *value, int size) {
    return deliver_mean(value, size, &InfoStruct::QXSINR, &InfoStruct::QXSINR2);
}
int util_snmp_data_get_TxPower(char *value, int size) {
    return deliver_field(value, size, &InfoStruct::QXTXPOWER);
}
int util_snmp_data_get_LTEVer(char *value, int size) {
    char version[sizeof(InfoStruct{}.module_version)] = {};
    util_fota_get_modem_version(version, sizeof version, const_cast<InfoStruct *>(&record()));
    return deliver(value, size, version);
}
int util_snmp_data_get_SWVer(char *value, int size) {
    record();
    char version[128] = {};
    util_snmp_get_software_version(version, sizeof version);
    return deliver(value, size, version);
}
int util_snmp_data_get_TypeofCPE(char *value, int size) {
    return deliver_field(value, size, &InfoStruct::model_type);
}
int util_snmp_data_get_BrandofCPE(char *value, int size) {
    record();
    char brand[32] = {};
    util_snmp_get_device_info_cpe_brand(brand, sizeof brand);
    return deliver(value, size, brand);
}
int util_snmp_data_get_ModelofCPE(char *value, int size) {
    return deliver_field(value, size, &InfoStruct::device);
}
int util_snmp_data_get_SoftwareReboot(char *value, int size) { return not_readable(value, size); }
int util_snmp_data_get_FactoryReset(char *value, int size) { return not_readable(value, size); }
int util_snmp_data_get_URLFOTA(char *value, int size) {
    record();
    char url[sizeof(InfoStruct{}.QX_FOTA_URL) + 1] = {};
    util_snmp_get_fota_url(url, sizeof url);
    return deliver(value, size, url);
}
int util_snmp_data_get_FOTASTATUS(char *value, int size) {
    record();
    char status[sizeof(InfoStruct{}.QX_FOTA_STATUS) + 1] = {};
    util_snmp_get_fota_status(status, sizeof status);
    return deliver(value, size, status);
}
int util_snmp_data_get_FOTATIMERTRIGGER(char *value, int size) {
    record();
    int trigger = 0;
    util_snmp_get_fota_timer_trigger(&trigger);
    return deliver_number(value, size, "%d", trigger);
}
int util_snmp_data_get_FOTAonBOOT(char *value, int size) {
    record();
    return deliver(value, size, util_snmp_get_fota_on_boot() ? "1" : "0");
}
int util_snmp_data_get_IPV4PDP1(char *value, int size) {
    record();
    char address[64] = {};
    const char *wan = util_get_wan_interface_name();
    if (wan) cmd_get_ipv4_address(wan, address);
    return deliver(value, size, address);
}
int util_snmp_data_get_IPV6PDP1(char *value, int size) {
    record();
    char address[64] = {};
    const char *wan = util_get_wan_interface_name();
    if (wan) cmd_get_global_ipv6_address(wan, address, sizeof address);
    return deliver(value, size, address);
}
int util_snmp_data_get_WLANSSID(char *value, int size) {
    record();
    return deliver(value, size, "");
}
// Deliberately empty and yet "read": the Wi-Fi password is never given out.
int util_snmp_data_get_WLANPassword(char *value, int size) {
    record();
    deliver(value, size, "");
    return 0;
}
int util_snmp_data_get_WLANBSSI(char *value, int size) {
    record();
    return deliver(value, size, "");
}
