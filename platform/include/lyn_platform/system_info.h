/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * System information calls that a platform provides to lyn_service. The conventions of bluetooth.h
 * hold.
 */
#ifndef LYN_PLATFORM_SYSTEM_INFO_H
#define LYN_PLATFORM_SYSTEM_INFO_H

#ifdef __cplusplus
extern "C" {
#endif

/** Reads a fixed feature value of the product. @return 0, or a failure when key is unknown. */
int system_info_get_custom_int(const char *key, int *value);

#ifdef __cplusplus
}
#endif

#endif
