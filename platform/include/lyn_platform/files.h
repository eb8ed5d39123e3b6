/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Places of the TV's files. The conventions of bluetooth.h hold.
 */
#ifndef LYN_PLATFORM_FILES_H
#define LYN_PLATFORM_FILES_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Says where this platform keeps a file of the TV. A TV writes the path as it is; others put a folder
 * of their own before it.
 * @param path absolute path on a TV
 * @param[out] out the place, with a NUL
 * @param size bytes in out
 * @return 0, or a failure when the place does not fit into out
 */
int platform_file_path(const char *path, char *out, size_t size);

#ifdef __cplusplus
}
#endif

#endif
