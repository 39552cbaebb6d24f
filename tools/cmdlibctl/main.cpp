// Dispatcher of cmdlibctl subcommands.
#include <stdio.h>
#include <string.h>

#include "cmdlibctl.h"

namespace {
constexpr int kMaxCommands = 128;
const CtlCommand *g_commands[kMaxCommands];
int g_count = 0;

void print_help(FILE *out) {
    fprintf(out, "usage: cmdlibctl COMMAND [ARGS...]\n\ncommands:\n");
    for (int i = 0; i < g_count; ++i)
        fprintf(out, "  %-10s %s\n", g_commands[i]->name, g_commands[i]->usage);
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
    if (argc < 2 || strcmp(argv[1], "help") == 0 || strcmp(argv[1], "-h") == 0 ||
        strcmp(argv[1], "--help") == 0) {
        print_help(argc < 2 ? stderr : stdout);
        return argc < 2 ? 2 : 0;
    }
    for (int i = 0; i < g_count; ++i)
        if (strcmp(g_commands[i]->name, argv[1]) == 0) return g_commands[i]->run(argc - 1, argv + 1);
    fprintf(stderr, "cmdlibctl: unknown command '%s'\n", argv[1]);
    print_help(stderr);
    return 2;
}
