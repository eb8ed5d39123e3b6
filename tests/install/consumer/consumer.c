/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A program as a user would write it, against the installed library: asks the first phone that the
 * "dummy" service finds. Ends with 0 when the phone agrees.
 */
#include <glib.h>
#include <lyn_service.h>
#include <stdio.h>

static lyn_service_h service;
static GMainLoop *loop;
static int exit_status = 1;

static void on_result(lyn_request_initiating_result_e result, void *user_data)
{
    (void)user_data;
    printf("%s\n", lyn_get_request_initiating_error_string(service, result));
    if (result == LYN_REQUEST_INITIATING_RESULT_SUCCESS)
        exit_status = 0;
    g_main_loop_quit(loop);
}

static void on_found(const lyn_device_info_t *phone, void *user_data)
{
    g_strlcpy(user_data, phone->address, 18);
}

int main(void)
{
    char address[18] = "";
    if (lyn_create_service(&service, "dummy", NULL, NULL) != LYN_ERROR_NONE)
        return 2;
    loop = g_main_loop_new(NULL, FALSE);
    if (lyn_start_scan(service, on_found, address) != LYN_ERROR_NONE)
        return 3;
    if (lyn_request_initiating(service, address, on_result, NULL) != LYN_ERROR_NONE)
        return 4;
    g_main_loop_run(loop);
    g_main_loop_unref(loop);
    if (lyn_destroy_service(service) != LYN_ERROR_NONE)
        return 5;
    return exit_status;
}
