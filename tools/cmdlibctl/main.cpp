// Dispatcher of cmdlibctl subcommands.
#include <stdio.h>
#include <string.h>

#include "cmdlibctl.h"

namespace {
constexpr int kMaxCommands = 128;
const CtlCommand *g_commands[kMaxCommands];
int g_count = 0;

int print_help(FILE *out, int rc) {
    if (ctl_json() && out == stdout) {
        cJSON *doc = cJSON_CreateObject();
        cJSON *list = cJSON_AddArrayToObject(doc, "commands");
        for (int i = 0; i < g_count; ++i) {
            cJSON *c = cJSON_CreateObject();
            cJSON_AddStringToObject(c, "name", g_commands[i]->name);
            cJSON_AddStringToObject(c, "usage", g_commands[i]->usage);
            cJSON_AddItemToArray(list, c);
        }
        return ctl_emit(doc, rc);
    }
    fprintf(out, "usage: cmdlibctl [--json] COMMAND [ARGS...] [--json]\n\n"
                 "--json: one JSON object on stdout instead of the text below (\"monitor\":\n"
                 "        one object per line, JSON Lines); keys in docs/cmdlibctl.md\n\n"
                 "commands:\n");
    for (int i = 0; i < g_count; ++i)
        fprintf(out, "  %-10s %s\n", g_commands[i]->name, g_commands[i]->usage);
    return rc;
}
}  // namespace

void ctl_register(const CtlCommand *cmd) {
    if (g_count < kMaxCommands) g_commands[g_count++] = cmd;
}

int ctl_usage(const char *name) {
    for (int i = 0; i < g_count; ++i)
        if (strcmp(g_commands[i]->name, name) == 0)
            fprintf(stderr, "usage: cmdlibctl %s %s\n", name, g_commands[i]->usage);
    return 2;
}

int main(int argc, char **argv) {
    // "--json" is a switch of the whole tool, wherever it stands: take it
    // out so that the commands see only their own arguments.
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        if (strcmp(argv[i], "--json") == 0)
            ctl_set_json(true);
        else
            argv[kept++] = argv[i];
    }
    argc = kept;
    argv[argc] = nullptr;
    if (argc < 2) return print_help(stderr, 2);
    if (strcmp(argv[1], "help") == 0 || strcmp(argv[1], "-h") == 0 || strcmp(argv[1], "--help") == 0)
        return print_help(stdout, 0);
    for (int i = 0; i < g_count; ++i)
        if (strcmp(g_commands[i]->name, argv[1]) == 0) return g_commands[i]->run(argc - 1, argv + 1);
    fprintf(stderr, "cmdlibctl: unknown command '%s'\n", argv[1]);
    return print_help(stderr, 2);
}
