/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Finds nearby phones that ask over Bluetooth Low Energy for a session with the TV, and answers them.
 *
 * Conventions:
 *
 *  1. A service is created by name, used through its handle, and destroyed. One service lives at a time.
 *  2. Functions return 0 (LYN_ERROR_NONE) or a lyn_error_e. A call that fails has changed nothing that
 *     its description does not name.
 *  3. Functions may be called from any thread and return without waiting for a phone. Results of
 *     requests and found phones are delivered on the thread that runs the GLib default main context:
 *     run a GLib main loop to receive them. A state change is reported on the thread that causes it, for
 *     a call of yours before that call returns.
 *     lyn_start_scan(), lyn_stop_scan() and the requests of a service take turns, and may wait for the
 *     platform's answer to such a call of the service before it. They, and whatever else changes the state,
 *     wait for a state callback that another thread is in. Nothing else waits for another thread.
 *  4. Texts given to a callback belong to the library and live until the callback returns. Copy what you
 *     keep. `user_data` is handed back as given and never read.
 *  5. Every callback may call every function. But as long as the state callback of a service has not
 *     returned, a scan, a request, or a stop that would change the state of that service, called by the
 *     same thread, is refused with LYN_ERROR_INVALID_STATE. Post it to the main loop with g_idle_add().
 *     Destroying a service inside its own callback is allowed; nothing is delivered for it afterwards.
 *  6. A null callback is allowed: nothing is called.
 *  7. Failures outside lyn_error_e (a failed allocation, the two arguments that say so below) leave as
 *     C++ exceptions; from C they end the process.
 *
 * A program that asks the first phone it finds:
 *
 * @code{.c}
 * #include <glib.h>
 * #include <lyn_service.h>
 * #include <stdio.h>
 *
 * static lyn_service_h service;
 * static GMainLoop *loop;
 *
 * static void on_result(lyn_request_initiating_result_e result, void *user_data)
 * {
 *     (void)user_data;
 *     printf("the phone says: %d\n", (int)result);
 *     g_main_loop_quit(loop);
 * }
 *
 * static void on_found(const lyn_device_info_t *phone, void *user_data)
 * {
 *     (void)user_data;
 *     printf("found %s at %s\n", phone->name ? phone->name : "(no name)", phone->address);
 *     if (lyn_request_initiating(service, phone->address, on_result, NULL) != LYN_ERROR_NONE)
 *         g_main_loop_quit(loop);
 * }
 *
 * int main(void)
 * {
 *     if (lyn_create_service(&service, "mirroring", NULL, NULL) != LYN_ERROR_NONE)
 *         return 1;
 *     loop = g_main_loop_new(NULL, FALSE);
 *     if (lyn_start_scan(service, on_found, NULL) == LYN_ERROR_NONE)
 *         g_main_loop_run(loop);
 *     g_main_loop_unref(loop);
 *     return lyn_destroy_service(service);
 * }
 * @endcode
 */
#ifndef LYN_SERVICE_H
#define LYN_SERVICE_H

