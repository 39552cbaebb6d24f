// cmdlibctl: a small command-line view of what libcmdlib sees on a device.
// Each family adds its subcommands in its own file with CMDLIBCTL_COMMAND;
// main.cpp only dispatches.
#pragma once

struct CtlCommand {
    const char *name;   // first word on the command line ("config", "net", ...)
    const char *usage;  // one line of help: the arguments after the name
    int (*run)(int argc, char **argv);  // argv[0] is the command's name
};

void ctl_register(const CtlCommand *cmd);

#define CMDLIBCTL_CONCAT2(a, b) a##b
#define CMDLIBCTL_CONCAT(a, b) CMDLIBCTL_CONCAT2(a, b)
#define CMDLIBCTL_COMMAND(name, usage, fn)                                                   \
    static const CtlCommand CMDLIBCTL_CONCAT(ctl_cmd_, __LINE__) = {name, usage, fn};        \
    static const int CMDLIBCTL_CONCAT(ctl_reg_, __LINE__) =                                  \
        (ctl_register(&CMDLIBCTL_CONCAT(ctl_cmd_, __LINE__)), 0)

// Prints the usage line of the named command to stderr and returns 2.
int ctl_usage(const char *name);

// "nat check|fix FILE": the rule checkers (cmd_route.cpp), reached through
// the "nat" command of the session table.
int ctl_nat_rules(int argc, char **argv);
