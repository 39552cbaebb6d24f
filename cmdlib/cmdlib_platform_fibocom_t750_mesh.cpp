// fibocom_t750 mesh topology: the mesh daemon's dump into a record of AL MAC
// addresses, with counts and iterators over it.
#include <stdlib.h>
#include <string.h>

#include "base/internal/raii.h"
#include "base/libbase.h"
#include "cmdlib/cmdlib_platform_fibocom_t750.h"
#include "cmdlib/internal/platform_json.h"

using namespace cmdlib;

namespace {

// The node's AL MAC address when it is a string of the right length.
const char *node_almac(const cJSON *node) {
    const cJSON *mac = cJSON_GetObjectItem(node, "AL MAC");
    if (!cJSON_IsString(mac) || !fibocom_t750_mesh_topo_is_almac_valid(mac->valuestring)) return nullptr;
    return mac->valuestring;
}

// Role of a node after the first: 1 controller, 2 agent, 0 anything else
// (also a node without a valid address).
long node_role(const cJSON *node) {
    const cJSON *role = cJSON_GetObjectItem(node, "Device role");
    if (!cJSON_IsString(role) || !node_almac(node)) return 0;
    long r = strtol(role->valuestring, nullptr, 10);
    return r == 1 || r == 2 ? r : 0;
}

void put_almac(meshAlmac_t *slot, const char *mac) { memcpy(slot->almac, mac, T750_MESH_ALMAC_LEN); }

}  // namespace

namespace cmdlib {

int mesh_topology_from_text(const char *text, meshTopoInfo_t **out) {
    if (!out) return -1;
    if (*out) fibocom_t750_mesh_topo_clean(out);
    if (!text || !text[0]) return -1;
    UniqueJson root(cJSON_Parse(text));
    const cJSON *nodes = root ? cJSON_GetObjectItem(root.get(), "topology information") : nullptr;
    if (!nodes || !cJSON_IsArray(nodes) || !nodes->child) return -1;
    const char *self = node_almac(nodes->child);
    if (!self) return -1;
    // The arrays hold what the dump lists: count first, then fill.
    int controllers = 0, agents = 0;
    for (const cJSON *n = nodes->child->next; n; n = n->next) {
        long role = node_role(n);
        controllers += role == 1;
        agents += role == 2;
    }
    auto *info = static_cast<meshTopoInfo_t *>(calloc(1, sizeof(meshTopoInfo_t)));
    if (!info) return -1;
    info->other_controller_almacs =
        static_cast<meshAlmac_t *>(calloc(static_cast<size_t>(controllers) + 1, sizeof(meshAlmac_t)));
    info->other_agent_almacs =
        static_cast<meshAlmac_t *>(calloc(static_cast<size_t>(agents) + 1, sizeof(meshAlmac_t)));
    if (!info->other_controller_almacs || !info->other_agent_almacs) {
        fibocom_t750_mesh_topo_clean(&info);
        return -1;
    }
    put_almac(&info->self_almac, self);
    for (const cJSON *n = nodes->child->next; n; n = n->next) {
        long role = node_role(n);
        if (role == 1) put_almac(&info->other_controller_almacs[info->other_controller_cnt++], node_almac(n));
        if (role == 2) put_almac(&info->other_agent_almacs[info->other_agent_cnt++], node_almac(n));
    }
    info->iterator_controller_almac = info->other_controller_almacs;
    info->iterator_agent_almac = info->other_agent_almacs;
    *out = info;
    return 1;
}

}  // namespace cmdlib

extern "C" int fibocom_t750_mesh_topo_get_info(meshTopoInfo_t **p_mesh_topo_info) {
    if (!p_mesh_topo_info) return -1;
    long size = util_get_file_size_by_file_name(T750_MESH_DUMP_FILE);
    if (size <= 0 || size >= T750_MESH_DUMP_LIMIT) {
        fibocom_t750_mesh_topo_clean(p_mesh_topo_info);
        return -1;
    }
    // The whole dump and its terminator; a file that shrank since its size
    // was taken is read as far as it goes.
    UniqueMalloc<char> text(static_cast<size_t>(size) + 1);
    if (text && util_load_file_content(text.get(), static_cast<int>(size) + 1, T750_MESH_DUMP_FILE) != 0)
        text.get()[0] = '\0';
    return mesh_topology_from_text(text.get(), p_mesh_topo_info);
}

