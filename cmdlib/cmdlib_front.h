/* cmdlib_front: the generic names of the product's operations.
 *
 * Daemons call these names only; each one passes the call to the operation
 * of the product this library is built for, or gives that product's fixed
 * answer.  The choice is made when the library is built: a forwarder calls
 * the product's function directly, there is no table of function pointers.
 *
 * CMDLIB_FRONT_OPERATIONS is the one list of the front, row by row:
 *   OWN(ret, name, params)
 *       behaviour of its own (reboot records its reason, reset keeps a
 *       marker file): written by hand in cmdlib_features_front.cpp;
 *   FORWARD(ret, name, target, params, args)
 *       calls the product's operation <product>_<target> with the same
 *       arguments and passes its result back;
 *   FORWARD_UNPREFIXED(ret, name, target, params, args)
 *       the same for a product operation that carries no product prefix;
 *   ANSWER(value, name, params)
 *       returns int value, arguments ignored, nothing done: 0 nothing to do
 *       (or done), 1 and 2 as the callers expect them, -1 not available on
 *       this product;
 *   NOTHING(name, params)
 *       returns nothing and does nothing.
 * The declarations below, the definitions and cmdlibctl's "front NAME"
 * dispatcher are all expanded from it, so each name is written once.
 *
 * Argument lists of the fixed answers: the product has no operation behind
 * them, so they take no arguments, except the three identity getters
 * (util_get_device_cuei, util_get_device_etc_pro_sn, util_get_wifi_mac),
 * which take an output buffer and its size like util_get_device_sn. */
#ifndef CMDLIB_FRONT_H
#define CMDLIB_FRONT_H

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

struct _reset_pre_param; /* reset_pre_param, cmdlib_features.h */

/* Marker of a factory reset in progress: created before the product's reset
 * runs, removed again only when that reset reports -1, so after a reset it
 * stays until the device restarts. */
#define SYSTEM_RESET_START_FLAG_FILE "/tmp/.flag_system_reset_start"

