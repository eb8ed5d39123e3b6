/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * GATT client calls that a platform provides to lyn_service. The conventions of bluetooth.h hold.
 *
 * Reports about a link:
 *
 *  - Every accepted bt_gatt_connect() is answered by exactly one report in bounded time: (0, true)
 *    once the link is up and its services are resolved, or (code, true) when the connect failed. A
 *    connect that never ends is the platform's to end: it reports 0xC0000001.
 *  - Every accepted bt_gatt_disconnect() on a live link is answered by one (0, false) report. A link
 *    that is lost is reported once as (code, false).
 *  - Reports repeat the address exactly as it was given to bt_gatt_connect(): callers compare it as a
 *    text.
 *  - A report belongs to the registration that was in force when its connect was accepted. If that
 *    registration has been unset or replaced since, the report is dropped.
 *  - A connect to a phone whose old link is still going down is accepted, and begins when it is down.
 */
#ifndef LYN_PLATFORM_GATT_H
#define LYN_PLATFORM_GATT_H

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A client object of one connected phone, made by bt_gatt_client_create(). */
typedef void *bt_gatt_client_h;

/** A service or characteristic of a client; valid until that client is destroyed. */
typedef void *bt_gatt_h;

/** Outcome of an MTU request. */
typedef struct {
    const char *remote_address; /**< the phone */
    unsigned mtu;               /**< ATT MTU now in force, in bytes */
    unsigned status;            /**< 0, or why the MTU did not change */
} bt_gatt_client_att_mtu_info_s;

/**
 * Reports the end of a connect (connected is true, also for a failed one) or of a link (false).
 * @param remote_address the phone, as given to bt_gatt_connect()
 */
typedef void (*bt_gatt_connection_state_changed_cb)(int result, bool connected, const char *remote_address,
                                                    void *user_data);

/**
 * Reports a notified value. The value carries a NUL behind its last byte, not counted in length, and
 * lives until the callback returns, even if the callback destroys the client.
 */
typedef void (*bt_gatt_client_characteristic_value_changed_cb)(bt_gatt_h characteristic, char *value, int length,
                                                               void *user_data);

/** Reports the end of a write. @param result 0, or the phone's or the link's error. */
typedef void (*bt_gatt_client_request_completed_cb)(int result, bt_gatt_h characteristic, void *user_data);

/** Reports the MTU in force after a request. @param info lives until the callback returns. */
typedef void (*bt_gatt_client_att_mtu_changed_cb)(bt_gatt_client_h client,
                                                  const bt_gatt_client_att_mtu_info_s *info, void *user_data);

/** Registers for link reports; one slot for the process. */
int bt_gatt_set_connection_state_changed_cb(bt_gatt_connection_state_changed_cb callback, void *user_data);

/** Ends the registration for link reports. */
int bt_gatt_unset_connection_state_changed_cb(void);

/**
 * Begins to connect to a phone's GATT server.
 * @param address the phone; letters of either case, whatever the case of the scan's reports
 * @param auto_connect true to wait for a phone that is not there yet
 * @return 0 when the attempt was begun; its end is reported
 */
int bt_gatt_connect(const char *address, bool auto_connect);

/** Begins to take a link down. @return 0 when a link to address was up. */
int bt_gatt_disconnect(const char *address);

/** Makes a client of a connected phone. @param[out] client to be given to bt_gatt_client_destroy(). */
int bt_gatt_client_create(const char *address, bt_gatt_client_h *client);

/** Ends a client, its handles and its registrations. The link stays. */
int bt_gatt_client_destroy(bt_gatt_client_h client);

/** Looks a service up. @param uuid 128-bit UUID text, lower case. */
int bt_gatt_client_get_service(bt_gatt_client_h client, const char *uuid, bt_gatt_h *service);

/** Looks a characteristic of a service up. @param uuid 128-bit UUID text, lower case. */
int bt_gatt_service_get_characteristic(bt_gatt_h service, const char *uuid, bt_gatt_h *characteristic);

/** Asks for the notifications of a characteristic. */
int bt_gatt_client_set_characteristic_value_changed_cb(bt_gatt_h characteristic,
                                                       bt_gatt_client_characteristic_value_changed_cb callback,
                                                       void *user_data);

/** Ends the notifications of a characteristic. */
int bt_gatt_client_unset_characteristic_value_changed_cb(bt_gatt_h characteristic);

/** Sets the local value, which the next write sends. @param length bytes, at most 512. */
int bt_gatt_set_value(bt_gatt_h characteristic, const char *value, int length);

/** Writes the local value to the phone, with response. @return 0 when begun; the end is reported. */
int bt_gatt_client_write_value(bt_gatt_h characteristic, bt_gatt_client_request_completed_cb callback,
                               void *user_data);

/** Registers for the outcome of MTU requests of one client. */
int bt_gatt_client_set_att_mtu_changed_cb(bt_gatt_client_h client, bt_gatt_client_att_mtu_changed_cb callback,
                                          void *user_data);

/** Ends the registration for MTU outcomes. */
int bt_gatt_client_unset_att_mtu_changed_cb(bt_gatt_client_h client);

/**
 * Asks for an ATT MTU in bytes. Every accepted request is followed by one report, also when the MTU
 * did not change, and the report says the real MTU.
 */
int bt_gatt_client_request_att_mtu_change(bt_gatt_client_h client, unsigned mtu);

/** Finds the service that a characteristic belongs to. */
int bt_gatt_characteristic_get_service(bt_gatt_h characteristic, bt_gatt_h *service);

/** Reads the UUID of a service or characteristic. @param[out] uuid malloc'ed, lower case. */
int bt_gatt_get_uuid(bt_gatt_h handle, char **uuid);

#ifdef __cplusplus
}
#endif

#endif
