/* cmdlib_snmp_data: the named parameters the SNMP agent reads.
 *
 * A getter clears its output buffer (all size bytes), makes sure the
 * provider's record is filled, writes the value as text cut to the buffer
 * and returns 0 when the value written is non-empty, 1 when it is empty
 * (exceptions noted at the list).  The record is filled once per process,
 * on the first getter call, from "/version", "/tmp/cmdlib/.moduleinfo" and
 * the module-status cache, and never refreshed; the FOTA and version
 * values are read afresh on every call. */
#ifndef CMDLIB_SNMP_DATA_H
#define CMDLIB_SNMP_DATA_H

#include "cmdlib.h"
#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

/* The parameters in table order; each row is the parameter name, whose
 * getter is util_snmp_data_get_<name>:
 *   IMEI IMSI PCI RSRQ TxPower TypeofCPE ModelofCPE  record fields imei,
 *       imsi, QXPHYCELLID, QXRSRQ, QXTXPOWER, model_type, device
 *   EUTRACELLID   the record's CellID as a number, in upper-case hex
 *   RSRP RSSI SINR   the floor of the mean of the two antennas' values
 *       (QXRSRP and QXRSRP2, ...) when both are set, else the first as it is
 *   LTEVer        the module's firmware version
 *   SWVer         util_snmp_get_software_version
 *   BrandofCPE    util_snmp_get_device_info_cpe_brand
 *   SoftwareReboot FactoryReset   not readable: -1
 *   URLFOTA FOTASTATUS   QX_FOTA_URL, QX_FOTA_STATUS
 *   FOTATIMERTRIGGER   QX_FOTA_TIMER_START as a number
 *   FOTAonBOOT    "1" when QX_FOTA_ON_BOOT is non-zero, else "0"
 *   IPV4PDP1 IPV6PDP1   the WAN interface's IPv4 and global IPv6 address
 *   WLANSSID WLANBSSI   always empty (1)
 *   WLANPassword  always empty, yet 0: the Wi-Fi password is never given */
#define SNMP_DATA_PARAMETERS(X)                                                              \
    X(IMEI) X(IMSI) X(EUTRACELLID) X(PCI) X(RSRP) X(RSRQ) X(RSSI) X(SINR) X(TxPower)         \
    X(LTEVer) X(SWVer) X(TypeofCPE) X(BrandofCPE) X(ModelofCPE) X(SoftwareReboot)            \
    X(FactoryReset) X(URLFOTA) X(FOTASTATUS) X(FOTATIMERTRIGGER) X(FOTAonBOOT) X(IPV4PDP1)   \
    X(IPV6PDP1) X(WLANSSID) X(WLANPassword) X(WLANBSSI)

#define SNMP_DATA_PARAMETER_COUNT 25

typedef int (*snmp_get_specified_data_func)(char *value, int size);

/* One row of the dispatch table. */
typedef struct GetSnmpData {
    const char *snmp_parameter;
    snmp_get_specified_data_func get_func;
} GetSnmpData;

CMDLIB_API extern const GetSnmpData snmp_data_get_specified_parameter_funcs[SNMP_DATA_PARAMETER_COUNT];

#define SNMP_DATA_DECLARE_GETTER(name) CMDLIB_API int util_snmp_data_get_##name(char *value, int size);
SNMP_DATA_PARAMETERS(SNMP_DATA_DECLARE_GETTER)
#undef SNMP_DATA_DECLARE_GETTER

/* The provider's record and whether it was filled (0, then 1). */
CMDLIB_API extern InfoStruct global_system_info_struct;
CMDLIB_API extern int util_snmp_data_have_initialized;

/* Looks name up (exact, case-sensitive) and returns its getter's result;
 * -1 for an unknown or null name, the buffer then untouched. */
CMDLIB_API int util_snmp_data_get_specified_parameter(const char *name, char *value, int size);
/* Fills the record: the version file, the module information, the cached
 * module status (their results are not examined); sets the flag. */
CMDLIB_API void util_snmp_data_prepare_to_get_parameters(void);
/* util_snmp_data_have_initialized */
CMDLIB_API int util_snmp_data_is_initialized(void);
/* &global_system_info_struct */
CMDLIB_API InfoStruct *util_snmp_data_get_all_parameters(void);

CMDLIB_END_DECLS

#endif
