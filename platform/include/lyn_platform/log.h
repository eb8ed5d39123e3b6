/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Log calls that a platform provides to lyn_service. They never fail, never throw, and are safe from
 * any thread.
 */
#ifndef LYN_PLATFORM_LOG_H
#define LYN_PLATFORM_LOG_H

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Prints one line to the platform's log.
 * @param log_id 0 is the main log
 * @param priority 3 debug, 4 info, 5 warning, 6 error
 * @param tag name of the program part
 * @param format printf format of the line, without a newline at its end
 */
int platform_log_print(int log_id, int priority, const char *tag, const char *format, ...)
    __attribute__((format(printf, 4, 5)));

/**
 * Opens the kernel log for one line.
 * @return a file descriptor that takes one write() and is then closed by the caller, or -1
 */
int platform_kmsg_open(void);

#ifdef __cplusplus
}
#endif

#endif
