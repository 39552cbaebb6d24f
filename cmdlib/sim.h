/* cmdlib SIM state, from the status indication file that the dial tool
 * keeps ("/tmp/cmdlib/.system_signal_sim_status_ind").  Every call reads
 * the file afresh; a missing or empty file reads as no SIM, no PIN, no PUK.
 */
#ifndef CMDLIB_SIM_H
#define CMDLIB_SIM_H

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

/* The first number of the file as it stands: 1 present, 0 absent (callers
 * test for 1; other values are handed through). */
CMDLIB_API int cmd_sim_exist(void);
/* 1 when the SIM waits for its PIN (second number is 1), else 0. */
CMDLIB_API int cmd_sim_need_pin(void);
/* 1 when the SIM waits for its PUK (third number is 1), else 0. */
CMDLIB_API int cmd_sim_need_puk(void);

CMDLIB_END_DECLS

#endif
