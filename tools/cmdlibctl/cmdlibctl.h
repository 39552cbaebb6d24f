// cmdlibctl: a small command-line view of what libcmdlib sees on a device.
// Each family adds its subcommands in its own file with CMDLIBCTL_COMMAND;
// main.cpp only dispatches.
#pragma once

#include <cjson/cJSON.h>
#include <stddef.h>

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

// ---- JSON output (json.cpp) ----------------------------------------------------
// "--json" anywhere on the command line ("cmdlibctl --json net",
// "cmdlibctl net --json") is taken out of argv by main() before the command
// runs; the command asks ctl_json() and then prints one JSON object (built
// with cJSON) instead of its human text.  Errors still go to stderr and the
// exit status is the same in both modes.
bool ctl_json();
void ctl_set_json(bool on);

// Prints DOC as one line of unformatted JSON on stdout, frees it and
// returns RC (so a command ends with "return ctl_emit(doc, rc);").
int ctl_emit(cJSON *doc, int rc);

// Adds TEXT under KEY; null when TEXT is empty or "-" (the human output's
// "nothing here").  WIDTH bounds a fixed-width field that may fill its
// array without a terminating NUL.
cJSON *ctl_add_text(cJSON *obj, const char *key, const char *text, size_t width = static_cast<size_t>(-1));

// Adds an array of strings under KEY.
cJSON *ctl_add_strings(cJSON *obj, const char *key, const char *const *items, int count);

// A library list "NAME@VALUE$NAME@VALUE$..." as an object {NAME: VALUE}
// under KEY (entries without '@' get an empty value).
cJSON *ctl_add_pairs(cJSON *obj, const char *key, const char *list);