extern "C" int fibocom_t750_mesh_topo_clean(meshTopoInfo_t **p_mesh_topo_info) {
    if (!p_mesh_topo_info || !*p_mesh_topo_info) return 0;
    free((*p_mesh_topo_info)->other_controller_almacs);
    free((*p_mesh_topo_info)->other_agent_almacs);
    free(*p_mesh_topo_info);
    *p_mesh_topo_info = nullptr;
    return 0;
}

namespace {

void copy_almac(char *out, int out_size, const meshAlmac_t *mac) {
    if (out_size > 0)
        memcpy(out, mac->almac, out_size < T750_MESH_ALMAC_LEN ? static_cast<size_t>(out_size) : T750_MESH_ALMAC_LEN);
}

// Hands out the slot at *iter and advances; at the end rewinds and gives -1,
// so each pass of calls lists every address once.
int next_almac(char *out, int out_size, meshAlmac_t *first, int count, meshAlmac_t **iter) {
    if (*iter - first >= count) {
        *iter = first;
        return -1;
    }
    if (out) copy_almac(out, out_size, *iter);
    ++*iter;
    return 0;
}

}  // namespace

extern "C" int fibocom_t750_mesh_topo_get_self_almac(char *out, const int out_size,
                                                     meshTopoInfo_t **p_mesh_topo_info) {
    if (!out || !p_mesh_topo_info || !*p_mesh_topo_info) return -1;
    copy_almac(out, out_size, &(*p_mesh_topo_info)->self_almac);
    return 0;
}

extern "C" int fibocom_t750_mesh_topo_get_next_controller_almac(char *out, const int out_size,
                                                                meshTopoInfo_t **p_mesh_topo_info) {
    if (!p_mesh_topo_info || !*p_mesh_topo_info) return -1;
    meshTopoInfo_t *t = *p_mesh_topo_info;
    return next_almac(out, out_size, t->other_controller_almacs, t->other_controller_cnt,
                      &t->iterator_controller_almac);
}

extern "C" int fibocom_t750_mesh_topo_get_next_agent_almac(char *out, const int out_size,
                                                           meshTopoInfo_t **p_mesh_topo_info) {
    if (!p_mesh_topo_info || !*p_mesh_topo_info) return -1;
    meshTopoInfo_t *t = *p_mesh_topo_info;
    return next_almac(out, out_size, t->other_agent_almacs, t->other_agent_cnt, &t->iterator_agent_almac);
}

extern "C" int fibocom_t750_mesh_topo_get_controller_cnt(int *out, meshTopoInfo_t **p_mesh_topo_info) {
    if (!out || !p_mesh_topo_info || !*p_mesh_topo_info) return -1;
    *out = (*p_mesh_topo_info)->other_controller_cnt;
    return 0;
}

extern "C" int fibocom_t750_mesh_topo_get_agent_cnt(int *out, meshTopoInfo_t **p_mesh_topo_info) {
    if (!out || !p_mesh_topo_info || !*p_mesh_topo_info) return -1;
    *out = (*p_mesh_topo_info)->other_agent_cnt;
    return 0;
}

extern "C" int fibocom_t750_mesh_topo_is_almac_valid(const char *almac) {
    return almac && strnlen(almac, T750_MESH_ALMAC_LEN + 1) == T750_MESH_ALMAC_LEN ? 1 : 0;
}

extern "C" int fibocom_t750_mesh_topo_cmp_mac(const char *mac1, const char *mac2, const int mac_size) {
    if (!mac1 || !mac2) return -1;
    int n = mac_size < T750_MESH_ALMAC_LEN ? mac_size : T750_MESH_ALMAC_LEN;
    for (int i = 0; i < n; ++i) {
        auto a = static_cast<unsigned char>(mac1[i]), b = static_cast<unsigned char>(mac2[i]);
        if (a != b) return a < b ? -1 : 1;
        // Both texts end here: nothing of either is left to compare, and
        // reading on would leave both strings.
        if (a == '\0') return 0;
    }
    return 0;
}
