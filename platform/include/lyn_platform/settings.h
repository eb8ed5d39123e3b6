/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Settings store calls that a platform provides to lyn_service. The conventions of bluetooth.h hold.
 *
 * Keys that begin with "db/" outlive a restart of the TV; keys that begin with "memory/" do not. Other
 * programs watch keys and act on them.
 */
#ifndef LYN_PLATFORM_SETTINGS_H
#define LYN_PLATFORM_SETTINGS_H

#ifdef __cplusplus
extern "C" {
#endif

/** Stores an integer. */
int vconf_set_int(const char *key, int value);

/** Reads an integer. @return 0, or a failure when the key is absent or holds another type. */
int vconf_get_int(const char *key, int *value);

/** Reads a text. @return malloc'ed text, or null when the key is absent or holds another type. */
char *vconf_get_str(const char *key);

#ifdef __cplusplus
}
#endif

#endif
