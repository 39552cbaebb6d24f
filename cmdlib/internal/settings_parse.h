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
// configuration's all_need_parsed_fields): width and bit come from the
// field list.  They keep one character less than the one-by-one settings.
inline constexpr info_field::Id kTableSettingFields[] = {
    info_field::QX_FORBID_ROAMING,
    info_field::QX_SAVE_LOCK_CELL_AFTER_TIMEOUT,
    info_field::QX_NETWORK_MODE_NOT_SUPPORT,
    info_field::QX_URGENT_HEARTBEAT_INTERVAL,
    info_field::QX_PPP_AUTH_TYPE,
    info_field::QX_4G_FDD_PREFERRED,
    info_field::QX_RANDOM_SEED,
    info_field::QX_ALWAYS_USE_INITIAL_LNS,
    info_field::QX_SUPPORT_ORDINARY_CARD,
    info_field::QX_OTHER_CARD_AS_ORDINARY_CARD,
    info_field::QX_REDIAL_NOT_EXIST_LNS,
    info_field::QX_CHECK_IF_LNS_ALIVE,
    info_field::QX_RANDOM_LNS_BY_INITIATOR,
    info_field::QX_CELL_CMP_IGNORE_LAC,
    info_field::QX_NTP_SERVER2,
    info_field::QX_NTP_SERVER3,
    info_field::QX_NTP_SERVER4,
    info_field::QX_ENABLE_LOCK_NETWORK,
    info_field::QX_LOCK_NETWORK_PLMN,
    info_field::QX_LOCK_NETWORK_PLMN2,
    info_field::QX_LOCK_NETWORK_PLMN3,
    info_field::QX_LOCK_NETWORK_PLMN4,
    info_field::QX_LOCK_NETWORK_PLMN5,
    info_field::QX_LOCK_NETWORK_PLMN6,
    info_field::QX_LOCK_NETWORK_PLMN7,
    info_field::QX_LOCK_NETWORK_PLMN8,
    info_field::QX_LOCK_NETWORK_PLMN9,
    info_field::QX_LOCK_NETWORK_PLMN10,
    info_field::QX_ADMIN_RANDOM_PASSWORD,
    info_field::QX_SPECIAL_SSID_PREFIX,
    info_field::QX_CS_PS_PREFERRED_MODE,
    info_field::QX_ENABLE_DMZ,
    info_field::QX_DMZ_DEST_IP,
    info_field::QX_SPECIAL_FUNC_CONFIG,
    info_field::QX_ENABLE_SET_REBOOT,
    info_field::QX_SET_REBOOT_HOURS,
    info_field::QX_ENABLE_SET_REDIAL,
    info_field::QX_SET_REDIAL_HOURS,
    info_field::QX_3G_APN_NAME,
    info_field::QX_3G_USERNAME,
    info_field::QX_3G_PASSWORD,
    info_field::QX_3G_AUTH_TYPE,
    info_field::QX_USE_SPECIAL_3G_APN,
    info_field::QX_WIFI_40M_ENABLE,
    info_field::QX_CONFIG_APN_NAME,
    info_field::QX_CONFIG_APN_NAME2,
    info_field::QX_CONFIG_APN_NAME3,
    info_field::QX_ROUTE_CONFIG_FOR_WAN2,
    info_field::QX_GRE_VPN_ENABLED,
    info_field::QX_GRE_VPN_SERVER,
    info_field::QX_GRE_VPN_LOCAL_IP,
    info_field::QX_GRE_VPN_REMOTE_IP,
    info_field::QX_GRE_AS_DEFAULT_ROUTE,
    info_field::QX_GRE_USE_LAN_INTERFACE,
    info_field::QX_GRE_VPN_SUBNET_MASK,
    info_field::QX_GRE_FOR_WAN_SUBNET,
    info_field::QX_SIP_OVER_GRE,
    info_field::QX_CTL_IDU_SIGNAL_LED_COLOR,
    info_field::QX_ENABLE_LOCK_IMSI_PREFIX,
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
