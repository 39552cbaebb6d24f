/* cmdlib_platform_mtk7561: the few operations that differ on an
 * MT7561-based build. */
#ifndef CMDLIB_PLATFORM_MTK7561_H
#define CMDLIB_PLATFORM_MTK7561_H

#include "cmdlib_export.h"

CMDLIB_BEGIN_DECLS

/* As pc_get_device_sn: "qxsys snrl" up to its first line end; 0 or -1. */
CMDLIB_API int mtk7561_get_device_sn(char *value, int len);
/* Restarts dnsmasq in the background; 0. */
CMDLIB_API int mtk7561_opt_restart_dnsmasq(void);

CMDLIB_END_DECLS

#endif
