/* cmdlib_platform_pc: the few operations that differ on a PC build. */
#ifndef CMDLIB_PLATFORM_PC_H
#define CMDLIB_PLATFORM_PC_H

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

/* The serial number printed by "qxsys snrl" up to its first line end (at
 * most len-1 characters, value zeroed first); 0, or -1 when it prints
 * nothing. */
CMDLIB_API int pc_get_device_sn(char *value, int len);
/* Restarts dnsmasq in the background; 0. */
CMDLIB_API int pc_opt_restart_dnsmasq(void);
/* Restarts the voice client and waits; 0. */
CMDLIB_API int pc_opt_restart_voipclient(void);

CMDLIB_END_DECLS

#endif
