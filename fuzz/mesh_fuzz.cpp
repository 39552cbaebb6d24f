// Mesh topology dumps: whatever the text, a load either fails with no
// record or gives counts that the iterators hand out exactly, each address
// 17 characters long.
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <string>

#include "cmdlib/internal/platform_json.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::string text(reinterpret_cast<const char *>(data), size);
    meshTopoInfo_t *t = nullptr;
    int rc = cmdlib::mesh_topology_from_text(text.c_str(), &t);
    if (rc != 1) {
        if (rc != -1 || t != nullptr) __builtin_trap();
        return 0;
    }
    int counts[2] = {};
    fibocom_t750_mesh_topo_get_controller_cnt(&counts[0], &t);
    fibocom_t750_mesh_topo_get_agent_cnt(&counts[1], &t);
    int (*next[2])(char *, int, meshTopoInfo_t **) = {fibocom_t750_mesh_topo_get_next_controller_almac,
                                                      fibocom_t750_mesh_topo_get_next_agent_almac};
    for (int k = 0; k < 2; ++k) {
        char mac[18] = {};
        int seen = 0;
        while (next[k](mac, sizeof mac, &t) == 0) {
            if (strlen(mac) != 17) __builtin_trap();
            ++seen;
        }
        if (seen != counts[k]) __builtin_trap();
    }
    fibocom_t750_mesh_topo_clean(&t);
    return 0;
}
