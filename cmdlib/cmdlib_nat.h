/* cmdlib_nat: keeps the router's packet-filter and NAT rules in place.
 *
 * A daemon describes the rules that must (or must not) exist as an array
 * of checkers.  The check pass reads a saved rule listing in the form
 * "iptables -S" prints it (one rule a line, written as the options that
 * would create it; the caller writes it to a file: "iptables -S",
 * "iptables -t nat -S", "ip6tables -S") and counts, per checker, the rules
 * that match it; the fix pass then adds what is missing or deletes what
 * must go, one command per checker.  Fields are compared as text,
 * case-insensitively.
 *
 * Calling order: zero match_count, write the listing, check, fix with the
 * same array.
 */
#ifndef CMDLIB_NAT_H
#define CMDLIB_NAT_H

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

/* check_content bits: the field, the listing option it is compared with,
 * and the option the fix writes.  Other bits are ignored. */
#define NAT_CHECK_CHAIN 0x1u             /* chain: "-A", or the first word after "-P" */
#define NAT_CHECK_IN_INTERFACE 0x2u      /* in_interface: "-i" */
#define NAT_CHECK_PROTOCOL 0x4u          /* protocol: "-p" */
#define NAT_CHECK_DESTINATION 0x8u       /* destination: "-d" */
#define NAT_CHECK_DESTINATION_PORT 0x10u /* destination_port: "--dport" */
#define NAT_CHECK_NAT                                                                      \
    0x20u                              /* nat: "--to-ports" (REDIRECT), "--to-destination" \
                                          (DNAT), "--to-source" (SNAT), "--reject-with" (REJECT) */
#define NAT_CHECK_DEFAULT_POLICY 0x40u /* default_policy: the second word after "-P" */
#define NAT_CHECK_OUT_INTERFACE 0x80u  /* out_interface: "-o" */
#define NAT_CHECK_JUMP_ACTION 0x100u   /* jump_action: "-j" */
#define NAT_CHECK_SOURCE 0x200u        /* source: "-s" */
#define NAT_CHECK_SOURCE_PORT 0x400u   /* source_port: "--sport" */
#define NAT_CHECK_ICMP_TYPE 0x800u     /* icmp_type: "--icmp-type" or "--icmpv6-type" */

/* match_flags bits: how the fix writes the rule. */
#define NAT_MATCH_IPV6 0x1u       /* ip6tables instead of iptables */
#define NAT_MATCH_DELETE 0x8u     /* the rule must go: delete it while it is found */
#define NAT_MATCH_NAT_TABLE 0x10u /* the rule lives in the nat table ("-t nat") */

typedef struct NATEntryChecker {
    char chain[16];
    char in_interface[32];
    char out_interface[32];
    char protocol[16];         /* "icmp", "icmpv6", "tcp", ... */
    char destination[64];      /* address or network */
    char destination_port[16]; /* port or range */
    char source[64];
    char source_port[16];
    char nat[64]; /* argument of the target: port(s), address or reject type */
    char default_policy[16];
    char jump_action[16]; /* "DNAT", "SNAT", "REDIRECT", "REJECT" or any other target */
    char icmp_type[64];
    unsigned int match_flags;   /* NAT_MATCH_* bits */
    int match_count;            /* matching rule lines; the caller sets it to 0 */
    int append_item;            /* when adding: non-zero appends ("-A"), 0 inserts ("-I") */
    unsigned int check_content; /* NAT_CHECK_* bits; 0 disables the checker */
} NATEntryChecker;

/* Counts the rule lines of the listing file that match each checker.  A
 * line is read up to 255 bytes at a time, split at blanks and tabs into at
 * most 64 words, and counts with at least 2 words.  Its options are taken
 * left to right ("-A", "-P" chain and policy, "-j", "-i", "-o", "-p",
 * "-d", "--dport", "-s", "--sport", "--icmp-type", "--icmpv6-type", and the
 * target argument only after its own target: "--to-ports" after
 * "REDIRECT", "--to-destination" after "DNAT", "--to-source" after "SNAT",
 * "--reject-with" after "REJECT"); an option with no value is ignored.
 * Checkers are tried in array order; the first whose selected options are
 * all present with equal values gets one more match and the line is done.
 * 0; -1 when the file cannot be opened (counts untouched) or holds fewer
 * than 3 lines of at least two words (an empty or failed listing). */
CMDLIB_API int util_nat_check_if_nat_exist(const char *iptables_s_result_file,
                                           NATEntryChecker *nat_checker, int nat_checker_count);

/* For each enabled checker: without NAT_MATCH_DELETE, adds the rule when
 * match_count is 0; with it, deletes the rule once when match_count is not
 * 0.  The command is, in this order: "iptables" or "ip6tables"; with the
 * chain selected and set, " -t nat" (NAT_MATCH_NAT_TABLE), " -D ", " -A "
 * (append_item) or " -I ", and the chain; " -i ", " -o ", " -p ";
 * " --icmp-type " or " --icmpv6-type " for protocol "icmp" / "icmpv6"; " -d ",
 * " --dport ", " -s ", " --sport ", " -P "; " -j " whenever jump_action is
 * set; the target argument option of REDIRECT, SNAT, DNAT or REJECT and
 * nat.  Each piece is written only when its bit is selected and its field
 * is set.  Fields are passed as single shell words (text with shell syntax
 * is quoted, never interpreted); a command longer than 255 characters is
 * not run.  After adding a rule to a chain of the nat table, "conntrack -F"
 * is run so that existing connections pick up the new translation.  Results
 * are not looked at: a rule that failed is found missing again by the next
 * check. */
CMDLIB_API void util_nat_fix_nat_entry(NATEntryChecker *nat_checker, int nat_checker_count);

CMDLIB_END_DECLS

#endif
