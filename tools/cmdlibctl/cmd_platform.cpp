// cmdlibctl identity / upgrade / fota / mesh / urlblock: the product's
// identity, image checks and upgrade, the FOTA download, the mesh topology
// and URL blocking.  Each command gathers its answer into a struct, then
// prints it.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include "cmdlib/cmdlib_platform_fibocom_t750.h"
#include "cmdlibctl.h"

namespace {

struct Identity {
    char imei[64], sn[64], mac[64];
    int imei_rc, sn_rc, mac_rc;
};

void print_field(const char *label, int rc, const char *value) {
    printf("%-5s %s\n", label, rc == 0 ? value : "(unreadable)");
}

int run_identity(int argc, char **) {
    if (argc != 1) return ctl_usage("identity");
    Identity id{};
    id.imei_rc = fibocom_t750_get_device_imei(id.imei, sizeof id.imei);
    id.sn_rc = fibocom_t750_get_device_sn(id.sn, sizeof id.sn);
    id.mac_rc = fibocom_t750_get_device_mac(id.mac, sizeof id.mac);
    int rc = id.imei_rc == 0 && id.sn_rc == 0 && id.mac_rc == 0 ? 0 : 1;
    if (ctl_json()) {
        // null: unreadable
        cJSON *doc = cJSON_CreateObject();
        ctl_add_text(doc, "imei", id.imei_rc == 0 ? id.imei : "");
        ctl_add_text(doc, "sn", id.sn_rc == 0 ? id.sn : "");
        ctl_add_text(doc, "mac", id.mac_rc == 0 ? id.mac : "");
        return ctl_emit(doc, rc);
    }
    print_field("IMEI", id.imei_rc, id.imei);
    print_field("SN", id.sn_rc, id.sn);
    print_field("MAC", id.mac_rc, id.mac);
    return rc;
}

struct UpgradeCheck {
    int name_ok, size_ok, board_ok, upgrade_name;
    long size;
};

// upgrade check FILE [BOARD] | version FILE | run FILE
int run_upgrade(int argc, char **argv) {
    if (argc < 3) return ctl_usage("upgrade");
    std::string what = argv[1];
    const char *file = argv[2];
    if (what == "check" && argc <= 4) {
        const char *base = strrchr(file, '/') ? strrchr(file, '/') + 1 : file;
        UpgradeCheck c{};
        c.size = util_get_file_size_by_file_name(file);
        c.name_ok = fibocom_t750_check_upload_file_name(base) == 0;
        c.upgrade_name = fibocom_t750_system_upgrade_filename_check(base);
        c.size_ok = c.size >= 0 && fibocom_t750_check_upload_file_size(base, static_cast<int>(c.size)) == 0;
        c.board_ok = validate_firmware_image_packtoolpro(file, argc == 4 ? argv[3] : nullptr);
        const char *firmware_name = c.upgrade_name == 0 ? "ok" : c.upgrade_name == 2 ? "wrong ending" : "bad length";
        int rc = c.name_ok && c.size_ok && c.board_ok ? 0 : 1;
        if (ctl_json()) {
            cJSON *doc = cJSON_CreateObject();
            cJSON_AddStringToObject(doc, "file", file);
            cJSON_AddBoolToObject(doc, "upload_name_ok", c.name_ok != 0);
            cJSON_AddStringToObject(doc, "firmware_name", firmware_name);
            cJSON_AddNumberToObject(doc, "size", static_cast<double>(c.size));
            cJSON_AddBoolToObject(doc, "size_ok", c.size_ok != 0);
            cJSON_AddBoolToObject(doc, "board_ok", c.board_ok != 0);
            return ctl_emit(doc, rc);
        }
        printf("upload name    %s\n", c.name_ok ? "ok" : "refused");
        printf("firmware name  %s\n", firmware_name);
        printf("size           %ld bytes, %s\n", c.size, c.size_ok ? "ok" : "refused");
        printf("board          %s\n", c.board_ok ? "matches" : "does not match");
        return rc;
    }
    if (what == "version" && argc == 3) {
        char current[VERSION_TEXT_SIZE], image[VERSION_TEXT_SIZE];
        get_current_version(current);
        split_file_name(file, image);
        int verdict = service_not_allow_degraded_version(file);
        if (ctl_json()) {
            cJSON *doc = cJSON_CreateObject();
            ctl_add_text(doc, "running", current);
            ctl_add_text(doc, "image", image);
            cJSON_AddBoolToObject(doc, "allowed", verdict == 0);
            return ctl_emit(doc, verdict == 0 ? 0 : 1);
        }
        printf("running  %s\nimage    %s\n%s\n", current[0] ? current : "(unknown)", image[0] ? image : "(none)",
               verdict == 0 ? "allowed" : "refused: older than the running firmware");
        return verdict == 0 ? 0 : 1;
    }
    if (what == "run" && argc == 3) {
        char err[128] = "";
        int rc = fibocom_t750_tr069_system_firmware_upgrade(file, err, sizeof err);
        if (ctl_json()) {
            cJSON *doc = cJSON_CreateObject();
            cJSON_AddStringToObject(doc, "file", file);
            cJSON_AddNumberToObject(doc, "result", rc);
            ctl_add_text(doc, "error", err);
            return ctl_emit(doc, rc == 0 ? 0 : 1);
        }
        printf("upgrade result %d%s%s\n", rc, err[0] ? ": " : "", err);
        return rc == 0 ? 0 : 1;
    }
    return ctl_usage("upgrade");
}

struct FotaRun {
    char file[256], md5file[256];
    int download_rc;
    const char *check;
};

// fota URL SIZE MD5: download, then check size and digest.
int run_fota(int argc, char **argv) {
    if (argc != 4) return ctl_usage("fota");
    FotaRun r{};
    util_fota_get_local_upgrade_file_path(r.file, sizeof r.file, r.md5file, sizeof r.md5file, argv[1]);
    r.download_rc = util_fota_download_upgade_file(r.file, argv[1], 0, 0);
    r.check = r.download_rc == 0 ? util_check_if_upgrade_file_is_valid(r.file, r.md5file, argv[2], argv[3], 0) : nullptr;
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON_AddStringToObject(doc, "url", argv[1]);
        cJSON_AddStringToObject(doc, "image", r.file);
        cJSON_AddBoolToObject(doc, "downloaded", r.download_rc == 0);
        // valid/problem stay null when nothing was downloaded to check
        if (r.download_rc == 0) {
            cJSON_AddBoolToObject(doc, "valid", !r.check);
            ctl_add_text(doc, "problem", r.check ? r.check : "");
        } else {
            cJSON_AddNullToObject(doc, "valid");
            cJSON_AddNullToObject(doc, "problem");
        }
        return ctl_emit(doc, r.download_rc == 0 && !r.check ? 0 : 1);
    }
    printf("image     %s\n", r.file);
    printf("download  %s\n", r.download_rc == 0 ? "ok" : "failed");
    if (r.download_rc == 0) printf("check     %s\n", r.check ? r.check : "ok");
    return r.download_rc == 0 && !r.check ? 0 : 1;
}

