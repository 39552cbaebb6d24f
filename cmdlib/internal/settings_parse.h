// Reader of the exported settings file ("export KEY=value" lines) into
// InfoStruct, apart from the file so that tests can feed it text.
#pragma once

#include <stddef.h>

#include <string_view>

#include "cmdlib/cmdlib.h"
#include "cmdlib/internal/info_fields.h"

namespace cmdlib {

// Lines are read 767 characters at a time; the rest of a longer line is
// read as a line of its own.
inline constexpr size_t kSettingsLineSize = 768;

// Number of settings read one by one, and through the descriptor table.
inline constexpr size_t kHandSettingCount = 162;
inline constexpr size_t kTableSettingCount = 59;

// The later settings, read through a descriptor table in this order (the
// configuration's all_need_parsed_fields, which is generated from this
// list as well): width and bit come from the field list.  They keep one
// character less than the one-by-one settings.
#define CMDLIB_TABLE_SETTINGS(X) \
    X(QX_FORBID_ROAMING) \
    X(QX_SAVE_LOCK_CELL_AFTER_TIMEOUT) \
    X(QX_NETWORK_MODE_NOT_SUPPORT) \
    X(QX_URGENT_HEARTBEAT_INTERVAL) \
    X(QX_PPP_AUTH_TYPE) \
    X(QX_4G_FDD_PREFERRED) \
    X(QX_RANDOM_SEED) \
    X(QX_ALWAYS_USE_INITIAL_LNS) \
    X(QX_SUPPORT_ORDINARY_CARD) \
    X(QX_OTHER_CARD_AS_ORDINARY_CARD) \
    X(QX_REDIAL_NOT_EXIST_LNS) \
    X(QX_CHECK_IF_LNS_ALIVE) \
    X(QX_RANDOM_LNS_BY_INITIATOR) \
    X(QX_CELL_CMP_IGNORE_LAC) \
    X(QX_NTP_SERVER2) \
    X(QX_NTP_SERVER3) \
    X(QX_NTP_SERVER4) \
    X(QX_ENABLE_LOCK_NETWORK) \
    X(QX_LOCK_NETWORK_PLMN) \
    X(QX_LOCK_NETWORK_PLMN2) \
    X(QX_LOCK_NETWORK_PLMN3) \
    X(QX_LOCK_NETWORK_PLMN4) \
    X(QX_LOCK_NETWORK_PLMN5) \
    X(QX_LOCK_NETWORK_PLMN6) \
    X(QX_LOCK_NETWORK_PLMN7) \
    X(QX_LOCK_NETWORK_PLMN8) \
    X(QX_LOCK_NETWORK_PLMN9) \
    X(QX_LOCK_NETWORK_PLMN10) \
    X(QX_ADMIN_RANDOM_PASSWORD) \
    X(QX_SPECIAL_SSID_PREFIX) \
    X(QX_CS_PS_PREFERRED_MODE) \
    X(QX_ENABLE_DMZ) \
    X(QX_DMZ_DEST_IP) \
    X(QX_SPECIAL_FUNC_CONFIG) \
    X(QX_ENABLE_SET_REBOOT) \
    X(QX_SET_REBOOT_HOURS) \
    X(QX_ENABLE_SET_REDIAL) \
    X(QX_SET_REDIAL_HOURS) \
    X(QX_3G_APN_NAME) \
    X(QX_3G_USERNAME) \
    X(QX_3G_PASSWORD) \
    X(QX_3G_AUTH_TYPE) \
    X(QX_USE_SPECIAL_3G_APN) \
    X(QX_WIFI_40M_ENABLE) \
    X(QX_CONFIG_APN_NAME) \
    X(QX_CONFIG_APN_NAME2) \
    X(QX_CONFIG_APN_NAME3) \
    X(QX_ROUTE_CONFIG_FOR_WAN2) \
    X(QX_GRE_VPN_ENABLED) \
    X(QX_GRE_VPN_SERVER) \
    X(QX_GRE_VPN_LOCAL_IP) \
    X(QX_GRE_VPN_REMOTE_IP) \
    X(QX_GRE_AS_DEFAULT_ROUTE) \
    X(QX_GRE_USE_LAN_INTERFACE) \
    X(QX_GRE_VPN_SUBNET_MASK) \
    X(QX_GRE_FOR_WAN_SUBNET) \
    X(QX_SIP_OVER_GRE) \
    X(QX_CTL_IDU_SIGNAL_LED_COLOR) \
    X(QX_ENABLE_LOCK_IMSI_PREFIX)

inline constexpr info_field::Id kTableSettingFields[] = {
#define CMDLIB_TABLE_SETTING_ID(name) info_field::name,
    CMDLIB_TABLE_SETTINGS(CMDLIB_TABLE_SETTING_ID)
#undef CMDLIB_TABLE_SETTING_ID
};
static_assert(sizeof kTableSettingFields / sizeof kTableSettingFields[0] == kTableSettingCount);

// The key of a line that contains "export": it starts after the line's
// first 6 characters and any blanks, and ends at a blank, ':', '=' or line
// feed.  "" for other lines.
std::string_view settings_line_key(std::string_view line);

// The value of a line: after the first '=', blanks and double quotes are
// skipped; the value ends at CR, LF or a double quote, and also at a blank
// when no quote was seen.  "" when the line has no '='.
std::string_view settings_line_value(std::string_view line);

// Applies one line to the record.  The key selects the first setting whose
// name it is a prefix of (one-by-one settings first, then the table); the
// setting's bit is set and its value copied.  Returns false when nothing
// matched.
bool apply_settings_line(std::string_view line, InfoStruct *info);

// Applies every line of text.
void parse_settings_text(std::string_view text, InfoStruct *info);

// Name of the n-th one-by-one setting (n < kHandSettingCount) and the
// record field it fills.
const char *hand_setting_key(size_t n);
const char *hand_setting_field(size_t n);

}  // namespace cmdlib
