/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Power calls that a platform provides to lyn_service. The conventions of bluetooth.h hold.
 */
#ifndef LYN_PLATFORM_POWER_H
#define LYN_PLATFORM_POWER_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A power-off event. A platform may append members of its own. */
typedef struct {
    uint32_t flags; /**< bit 30 (0x40000000): the TV goes to suspend */
} device_power_off_info_s;

/** Reports a power-off event. @param info lives until the callback returns. @return 0. */
typedef int (*device_power_off_cb)(const device_power_off_info_s *info, void *user_data);

/** Reads the power state. States 0, 1, 2 and 4 serve users; every other one does not. */
int device_power_get_state(void);

/** Registers for power-off events. */
int device_power_subscribe_poweroff_event(device_power_off_cb callback, void *user_data);

/** Ends the registration for power-off events. */
int device_power_unsubscribe_poweroff_event(void);

/** Registers for ambient power-off: the screen shows ambient pictures and the TV serves nobody. */
int device_power_subscribe_ambient_poweroff(device_power_off_cb callback, void *user_data);

/** Ends the registration for ambient power-off. */
int device_power_unsubscribe_ambient_poweroff(void);

#ifdef __cplusplus
}
#endif

#endif
