/* SPDX-License-Identifier: Apache-2.0 */
#include <glib.h>
#include <lyn_service.h>
#include <stdio.h>

static lyn_service_h service;
static GMainLoop *loop;
static int exit_status = 1;

static void on_result(lyn_request_initiating_result_e result, void *user_data)
{
    (void)user_data;
    printf("the phone says: %s\n", lyn_get_request_initiating_error_string(service, result));
    exit_status = (int)result;
    g_main_loop_quit(loop);
}

static void on_found(const lyn_device_info_t *phone, void *user_data)
{
    (void)user_data;
    printf("found %s at %s\n", phone->name ? phone->name : "a phone", phone->address);
    if (lyn_request_initiating(service, phone->address, on_result, NULL) != LYN_ERROR_NONE)
        g_main_loop_quit(loop);
}

int main(void)
{
    if (lyn_create_service(&service, "mirroring", NULL, NULL) != LYN_ERROR_NONE)
        return 1;
    loop = g_main_loop_new(NULL, FALSE);
    if (lyn_start_scan(service, on_found, NULL) == LYN_ERROR_NONE)
        g_main_loop_run(loop);
    g_main_loop_unref(loop);
    lyn_destroy_service(service);
    return exit_status;
}
