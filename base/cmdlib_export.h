/* Symbol export control shared by the base library and libcmdlib.
 * Everything is built with hidden visibility; only declarations marked
 * CMDLIB_API are visible to programs linking the shared libraries. */
#ifndef CMDLIB_EXPORT_H
#define CMDLIB_EXPORT_H

#if defined(__GNUC__)
#define CMDLIB_API __attribute__((visibility("default")))
#else
#define CMDLIB_API
#endif

#ifdef __cplusplus
#define CMDLIB_BEGIN_DECLS extern "C" {
#define CMDLIB_END_DECLS }
#else
#define CMDLIB_BEGIN_DECLS
#define CMDLIB_END_DECLS
#endif

#endif