/* In C++ too, an enumeration then holds any int that a caller gives. */
#ifdef __cplusplus
#define LYN_AS_INT : int
extern "C" {
#else
#define LYN_AS_INT
#endif

/** A service, from lyn_create_service() to lyn_destroy_service(). */
typedef void *lyn_service_h;

/** What a function returns. The value 1 is never returned. */
typedef enum lyn_error_e LYN_AS_INT {
    LYN_ERROR_NONE = 0,              /**< done */
    LYN_ERROR_INTERNAL = 2,          /**< an internal failure, or a precondition of the library */
    LYN_ERROR_INVALID_STATE = 3,     /**< not allowed in the service's present state */
    LYN_ERROR_INVALID_HANDLE = 4,    /**< the handle is null, or to be destroyed and not alive */
    LYN_ERROR_INVALID_PARAMETER = 5, /**< a bad argument, an unknown service name, a stale handle */
    LYN_ERROR_OPERATION_FAILED = 6,  /**< a platform call failed */
    LYN_ERROR_ALREADY_DONE = 7,      /**< a service lives already */
    LYN_ERROR_NOT_SUPPORTED = 8      /**< not an operation of this service */
} lyn_error_e;

/** What a service is doing. */
typedef enum lyn_state_e LYN_AS_INT {
    LYN_STATE_READY = 0,      /**< idle: a scan or a request may start */
    LYN_STATE_SCANNING = 1,   /**< looking for phones */
    LYN_STATE_REQUESTING = 2, /**< asking a phone */
    LYN_STATE_NOT_READY = 3   /**< Bluetooth is off or the TV goes to sleep ("nodlink" only) */
} lyn_state_e;

/** How a request ended. */
typedef enum lyn_request_initiating_result_e LYN_AS_INT {
    LYN_REQUEST_INITIATING_RESULT_SUCCESS = 0,                /**< the phone starts the session */
    LYN_REQUEST_INITIATING_RESULT_GATT_FAIL = 1,              /**< no connection, no answer, or no message */
    LYN_REQUEST_INITIATING_RESULT_NOT_REGISTERED_DEVICE = 2,  /**< the phone does not know this TV */
    LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR = 3,            /**< an answer that is none of these */
    LYN_REQUEST_INITIATING_RESULT_COMMAND_ERR = 4,            /**< the phone did not understand */
    LYN_REQUEST_INITIATING_RESULT_NOT_SUPPORTED = 5,          /**< the phone cannot do this */
    LYN_REQUEST_INITIATING_RESULT_CONNECTED = 6,              /**< the phone is in a session already */
    LYN_REQUEST_INITIATING_RESULT_RESERVED = 7,               /**< never delivered */
    LYN_REQUEST_INITIATING_RESULT_NOT_TAP = 8,                /**< the phone was not tapped */
    LYN_REQUEST_INITIATING_RESULT_NOT_STARTED_KOV = 9,        /**< the phone's Kov is not started */
    LYN_REQUEST_INITIATING_RESULT_NOT_STARTED_MIRRORING = 10, /**< the phone's mirroring is not started */
    LYN_REQUEST_INITIATING_RESULT_GATT_DISCONNECTED = 11      /**< the phone ended the connection */
} lyn_request_initiating_result_e;

/** How often the TV advertises itself, in the unit of the platform's advertising application. */
typedef enum lyn_adv_interval_e LYN_AS_INT {
    LYN_ADV_INTERVAL_50 = 0,
    LYN_ADV_INTERVAL_100 = 1,
    LYN_ADV_INTERVAL_150 = 2,
    LYN_ADV_INTERVAL_200 = 3,
    LYN_ADV_INTERVAL_300 = 4,
} lyn_adv_interval_e;

/** How the last NodLink request is mirrored: one of the LYN_NOD_LINK_TYPE_ values. */
typedef int nod_link_type;

enum {
    LYN_NOD_LINK_TYPE_MULTI_VIEW = 0, /**< screen mirroring beside other content */
    LYN_NOD_LINK_TYPE_FULL_VIEW = 1,  /**< screen mirroring on the whole screen */
    LYN_NOD_LINK_TYPE_SOUND = 2       /**< sound only */
};

/** A found phone. Any text may be null. */
typedef struct {
    const char *name;       /**< UTF-8; null when the phone gives none */
    const char *address;    /**< Bluetooth address; what a request takes as device_id */
    const char *unique_id;  /**< identifier that outlives a change of address; empty for "nodlink" */
    const char *extra_data; /**< what else the service knows, often JSON; may be empty */
    int rssi;               /**< received signal strength in dBm */
} lyn_device_info_t;

/** Reports the state a service is in now. Called on the thread that causes the change. */
typedef void (*lyn_state_changed_cb)(lyn_state_e state, void *user_data);

/** Reports a phone, again for each of its advertisements. @param info lives until the return. */
typedef void (*lyn_device_found_cb)(const lyn_device_info_t *info, void *user_data);

/**
 * Reports a phone as one line of JSON with the members "Address", "ExtraData", "Name", "RSSI" and
 * "UniqueID"; a null text is written as "", "ExtraData" as a text even where it is JSON itself.
 */
typedef void (*lyn_device_found_with_serialization_cb)(const char *json, void *user_data);

/** Reports how a request ended, once for each accepted request. Called by the main loop. */
typedef void (*lyn_request_initiating_result_cb)(lyn_request_initiating_result_e result, void *user_data);

/**
 * Creates the one service.
 *
 * @param[in,out] service points to a null handle; receives the handle, to be given to
 *                lyn_destroy_service(). Left alone on failure.
 * @param service_name "mirroring", "nodlink", "kov", or "dummy" (a fixed phone that always agrees).
 *                "nodlink" cannot be created while Bluetooth is off.
 * @param cb state reports, may be null; none comes before the first operation, but for "nodlink" that of a
 *           change of Bluetooth or power.
 * @param user_data handed to cb.
 * @return LYN_ERROR_INVALID_PARAMETER for a null or unknown name, a null `service` or a handle that is
 *         not null; LYN_ERROR_ALREADY_DONE while a service lives or is being created; LYN_ERROR_INTERNAL when a
 *         "nodlink" service finds Bluetooth off or the TV going to sleep.
 */
lyn_error_e lyn_create_service(void **service, const char *service_name, lyn_state_changed_cb cb, void *user_data);

/**
 * Destroys a service, without waiting for anything. Nothing is delivered for it afterwards, but for a
 * callback that has begun, or is just beginning, on another thread: it runs to its end. A running scan of
 * the platform is not stopped: call lyn_stop_scan() first. A call in progress on another thread ends with
 * LYN_ERROR_NONE, LYN_ERROR_INVALID_STATE or LYN_ERROR_INVALID_PARAMETER, without an effect on the next
 * service.
 *
 * @return LYN_ERROR_INVALID_HANDLE when service is null or not the living one.
 */
lyn_error_e lyn_destroy_service(lyn_service_h service);

/**
 * Starts to look for phones. Allowed in LYN_STATE_READY; goes to LYN_STATE_SCANNING.
 *
 * @param cb called by the main loop for every advertisement of a phone that asks for this service ("dummy"
 *           calls it once, before this function returns).
 * @return LYN_ERROR_INVALID_STATE in another state, LYN_ERROR_OPERATION_FAILED when the platform cannot
 *         scan; LYN_ERROR_INVALID_HANDLE for null, LYN_ERROR_INVALID_PARAMETER for a stale handle.
 */
lyn_error_e lyn_start_scan(lyn_service_h service, lyn_device_found_cb cb, void *user_data);

/** As lyn_start_scan(), with each phone as one line of JSON. */
lyn_error_e lyn_start_scan_with_serialization(lyn_service_h service, lyn_device_found_with_serialization_cb cb,
                                              void *user_data);

/**
 * Stops to look for phones. Allowed in every state and reports LYN_STATE_READY, except during a request,
 * which goes on.
 *
 * @return LYN_ERROR_OPERATION_FAILED when the platform cannot stop; LYN_ERROR_INVALID_HANDLE for null,
 *         LYN_ERROR_INVALID_PARAMETER for a stale handle.
 */
lyn_error_e lyn_stop_scan(lyn_service_h service);

/**
 * Asks a phone to start its session. Stops the advertisement and the scan first, then goes to
 * LYN_STATE_REQUESTING. The main loop delivers LYN_STATE_READY and then the result: after the phone's
 * answer, after a failed connection (up to six attempts), or 10 s after the connection without an answer.
 *
 * @param device_id `address` of a found phone.
 * @param cb called once when this function has returned LYN_ERROR_NONE. A call that is refused with
 *           LYN_ERROR_INVALID_STATE replaces the callback of the running request all the same. A "nodlink"
 *           request that Bluetooth or power takes to LYN_STATE_NOT_READY has no result.
 * @return LYN_ERROR_INVALID_PARAMETER for a null device_id or a stale handle, LYN_ERROR_INVALID_HANDLE
 *         for null, LYN_ERROR_INVALID_STATE during a request, LYN_ERROR_OPERATION_FAILED when the
 *         platform refuses to connect.
 */
lyn_error_e lyn_request_initiating(lyn_service_h service, const char *device_id,
                                   lyn_request_initiating_result_cb cb, void *user_data);

/**
 * As lyn_request_initiating(), with members to add to the message for the phone.
 *
 * @param extra_data a JSON object, or ""; its members replace those of the same name. Used by
 *                   "mirroring" only. A text that is no JSON object ends the request with
 *                   LYN_REQUEST_INITIATING_RESULT_GATT_FAIL. Null throws std::logic_error.
 */
lyn_error_e lyn_request_initiating_with_extra_data(lyn_service_h service, const char *device_id,
                                                   const char *extra_data, lyn_request_initiating_result_cb cb,
                                                   void *user_data);

/**
 * Lets the TV advertise itself, by telling the platform's advertising application. Allowed in
 * LYN_STATE_READY and LYN_STATE_SCANNING. "nodlink" and "dummy" accept the call and do nothing.
 *
 * @return LYN_ERROR_INVALID_PARAMETER for an interval outside lyn_adv_interval_e or a stale handle,
 *         LYN_ERROR_INVALID_STATE in another state, LYN_ERROR_OPERATION_FAILED when the setting cannot
 *         be written, LYN_ERROR_INVALID_HANDLE for null.
 */
lyn_error_e lyn_start_advertise(lyn_service_h service, lyn_adv_interval_e interval);

/** Ends what lyn_start_advertise() began; does nothing when nothing was begun. Errors as there. */
lyn_error_e lyn_stop_advertise(lyn_service_h service);

/**
 * Sets the protocol version of the next requests of a "nodlink" service.
 *
 * @param version "2.0" or "3.0". Another text leaves as a C++ exception of type `const char *`, which is
 *                `version` itself; null leaves as std::logic_error.
 * @return LYN_ERROR_NOT_SUPPORTED for another service; LYN_ERROR_INVALID_HANDLE for null,
 *         LYN_ERROR_INVALID_PARAMETER for a stale handle.
 */
lyn_error_e lyn_set_nodlink_version(lyn_service_h service, const char *version);

/**
 * Reads how the last request of a "nodlink" service is mirrored.
 *
 * @param[out] type receives a LYN_NOD_LINK_TYPE_ value; left alone on failure; null receives nothing.
 * @return as lyn_set_nodlink_version().
 */
lyn_error_e lyn_get_nodlink_type(lyn_service_h service, nod_link_type *type);

/**
 * Names a result, for example "Success"; "UnknownErr" when it has no name or the handle is not alive.
 *
 * @return a text that is not the caller's and carries no guarantee beyond the return: copy it before
 *         doing anything else. Never null.
 */
const char *lyn_get_request_initiating_error_string(lyn_service_h service, lyn_request_initiating_result_e result);

#undef LYN_AS_INT

#ifdef __cplusplus
}
#endif

#endif