struct MeshView {
    char self[18];
    std::vector<std::string> controllers, agents;
};

int run_mesh(int argc, char **) {
    if (argc != 1) return ctl_usage("mesh");
    meshTopoInfo_t *t = nullptr;
    if (fibocom_t750_mesh_topo_get_info(&t) != 1) {
        if (ctl_json()) {
            cJSON *doc = cJSON_CreateObject();
            cJSON_AddBoolToObject(doc, "available", false);
            cJSON_AddStringToObject(doc, "dump", T750_MESH_DUMP_FILE);
            cJSON_AddNullToObject(doc, "self");
            cJSON_AddArrayToObject(doc, "controllers");
            cJSON_AddArrayToObject(doc, "agents");
            return ctl_emit(doc, 1);
        }
        printf("no usable mesh dump at %s\n", T750_MESH_DUMP_FILE);
        return 1;
    }
    MeshView v{};
    fibocom_t750_mesh_topo_get_self_almac(v.self, sizeof v.self, &t);
    char mac[18] = {};
    while (fibocom_t750_mesh_topo_get_next_controller_almac(mac, sizeof mac, &t) == 0) v.controllers.emplace_back(mac);
    while (fibocom_t750_mesh_topo_get_next_agent_almac(mac, sizeof mac, &t) == 0) v.agents.emplace_back(mac);
    fibocom_t750_mesh_topo_clean(&t);
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON_AddBoolToObject(doc, "available", true);
        cJSON_AddStringToObject(doc, "dump", T750_MESH_DUMP_FILE);
        ctl_add_text(doc, "self", v.self);
        cJSON *controllers = cJSON_AddArrayToObject(doc, "controllers");
        for (const auto &c : v.controllers) cJSON_AddItemToArray(controllers, cJSON_CreateString(c.c_str()));
        cJSON *agents = cJSON_AddArrayToObject(doc, "agents");
        for (const auto &a : v.agents) cJSON_AddItemToArray(agents, cJSON_CreateString(a.c_str()));
        return ctl_emit(doc, 0);
    }
    printf("self         %s\n", v.self);
    for (const auto &c : v.controllers) printf("controller   %s\n", c.c_str());
    for (const auto &a : v.agents) printf("agent        %s\n", a.c_str());
    return 0;
}

int run_urlblock(int argc, char **argv) {
    if (argc < 2) return ctl_usage("urlblock");
    int rc = fibocom_t750_url_intercept(const_cast<const char **>(argv + 1), argc - 1);
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        ctl_add_strings(doc, "urls", argv + 1, argc - 1);
        cJSON_AddBoolToObject(doc, "blocked", rc == 0);
        cJSON_AddStringToObject(doc, "file", T750_URL_FILTER_FILE);
        return ctl_emit(doc, rc == 0 ? 0 : 1);
    }
    printf("%d URL(s) %s %s\n", argc - 1, rc == 0 ? "blocked in" : "NOT written to", T750_URL_FILTER_FILE);
    return rc == 0 ? 0 : 1;
}

}  // namespace

CMDLIBCTL_COMMAND("identity", "                  IMEI, serial number and MAC address", run_identity);
CMDLIBCTL_COMMAND("upgrade", "check FILE [BOARD]|version FILE|run FILE   image checks, downgrade guard, upgrade",
                  run_upgrade);
CMDLIBCTL_COMMAND("fota", "URL SIZE MD5      download a FOTA image and check it", run_fota);
CMDLIBCTL_COMMAND("mesh", "                  mesh topology from the daemon's dump", run_mesh);
CMDLIBCTL_COMMAND("urlblock", "URL...            block URLs (URL-filter rule file)", run_urlblock);
