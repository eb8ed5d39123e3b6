/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * Wi-Fi and Wi-Fi Direct calls that a platform provides to lyn_service. The conventions of
 * bluetooth.h hold.
 */
#ifndef LYN_PLATFORM_WIFI_H
#define LYN_PLATFORM_WIFI_H

#ifdef __cplusplus
extern "C" {
#endif

/** The connected access point; valid until wifi_deinitialize(). */
typedef void *wifi_ap_h;

/** Opens the Wi-Fi functions. @return 0, or -38 when they are open already. */
int wifi_initialize(void);

/** Closes the Wi-Fi functions. */
int wifi_deinitialize(void);

/** Finds the connected access point. @return 0, or a failure when there is none. */
int wifi_get_connected_ap(wifi_ap_h *ap);

/** Reads the BSSID of an access point. @param[out] bssid malloc'ed. */
int wifi_ap_get_bssid(wifi_ap_h ap, char **bssid);

/** Reads the frequency of an access point. @param[out] frequency MHz. */
int wifi_ap_get_frequency(wifi_ap_h ap, int *frequency);

/** Opens the Wi-Fi Direct functions. */
int wifi_direct_initialize(void);

/** Closes the Wi-Fi Direct functions. */
int wifi_direct_deinitialize(void);

/** Reads the Wi-Fi Direct (P2P) device address. @param[out] mac malloc'ed. */
int wifi_direct_get_mac_address(char **mac);

#ifdef __cplusplus
}
#endif

#endif
