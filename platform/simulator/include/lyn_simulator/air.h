/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Listening to what passes over the simulated air. lynctl looks this function up by name in whatever
 * platform it has loaded, and shows the air where the platform offers it.
 */
#ifndef LYN_SIMULATOR_AIR_H
#define LYN_SIMULATOR_AIR_H

#include <stddef.h>

/* In C++ too, the enumeration then holds any int. */
#ifdef __cplusplus
#define LYN_AS_INT : int
extern "C" {
#else
#define LYN_AS_INT
#endif

typedef enum LYN_AS_INT {
    LYN_SIMULATOR_AIR_CONNECTED = 0,    /**< link up; no data */
    LYN_SIMULATOR_AIR_WRITE = 1,        /**< TV to phone */
    LYN_SIMULATOR_AIR_NOTIFY = 2,       /**< phone to TV */
    LYN_SIMULATOR_AIR_DISCONNECTED = 3, /**< link down; no data */
    LYN_SIMULATOR_AIR_CONNECT_FAILED = 4
} lyn_simulator_air_event_e;

/** @param data bytes on the air with a NUL behind them, or an empty text; lives until the return. */
typedef void (*lyn_simulator_air_cb)(lyn_simulator_air_event_e event, const char *address, const char *data,
                                     int length, void *user_data);

/**
 * Registers the one listener of the process, or none with null. It runs on the main loop, before the
 * TV's own callback for the same event. A reset of the simulation ends the registration.
 */
void lyn_simulator_set_air_listener(lyn_simulator_air_cb callback, void *user_data);

/**
 * Says whether the scenario that this process was started with could be used. If it could not, the room
 * is empty and bt_product_init() fails.
 * @param[out] error why it could not, as one line "FILE:LINE: FIELD: reason", cut to size; empty if it
 *             could. May be null.
 * @param size bytes in error
 * @return 0 if it could
 */
int lyn_simulator_check(char *error, size_t size);

#undef LYN_AS_INT

#ifdef __cplusplus
}
#endif

#endif
