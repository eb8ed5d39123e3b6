/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Bluetooth adapter and LE scan calls that a platform provides to lyn_service.
 *
 * Conventions of every header of this folder, kept by each platform and checked by the platform
 * contract test:
 *
 *  1. An int result of 0 is success. Any other value is a failure code; "out" arguments then keep
 *     what they held.
 *  2. Every `char **` result is allocated with malloc() and carries a NUL; the caller frees it.
 *  3. Functions may be called from any thread and never block: a call that must ask another process
 *     is bounded by two seconds at worst.
 *  4. Callbacks run on the GLib default main context, one at a time, and never from inside a call
 *     that the core makes.
 *  5. When an unset, unsubscribe, stop or destroy function returns, no callback of that registration
 *     starts any more. Such a function never waits for a callback that runs on another thread.
 *  6. Each registration is one slot of the process: a new one replaces the old one.
 *  7. `user_data` is handed back as it was given and never dereferenced.
 *
 * Failure codes with a meaning to the core (written as 32-bit values):
 *
 * | code       | where                             | meaning                                       |
 * |------------|-----------------------------------|-----------------------------------------------|
 * | 0xFE400103 | connection report                 | counts as success                             |
 * | 0xFE400104 | connection report, disconnected   | link was lost; a normal end of an exchange    |
 * | 0xFE400105 | bt_adapter_le_stop_scan           | no scan was running; counts as success        |
 * | 0xC0000001 | connection report, connect failed | the platform gave up waiting; never retried   |
 */
#ifndef LYN_PLATFORM_BLUETOOTH_H
#define LYN_PLATFORM_BLUETOOTH_H

#include <stdbool.h>

/* In C++ too, an enumeration then holds any int that a platform gives. */
#ifdef __cplusplus
#define LYN_AS_INT : int
extern "C" {
#else
#define LYN_AS_INT
#endif

/** Power state of the Bluetooth adapter. */
typedef enum LYN_AS_INT {
    BT_ADAPTER_DISABLED = 0, /**< off, absent or blocked */
    BT_ADAPTER_ENABLED = 1   /**< on */
} bt_adapter_state_e;

/** The two packets of one scan result. */
typedef enum LYN_AS_INT {
    BT_ADAPTER_LE_PACKET_ADVERTISING = 0,  /**< the advertising packet */
    BT_ADAPTER_LE_PACKET_SCAN_RESPONSE = 1 /**< the answer to a scan request */
} bt_adapter_le_packet_type_e;

/**
 * One LE scan result. Everything in it belongs to the platform and lives until the callback returns.
 * The two packets are kept apart, bytes as received from the air: a sequence of length-type-value
 * structures that nobody has checked yet.
 */
typedef struct {
    char *remote_address; /**< six upper-case hexadecimal pairs joined by colons */
    int rssi;             /**< dBm */
    char *adv_data;       /**< advertising packet, or null when there was none */
    int adv_data_len;     /**< bytes in adv_data */
    char *scan_data;      /**< scan response, or null when none was received */
    int scan_data_len;    /**< bytes in scan_data */
} bt_adapter_le_device_scan_result_info_s;

/** Reports a change of the adapter state. @param result 0, or why the state could not be read. */
typedef void (*bt_adapter_state_changed_cb)(int result, bt_adapter_state_e state, void *user_data);

/** Reports one scan result. @param info never null when result is 0. */
typedef void (*bt_adapter_le_scan_result_cb)(int result, bt_adapter_le_device_scan_result_info_s *info,
                                             void *user_data);

/** Makes the Bluetooth stack ready for this process. Counted: every success wants one bt_product_deinit(). */
int bt_product_init(void);

/** Undoes one bt_product_init(). A surplus call is harmless. */
int bt_product_deinit(void);

/** Reads the adapter state. @param[out] state written on success only. */
int bt_adapter_get_state(bt_adapter_state_e *state);

/** Registers for adapter state changes; replaces an earlier registration. */
int bt_adapter_set_state_changed_cb(bt_adapter_state_changed_cb callback, void *user_data);

/** Ends the registration for adapter state changes. */
int bt_adapter_unset_state_changed_cb(void);

/** Reads the adapter's address, in the form of remote_address. @param[out] address malloc'ed. */
int bt_adapter_get_address(char **address);

/** Gives LE scanning and connecting more (true) or the usual share (false) of the radio. */
int bt_adapter_le_enable_le_scan_performance_boost(bool enable);

/** Chooses the scan mode of the next scan. @param mode 0 is the balanced mode. */
int bt_adapter_le_set_scan_mode(int mode);

/**
 * Sets type, interval and window of the next scan.
 * @param type 0 passive or as the platform chooses, 1 active
 * @param interval_ms milliseconds from the start of one window to the start of the next
 * @param window_ms milliseconds of listening in each interval, at most interval_ms
 */
int bt_adapter_le_set_customized_scan_mode_with_scan_type(int type, float interval_ms, float window_ms);

/**
 * Starts the LE scan. Results arrive until bt_adapter_le_stop_scan(), with a scannable phone's two
 * packets joined into one result. A start while a scan runs replaces the callback.
 */
int bt_adapter_le_start_scan(bt_adapter_le_scan_result_cb callback, void *user_data);

/** Stops the LE scan. @return 0, or 0xFE400105 when no scan was running. */
int bt_adapter_le_stop_scan(void);

/**
 * Takes the manufacturer-specific data out of one packet of a scan result.
 * @param[out] company company identifier
 * @param[out] data malloc'ed bytes behind the company identifier, one NUL behind the last
 * @param[out] length bytes in data, the NUL not counted; never more than the packet holds
 * @return 0, or a failure when the packet is missing, malformed, or carries no such data
 */
int bt_adapter_le_get_scan_result_manufacturer_data(const bt_adapter_le_device_scan_result_info_s *info,
                                                    bt_adapter_le_packet_type_e packet_type, int *company,
                                                    char **data, int *length);

#undef LYN_AS_INT

#ifdef __cplusplus
}
#endif

#endif