/* One row a line, kept unwrapped so rows can be read and diffed. */
/* clang-format off */
#define CMDLIB_FRONT_OPERATIONS(OWN, FORWARD, FORWARD_UNPREFIXED, ANSWER, NOTHING) \
    OWN(int, util_does_system_opt_reboot, (const char *reason)) \
    OWN(int, util_process_system_reset, (void *arg, int flag, char *result_str, int *result_code)) \
    OWN(int, util_process_system_reset_integrate, (struct _reset_pre_param *param, char *result_str, int *result_code)) \
    FORWARD(int, util_does_system_opt_tr069_server_reboot, opt_tr069_server_reboot, (const char *reason), (reason)) \
    FORWARD(int, util_does_system_opt_ntp_sync, opt_ntp_sync, (char *s1, char *s2, char *s3, char *s4), (s1, s2, s3, s4)) \
    FORWARD(int, util_get_upload_path, get_upload_path, (char *bufpath, int bufsize, const char *uploadfile), (bufpath, bufsize, uploadfile)) \
    FORWARD(int, util_check_upload_file_size, check_upload_file_size, (const char *uploadfile, int filesize), (uploadfile, filesize)) \
    FORWARD(int, util_check_upload_file_name, check_upload_file_name, (const char *uploadfile), (uploadfile)) \
    FORWARD(int, util_validate_upload_file, validate_upload_file, (const char *uploadfile, const char *boardType), (uploadfile, boardType)) \
    FORWARD(int, util_is_first_run_after_upgrade, is_first_run_after_upgrade, (void), ()) \
    FORWARD(int, util_set_modemlog_sw, set_modemlog_sw, (void), ()) \
    FORWARD_UNPREFIXED(int, util_upgrade_package_is_contains_update_config, upgrade_package_is_contains_update_config, (void), ()) \
    FORWARD(int, util_restart_rpcapd, opt_restart_rpcapd, (void), ()) \
    FORWARD(int, util_restart_siproxy, restart_siproxy, (void), ()) \
    FORWARD(int, util_clean_file_in_uploadpath, clean_file_in_uploadpath, (void), ()) \
    FORWARD(int, util_restart_net_monitor, restart_net_monitor, (void), ()) \
    FORWARD(int, util_restart_telnet, opt_restart_telnet, (void), ()) \
    FORWARD(int, util_restart_adb, opt_restart_adb, (void), ()) \
    FORWARD(int, util_restart_ssh, opt_restart_ssh, (void), ()) \
    FORWARD(int, util_set_ddos, opt_set_ddos, (void), ()) \
    FORWARD(int, util_set_firewall_level, opt_set_firewall_level, (void), ()) \
    FORWARD(int, util_wifi_macfilter_apply, opt_wifi_macfilter_apply, (int wifi_type_num), (wifi_type_num)) \
    FORWARD(int, util_restart_yaddns, opt_restart_yaddns, (void), ()) \
    FORWARD(int, util_restart_sms, opt_restart_sms, (void), ()) \
    FORWARD(int, util_restart_fota_update, opt_restart_fota_update, (void), ()) \
    FORWARD(int, util_get_device_imei, get_device_imei, (char *value, int len), (value, len)) \
    FORWARD(int, util_get_device_sn, get_device_sn, (char *value, int len), (value, len)) \
    FORWARD(int, util_get_device_mac, get_device_mac, (char *value, int len), (value, len)) \
    FORWARD(int, util_get_device_ioti, get_device_ioti, (char *value, int len), (value, len)) \
    FORWARD(int, util_process_config_update, process_config_update, (void *arg, int flag, char *result_str, int *result_code), (arg, flag, result_str, result_code)) \
    FORWARD(int, util_verify_upload_file, verify_upload_file, (const char *fileName), (fileName)) \
    FORWARD(int, util_system_upgrade_stage1, system_upgrade_stage1, (const char *fileName), (fileName)) \
    FORWARD(int, util_system_upgrade_stage2, system_upgrade_stage2, (const char *fileName), (fileName)) \
    FORWARD(int, util_local_system_upgrade, local_system_upgrade, (const char *fileName), (fileName)) \
    FORWARD(int, util_set_nfc_status, set_nfc_status, (int nfc_sw), (nfc_sw)) \
    FORWARD(int, util_set_wifidog_status, set_wifidog_status, (int enable), (enable)) \
    FORWARD(int, system_space_clearing, tr069_system_space_clearing, (void), ()) \
    FORWARD(char *, firmware_download_to, tr069_firmware_download_to, (char *buff, int buffsize, const char *fwname), (buff, buffsize, fwname)) \
    FORWARD(char *, config_download_to, tr069_config_download_to, (char *buff, int buffsize, const char *cfname), (buff, buffsize, cfname)) \
    FORWARD(int, system_upgrade_mode, tr069_system_upgrade_mode, (void), ()) \
    FORWARD(int, system_firmware_upgrade, tr069_system_firmware_upgrade, (const char *fw, char *errstr, int size), (fw, errstr, size)) \
    FORWARD(int, upgrade_error_str, tr069_upgrade_error_str, (char *errstr, int size), (errstr, size)) \
    FORWARD(int, util_get_battery_graph_data, get_battery_graph_data, (char *time, int time_size, char *capacity, int capacity_size, char *temperature, int temperature_size), (time, time_size, capacity, capacity_size, temperature, temperature_size)) \
    FORWARD(int, util_restart_voipclient, opt_restart_voipclient, (void), ()) \
    FORWARD(int, util_set_l2tp_static_ip, opt_set_l2tp_static_ip, (void), ()) \
    FORWARD(int, util_esim_east_download_profile, esim_east_download_profile, (void), ()) \
    FORWARD(int, util_esim_east_get_download_ret, esim_east_get_download_ret, (void), ()) \
    FORWARD(int, util_esim_east_get_use_esim_flag, esim_east_get_user_esim_flag, (void), ()) \
    FORWARD(int, util_port_isolate_switch, port_isolate_switch, (void), ()) \
    FORWARD(int, system_upgrade_filename_check, system_upgrade_filename_check, (const char *filename), (filename)) \
    FORWARD(int, util_does_system_opt_tr369_server_reboot, tr369_reboot, (void), ()) \
    FORWARD(int, util_add_wifi_info_into_json, add_wifi_info_into_json, (void *wifi_aps), (wifi_aps)) \
    ANSWER(0, util_check_upload_file_modem_type, (void)) \
    ANSWER(0, util_enable_gre, (void)) \
    ANSWER(0, util_disable_gre, (void)) \
    ANSWER(0, util_enable_l2tp, (void)) \
    ANSWER(0, util_disable_l2tp, (void)) \
    ANSWER(0, util_enable_pptp, (void)) \
    ANSWER(0, util_disable_pptp, (void)) \
    ANSWER(0, util_enable_l2tpv3, (void)) \
    ANSWER(0, util_disable_l2tpv3, (void)) \
    ANSWER(0, util_enable_ipsec, (void)) \
    ANSWER(0, util_disable_ipsec, (void)) \
    ANSWER(0, util_enable_vxlan, (void)) \
    ANSWER(0, util_disable_vxlan, (void)) \
    ANSWER(0, util_enable_tklan, (void)) \
    ANSWER(0, util_disable_tklan, (void)) \
    ANSWER(0, util_enable_mesh, (void)) \
    ANSWER(0, util_disable_mesh, (void)) \
    ANSWER(0, util_check_uploadpath_memery, (void)) \
    ANSWER(0, util_is_need_message_to_configtools, (void)) \
    ANSWER(0, util_is_need_message_to_wan_mgr, (void)) \
    ANSWER(0, util_is_need_message_to_net_monitor, (void)) \
    ANSWER(0, util_is_need_message_to_atcmd_daemon, (void)) \
    ANSWER(0, util_is_need_message_to_gui_mifi, (void)) \
    ANSWER(0, util_is_need_message_to_dialer, (void)) \
    ANSWER(0, util_creat_lcd_update_file, (void)) \
    ANSWER(0, util_unormal_reboot_or_not, (void)) \
    ANSWER(0, util_wps_trigger, (void)) \
    ANSWER(0, util_timer_restart, (void)) \
    ANSWER(0, util_onenetStudio_restart, (void)) \
    ANSWER(0, util_unicomDMP_restart, (void)) \
    ANSWER(0, util_mobileDMP_restart, (void)) \
    ANSWER(0, util_mqttc_restart, (void)) \
    ANSWER(0, util_scan_wlan_info, (void)) \
    ANSWER(0, util_scan_wlan_channel_info, (void)) \
    ANSWER(0, util_set_platform_syslog, (void)) \
    ANSWER(0, util_get_8198_log, (void)) \
    ANSWER(0, util_get_logcat_log, (void)) \
    ANSWER(0, util_qos_rules_apply, (void)) \
    ANSWER(0, util_firewall_need_to_set_gateway, (void)) \
    ANSWER(0, util_firewall_static_route_bind_apn, (void)) \
    ANSWER(0, util_restart_diag_socket_log, (void)) \
    ANSWER(0, util_idu_wps_button_control_wlan, (void)) \
    ANSWER(0, util_set_ipa_pwd, (void)) \
    ANSWER(0, util_hw_red_line_is_on, (void)) \
    ANSWER(0, util_upgrade_control_led, (void)) \
    ANSWER(0, util_synchronize_idu_pwd, (void)) \
    ANSWER(0, util_lock_cell_restart_take_effect, (void)) \
    ANSWER(0, util_get_eth_negotiation_rate, (void)) \
    ANSWER(0, util_reset_idu_lan_interface, (void)) \
    ANSWER(0, util_system_upgrade_is_allows, (void)) \
    ANSWER(0, util_check_usb_storage_device_mount_status, (void)) \
    ANSWER(0, system_download_strategy, (void)) \
    ANSWER(0, system_upgrade_strategy, (void)) \
    ANSWER(0, util_get_cpu_usage_graph_data, (void)) \
    ANSWER(0, util_get_temperature_graph_data, (void)) \
    ANSWER(0, util_check_battery_remain, (void)) \
    ANSWER(0, util_check_last_update_is_complete, (void)) \
    ANSWER(0, util_diagnostic_network_tools, (void)) \
    ANSWER(0, util_diagnostic_show_process_status, (void)) \
    ANSWER(0, util_diagnostic_show_memory_status, (void)) \
    ANSWER(0, util_diagnostic_show_top_process, (void)) \
    ANSWER(0, util_diagnostic_show_lan_clients, (void)) \
    ANSWER(0, util_diagnostic_show_lan_packets_stats, (void)) \
    ANSWER(0, util_diagnostic_show_iperf3_udp_packet_stats, (void)) \
    ANSWER(0, util_config_radvd_option, (void)) \
    ANSWER(0, util_is_write_web_event_log_classify_save, (void)) \
    ANSWER(0, util_is_factory_first_run, (void)) \
    ANSWER(0, util_restart_single_detection, (void)) \
    ANSWER(0, util_is_nouse_qxupdate_from_upgrade_package, (void)) \
    ANSWER(0, util_restart_unicom_industry_probe, (void)) \
    ANSWER(0, util_module_usb_switch, (void)) \
    ANSWER(0, util_set_usb_rate, (void)) \
    ANSWER(0, util_customer_encrypt_cfg, (void)) \
    ANSWER(0, util_customer_decrypt_cfg, (void)) \
    ANSWER(0, util_check_url_filename_len, (void)) \
    ANSWER(0, util_check_aera_id_series, (void)) \
    NOTHING(system_reset_wan_rxtxrate, (void)) \
    NOTHING(system_upgrade_fail_notice, (void)) \
    ANSWER(1, util_record_data_switch_operation, (void)) \
    ANSWER(1, util_is_need_message_to_lan_mgr, (void)) \
    ANSWER(1, util_web_time_need_to_set_timezone, (void)) \
    ANSWER(2, util_get_read_dialer_result_count, (void)) \
    ANSWER(-1, util_does_system_opt_tr069_bf_server_reboot, (void)) \
    ANSWER(-1, util_does_system_opt_ippack_server_reboot, (void)) \
    ANSWER(-1, util_get_upgrade_reboot_flag, (void)) \
    ANSWER(-1, util_check_upgrade_is_success, (void)) \
    ANSWER(-1, util_update_customization_logo, (void)) \
    ANSWER(-1, util_restart_netport_capture, (void)) \
    ANSWER(-1, util_restart_wifi, (void)) \
    ANSWER(-1, util_restart_dnsmasq, (void)) \
    ANSWER(-1, util_get_wifi_chip, (void)) \
    ANSWER(-1, util_clean_sys_vm_drop_caches, (void)) \
    ANSWER(-1, util_remount_ro_zone, (void)) \
    ANSWER(-1, util_get_wifi_macfilter_filelist, (void)) \
    ANSWER(-1, util_restart_network, (void)) \
    ANSWER(-1, util_reboot_idu, (void)) \
    ANSWER(-1, util_create_forbid_lan_internet_access_flag, (void)) \
    ANSWER(-1, util_get_device_cuei, (char *, int)) \
    ANSWER(-1, util_get_device_etc_pro_sn, (char *, int)) \
    ANSWER(-1, util_get_wifi_mac, (char *, int)) \
    ANSWER(-1, util_get_specify_wifi_mac, (void)) \
    ANSWER(-1, util_set_timezone, (void)) \
    ANSWER(-1, util_restart_remote_ctrl, (void)) \
    ANSWER(-1, util_create_tmp_wlan_para_json, (void)) \
    ANSWER(-1, util_set_upnp, (void)) \
    ANSWER(-1, util_open_model_web, (void)) \
    ANSWER(-1, util_ctiot_mqtt_restart, (void)) \
    ANSWER(-1, util_config_eogre_list_info, (void)) \
    ANSWER(-1, util_set_eogre_status, (void)) \
    ANSWER(-1, util_restart_hearbeat, (void)) \
    ANSWER(-1, util_config_ipsec_rule_data, (void)) \
    ANSWER(-1, util_restart_rjiledc, (void)) \
    ANSWER(-1, util_config_openvpn_rule_data, (void)) \
    ANSWER(-1, util_restart_httpd, (void)) \
    ANSWER(-1, util_bluetooth_switch, (void)) \
    ANSWER(-1, util_poweroff, (void)) \
    ANSWER(-1, util_get_idu_wps_path, (void)) \
    ANSWER(-1, util_export_customer_config, (void)) \
    ANSWER(-1, util_load_customer_config, (void)) \
    ANSWER(-1, util_configtools_no_alive_reset_eth, (void)) \
    ANSWER(-1, util_restart_after_upgrade_fail, (void)) \
    ANSWER(-1, util_restart_parent_control, (void)) \
    ANSWER(-1, util_syslog_export_to_remote_cfg, (void)) \
    ANSWER(-1, util_syslog_get_cfg, (void)) \
    ANSWER(-1, util_restart_radvd, (void)) \
    ANSWER(-1, util_restart_clat, (void)) \
    ANSWER(-1, util_restart_zerotier, (void)) \
    ANSWER(-1, util_restart_ksmbd, (void)) \
    ANSWER(-1, util_set_hw_nat, (void)) \
    ANSWER(-1, util_set_qy_acc_sh, (void)) \
    ANSWER(-1, util_does_full_dump_logging_proc, (void)) \
    ANSWER(-1, util_create_full_dump_log_flag_proc, (void)) \
    ANSWER(-1, util_restart_fulldump, (void)) \
    ANSWER(-1, util_restart_dot1x, (void)) \
    ANSWER(-1, util_restart_adguardhome, (void)) \
    ANSWER(-1, util_restart_openvpn, (void)) \
    ANSWER(-1, util_change_user_passwd, (void)) \
    ANSWER(-1, util_restart_webdav, (void)) \
    ANSWER(-1, util_set_opennat, (void)) \
    ANSWER(-1, util_get_exterior_sessionid, (void))
/* clang-format on */

#define CMDLIB_FRONT_DECLARE_OWN(ret, name, params) CMDLIB_API ret name params;
#define CMDLIB_FRONT_DECLARE_FORWARD(ret, name, target, params, args) CMDLIB_API ret name params;
#define CMDLIB_FRONT_DECLARE_ANSWER(value, name, params) CMDLIB_API int name params;
#define CMDLIB_FRONT_DECLARE_NOTHING(name, params) CMDLIB_API void name params;
CMDLIB_FRONT_OPERATIONS(CMDLIB_FRONT_DECLARE_OWN, CMDLIB_FRONT_DECLARE_FORWARD, CMDLIB_FRONT_DECLARE_FORWARD,
                        CMDLIB_FRONT_DECLARE_ANSWER, CMDLIB_FRONT_DECLARE_NOTHING)
#undef CMDLIB_FRONT_DECLARE_OWN
#undef CMDLIB_FRONT_DECLARE_FORWARD
#undef CMDLIB_FRONT_DECLARE_ANSWER
#undef CMDLIB_FRONT_DECLARE_NOTHING

CMDLIB_END_DECLS

#endif
