// The product's JSON texts: the mesh daemon's topology dump read into the
// topology record, and the URL-filter rule message built for the firewall.
// Both work on text in memory; the exported functions bind the files.
#pragma once

#include <cjson/cJSON.h>

#include "cmdlib/cmdlib_platform_fibocom_t750.h"

namespace cmdlib {

// Owner of a parsed or built cJSON tree.
class UniqueJson {
  public:
    explicit UniqueJson(cJSON *j) : j_(j) {}
    ~UniqueJson() { cJSON_Delete(j_); }
    UniqueJson(const UniqueJson &) = delete;
    UniqueJson &operator=(const UniqueJson &) = delete;
    [[nodiscard]] cJSON *get() const { return j_; }
    explicit operator bool() const { return j_ != nullptr; }

  private:
    cJSON *j_;
};

// Loads a topology dump (NUL-terminated JSON text) into a new record at
// *out, freeing an older one there first.  1, or -1 with *out null when the
// text is not a dump with a valid address of this node.
int mesh_topology_from_text(const char *text, meshTopoInfo_t **out);

// The URL-filter message for url[0..count) (up to the first null entry),
// printed unformatted; free it with cJSON_free.  Null when url is null,
// count is not positive or memory runs out.
char *url_filter_message(const char *const *url, int count);

}  // namespace cmdlib
