// cmdlibctl route / nat check|fix FILE: the route and rule checkers over
// the device's own listings.  FILE describes the checkers, one a line
// ('#' starts a comment); each KEY=VALUE sets a field and selects it for
// the match, and the bare words are flags:
//   route: dest= gw= mask= dev=
//   nat:   chain= in= out= proto= dest= dport= src= sport= nat= policy=
//          jump= icmp=   flags: ipv6 nat-table delete append
// check lists the kernel's state ("route -n", "iptables [-t nat] -S",
// "ip6tables [-t nat] -S"), counts and prints each checker's matches; fix
// also runs the library's fix and checks again.
#include <stddef.h>
#include <stdio.h>
#include <string.h>

#include <string>

#include "base/libbase.h"
#include "cmdlib/cmdlib_nat.h"
#include "cmdlib/cmdlib_route.h"
#include "cmdlibctl.h"

namespace {

constexpr int kMaxCheckers = 64;

struct Key {
    const char *name;
    unsigned bit;  // the check_content bit it selects
    size_t offset, width;
};

#define CTL_FIELD(type, member) offsetof(type, member), sizeof(type::member)

constexpr Key kRouteKeys[] = {
    {"dest", ROUTE_CHECK_DEST_IP, CTL_FIELD(RouteEntryChecker, dest_IP)},
    {"gw", ROUTE_CHECK_GATEWAY, CTL_FIELD(RouteEntryChecker, gateway)},
    {"mask", ROUTE_CHECK_NETMASK, CTL_FIELD(RouteEntryChecker, netmask)},
    {"dev", ROUTE_CHECK_INTERFACE, CTL_FIELD(RouteEntryChecker, interface)},
};

constexpr Key kNatKeys[] = {
    {"chain", NAT_CHECK_CHAIN, CTL_FIELD(NATEntryChecker, chain)},
    {"in", NAT_CHECK_IN_INTERFACE, CTL_FIELD(NATEntryChecker, in_interface)},
    {"out", NAT_CHECK_OUT_INTERFACE, CTL_FIELD(NATEntryChecker, out_interface)},
    {"proto", NAT_CHECK_PROTOCOL, CTL_FIELD(NATEntryChecker, protocol)},
    {"dest", NAT_CHECK_DESTINATION, CTL_FIELD(NATEntryChecker, destination)},
    {"dport", NAT_CHECK_DESTINATION_PORT, CTL_FIELD(NATEntryChecker, destination_port)},
    {"src", NAT_CHECK_SOURCE, CTL_FIELD(NATEntryChecker, source)},
    {"sport", NAT_CHECK_SOURCE_PORT, CTL_FIELD(NATEntryChecker, source_port)},
    {"nat", NAT_CHECK_NAT, CTL_FIELD(NATEntryChecker, nat)},
    {"policy", NAT_CHECK_DEFAULT_POLICY, CTL_FIELD(NATEntryChecker, default_policy)},
    {"jump", NAT_CHECK_JUMP_ACTION, CTL_FIELD(NATEntryChecker, jump_action)},
    {"icmp", NAT_CHECK_ICMP_TYPE, CTL_FIELD(NATEntryChecker, icmp_type)},
};

struct Flag {
    const char *name;
    unsigned match_flag;  // NAT_MATCH_* bit, or 0 for "append"
};
constexpr Flag kNatFlags[] = {{"ipv6", NAT_MATCH_IPV6},
                              {"nat-table", NAT_MATCH_NAT_TABLE},
                              {"delete", NAT_MATCH_DELETE},
                              {"append", 0}};

// Sets the fields of one checker record from the words of a line.
// false (with a message) on an unknown key or an overlong value.
template <size_t N, class Record>
bool apply_words(char *line, const Key (&keys)[N], Record *rec, unsigned *content, int lineno,
                 bool (*flag)(const char *, Record *)) {
    char *words[64];
    int n = util_get_all_args(line, ' ', '\t', words, 64);
    for (int i = 0; i < n; ++i) {
        char *eq = strchr(words[i], '=');
        if (!eq) {
            if (flag && flag(words[i], rec)) continue;
            fprintf(stderr, "cmdlibctl: line %d: unknown flag '%s'\n", lineno, words[i]);
            return false;
        }
        *eq = '\0';
        const Key *k = nullptr;
        for (const Key &key : keys)
            if (strcmp(key.name, words[i]) == 0) k = &key;
        if (!k || strlen(eq + 1) >= k->width) {
            fprintf(stderr, "cmdlibctl: line %d: %s '%s'\n", lineno,
                    k ? "value too long for" : "unknown key", words[i]);
            return false;
        }
        strcpy(reinterpret_cast<char *>(rec) + k->offset, eq + 1);
        *content |= k->bit;
    }
    return true;
}

bool nat_flag(const char *word, NATEntryChecker *c) {
    for (const Flag &f : kNatFlags) {
        if (strcmp(f.name, word) != 0) continue;
        if (f.match_flag)
            c->match_flags |= f.match_flag;
        else
            c->append_item = 1;
        return true;
    }
    return false;
}

// The checkers of a description file; -1 when it cannot be read or is wrong.
template <size_t N, class Record>
int read_checkers(const char *path, const Key (&keys)[N], Record *out,
                  bool (*flag)(const char *, Record *)) {
    FILE *f = fopen(path, "r");
    if (!f) {
        fprintf(stderr, "cmdlibctl: cannot read %s\n", path);
        return -1;
    }
    int count = 0, lineno = 0;
    char line[512];
    bool ok = true;
    while (ok && fgets(line, sizeof line, f)) {
        ++lineno;
        if (char *hash = strchr(line, '#')) *hash = '\0';
        util_strip_blank_of_string_end(line);
        if (!*util_skip_all_spaces(line)) continue;
        if (count == kMaxCheckers) {
            fprintf(stderr, "cmdlibctl: more than %d checkers\n", kMaxCheckers);
            ok = false;
            break;
        }
        Record *rec = &out[count];
        memset(rec, 0, sizeof *rec);
        ok = apply_words(line, keys, rec, &rec->check_content, lineno, flag);
        ++count;
    }
    fclose(f);
    return ok ? count : -1;
}

// Runs a listing command into a scratch file; its path, "" on failure.
std::string listing(const char *command) {
    char path[UTIL_TMP_PATH_SIZE];
    util_get_tmp_uuid_file_path(path);
    std::string cmd = std::string(command) + " >" + path + " 2>/dev/null";
    if (util_shell(cmd.c_str()) != 0) {
        cmd_rm(path);
        return "";
    }
    return path;
}

// ---- route ---------------------------------------------------------------------

struct RouteReport {
    RouteEntryChecker checkers[kMaxCheckers];
    int count;
    bool listed;
};

void check_routes(RouteReport *r) {
    for (int i = 0; i < r->count; ++i) r->checkers[i].match_count = 0;
    std::string path = listing("route -n");
    r->listed =
        !path.empty() && util_route_check_if_route_exist(path.c_str(), r->checkers, r->count) == 0;
    if (!path.empty()) cmd_rm(path.c_str());
}

const char *state_word(unsigned content, int matches) {
    return content == 0 ? "disabled" : matches ? "found" : "missing";
}

// The fields of the table KEYS of a record, null where empty.
template <size_t N, class Record>
cJSON *fields_json(const Record &rec, const Key (&keys)[N], unsigned only) {
    cJSON *o = cJSON_CreateObject();
    for (const Key &k : keys)
        if (only == 0 || (only & k.bit))
            ctl_add_text(o, k.name, reinterpret_cast<const char *>(&rec) + k.offset, k.width);
    return o;
}

// {"listed": bool, "checkers": [{"state", "fields"}]} under KEY of DOC.
void routes_json(cJSON *doc, const char *key, const RouteReport &r) {
    cJSON *o = cJSON_AddObjectToObject(doc, key);
    cJSON_AddBoolToObject(o, "listed", r.listed);
    cJSON *list = cJSON_AddArrayToObject(o, "checkers");
    for (int i = 0; r.listed && i < r.count; ++i) {
        const RouteEntryChecker &c = r.checkers[i];
        cJSON *item = cJSON_CreateObject();
        cJSON_AddStringToObject(item, "state", state_word(c.check_content, c.match_count));
        cJSON_AddItemToObject(item, "fields", fields_json(c, kRouteKeys, 0));
        cJSON_AddItemToArray(list, item);
    }
}

void print_routes(const char *title, const RouteReport &r, cJSON *doc) {
    if (doc) return routes_json(doc, title[0] == 'b' ? "before" : "after", r);
    printf("%s\n", title);
    if (!r.listed) {
        printf("  (route -n failed)\n");
        return;
    }
    for (int i = 0; i < r.count; ++i) {
        const RouteEntryChecker &c = r.checkers[i];
        printf("  %-8s dest %-15s gw %-15s mask %-15s dev %s\n", state_word(c.check_content, c.match_count),
               c.dest_IP, c.gateway, c.netmask, c.interface);
    }
}

int cmd_route(int argc, char **argv) {
    if (argc != 3 || (strcmp(argv[1], "check") != 0 && strcmp(argv[1], "fix") != 0))
        return ctl_usage(argv[0]);
    static RouteReport report;
    report.count =
        read_checkers<4, RouteEntryChecker>(argv[2], kRouteKeys, report.checkers, nullptr);
    if (report.count < 0) return 1;
    check_routes(&report);
    cJSON *doc = ctl_json() ? cJSON_CreateObject() : nullptr;
    print_routes("before:", report, doc);
    if (strcmp(argv[1], "fix") == 0 && report.listed) {
        util_route_fix_route_entry(report.checkers, report.count);
        check_routes(&report);
        print_routes("after fix:", report, doc);
    }
    return doc ? ctl_emit(doc, report.listed ? 0 : 1) : report.listed ? 0 : 1;
}

// ---- nat -----------------------------------------------------------------------

// Each checker is checked against the listing of its own table and family.
constexpr const char *kRuleListings[] = {"iptables -S", "iptables -t nat -S", "ip6tables -S",
                                         "ip6tables -t nat -S"};

int listing_of(const NATEntryChecker &c) {
    return ((c.match_flags & NAT_MATCH_IPV6) ? 2 : 0) +
           ((c.match_flags & NAT_MATCH_NAT_TABLE) ? 1 : 0);
}

struct NatReport {
    NATEntryChecker checkers[kMaxCheckers];
    int count;
    int result[4];  // check result per listing, 1 when no checker uses it
};

void check_rules(NatReport *r) {
    for (int l = 0; l < 4; ++l) {
        static NATEntryChecker group[kMaxCheckers];
        int index[kMaxCheckers], n = 0;
        for (int i = 0; i < r->count; ++i)
            if (listing_of(r->checkers[i]) == l) {
                index[n] = i;
                group[n] = r->checkers[i];
                group[n++].match_count = 0;
            }
        r->result[l] = 1;
        if (n == 0) continue;
        std::string path = listing(kRuleListings[l]);
        r->result[l] = path.empty() ? -1 : util_nat_check_if_nat_exist(path.c_str(), group, n);
        if (!path.empty()) cmd_rm(path.c_str());
        for (int j = 0; j < n; ++j) r->checkers[index[j]].match_count = group[j].match_count;
    }
}

// {"failed_listings": [...], "checkers": [{"state", "matches", "listing",
// "must_go", "append", "fields"}]} under KEY of DOC.
void rules_json(cJSON *doc, const char *key, const NatReport &r) {
    cJSON *o = cJSON_AddObjectToObject(doc, key);
    cJSON *failed = cJSON_AddArrayToObject(o, "failed_listings");
    for (int l = 0; l < 4; ++l)
        if (r.result[l] == -1) cJSON_AddItemToArray(failed, cJSON_CreateString(kRuleListings[l]));
    cJSON *list = cJSON_AddArrayToObject(o, "checkers");
    for (int i = 0; i < r.count; ++i) {
        const NATEntryChecker &c = r.checkers[i];
        cJSON *item = cJSON_CreateObject();
        cJSON_AddStringToObject(item, "state", state_word(c.check_content, c.match_count));
        cJSON_AddNumberToObject(item, "matches", c.match_count);
        cJSON_AddStringToObject(item, "listing", kRuleListings[listing_of(c)]);
        cJSON_AddBoolToObject(item, "must_go", (c.match_flags & NAT_MATCH_DELETE) != 0);
        cJSON_AddBoolToObject(item, "append", c.append_item != 0);
        cJSON_AddItemToObject(item, "fields", fields_json(c, kNatKeys, c.check_content ? c.check_content : ~0u));
        cJSON_AddItemToArray(list, item);
    }
}

void print_rules(const char *title, const NatReport &r, cJSON *doc) {
    if (doc) return rules_json(doc, title[0] == 'b' ? "before" : "after", r);
    printf("%s\n", title);
    for (int l = 0; l < 4; ++l)
        if (r.result[l] == -1)
            printf("  (%s failed or listed fewer than 3 rules)\n", kRuleListings[l]);
    for (int i = 0; i < r.count; ++i) {
        const NATEntryChecker &c = r.checkers[i];
        const char *state = state_word(c.check_content, c.match_count);
        printf("  %-8s x%d  %s%s", state, c.match_count, kRuleListings[listing_of(c)],
               (c.match_flags & NAT_MATCH_DELETE) ? " (must go)" : "");
        for (const Key &k : kNatKeys)
            if (c.check_content & k.bit)
                printf(" %s=%s", k.name, reinterpret_cast<const char *>(&c) + k.offset);
        printf("\n");
    }
}

int cmd_nat_rules(char **argv) {
    static NatReport report;
    report.count = read_checkers<12, NATEntryChecker>(argv[2], kNatKeys, report.checkers, nat_flag);
    if (report.count < 0) return 1;
    check_rules(&report);
    cJSON *doc = ctl_json() ? cJSON_CreateObject() : nullptr;
    print_rules("before:", report, doc);
    if (strcmp(argv[1], "fix") == 0) {
        util_nat_fix_nat_entry(report.checkers, report.count);
        check_rules(&report);
        print_rules("after fix:", report, doc);
    }
    int rc = 0;
    for (int r : report.result)
        if (r == -1) rc = 1;
    return doc ? ctl_emit(doc, rc) : rc;
}

}  // namespace

int ctl_nat_rules(int argc, char **argv) {
    if (argc != 3 || (strcmp(argv[1], "check") != 0 && strcmp(argv[1], "fix") != 0))
        return ctl_usage(argv[0]);
    return cmd_nat_rules(argv);
}

CMDLIBCTL_COMMAND("route", "check|fix FILE  (route checkers: lines of dest= gw= mask= dev=)",
                  cmd_route);
