/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A C program that uses every function of the public header on the "dummy" service, whose one phone
 * always agrees. Prints what went wrong and ends with 1.
 */
#include <glib.h>
#include <lyn_service.h>
#include <stdio.h>
#include <string.h>

static GMainLoop *loop;
static int failures;
static int states;
static int phones;
static int texts;
static int results;
static lyn_state_e last_state;

#define CHECK(condition)                                                            \
    do {                                                                            \
        if (!(condition)) {                                                         \
            fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition); \
            ++failures;                                                             \
        }                                                                           \
    } while (0)

static void on_state(lyn_state_e state, void *user_data)
{
    CHECK(user_data == &states);
    last_state = state;
    ++states;
}

static void on_phone(const lyn_device_info_t *info, void *user_data)
{
    CHECK(user_data == &phones);
    CHECK(strcmp(info->name, "myDevice") == 0);
    CHECK(strcmp(info->address, "11:22:33:44:55:66") == 0);
    ++phones;
}

static void on_text(const char *json, void *user_data)
{
    CHECK(user_data == &texts);
    CHECK(strstr(json, "\"Name\":\"myDevice\"") != NULL);
    CHECK(strchr(json, '\n') == NULL);
    ++texts;
}

static void on_result(lyn_request_initiating_result_e result, void *user_data)
{
    CHECK(user_data == &results);
    CHECK(result == LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    CHECK(last_state == LYN_STATE_READY);
    ++results;
    g_main_loop_quit(loop);
}

static gboolean on_time_out(gpointer user_data)
{
    (void)user_data;
    fprintf(stderr, "no result came\n");
    ++failures;
    g_main_loop_quit(loop);
    return G_SOURCE_REMOVE;
}

static void wait_for_result(void)
{
    const guint time_out = g_timeout_add_seconds(60, on_time_out, NULL);
    const int before = results;
    g_main_loop_run(loop);
    if (results > before)
        g_source_remove(time_out);
}

static void scan(lyn_service_h service)
{
    CHECK(lyn_start_scan(service, on_phone, &phones) == LYN_ERROR_NONE);
    CHECK(phones == 1);
    CHECK(last_state == LYN_STATE_SCANNING);
    CHECK(lyn_start_scan(service, on_phone, &phones) == LYN_ERROR_INVALID_STATE);
    CHECK(lyn_stop_scan(service) == LYN_ERROR_NONE);
    CHECK(last_state == LYN_STATE_READY);

    CHECK(lyn_start_scan_with_serialization(service, on_text, &texts) == LYN_ERROR_NONE);
    CHECK(texts == 1);
    CHECK(lyn_stop_scan(service) == LYN_ERROR_NONE);
}

static void request(lyn_service_h service)
{
    CHECK(lyn_request_initiating(service, "11:22:33:44:55:66", on_result, &results) == LYN_ERROR_NONE);
    CHECK(last_state == LYN_STATE_REQUESTING);
    wait_for_result();
    CHECK(results == 1);

    CHECK(lyn_request_initiating_with_extra_data(service, "11:22:33:44:55:66", "{\"k\":1}", on_result, &results) ==
          LYN_ERROR_NONE);
    wait_for_result();
    CHECK(results == 2);
    CHECK(lyn_request_initiating(service, NULL, on_result, &results) == LYN_ERROR_INVALID_PARAMETER);
}

static void advertise(lyn_service_h service)
{
    CHECK(lyn_start_advertise(service, LYN_ADV_INTERVAL_100) == LYN_ERROR_NONE);
    CHECK(lyn_start_advertise(service, (lyn_adv_interval_e)5) == LYN_ERROR_INVALID_PARAMETER);
    CHECK(lyn_stop_advertise(service) == LYN_ERROR_NONE);
}

static void nodlink_only(lyn_service_h service)
{
    nod_link_type type = 77;
    CHECK(lyn_set_nodlink_version(service, "3.0") == LYN_ERROR_NOT_SUPPORTED);
    CHECK(lyn_get_nodlink_type(service, &type) == LYN_ERROR_NOT_SUPPORTED);
    CHECK(type == 77);
}

static void name_results(lyn_service_h service)
{
    char text[64];
    snprintf(text, sizeof text, "%s",
             lyn_get_request_initiating_error_string(service, LYN_REQUEST_INITIATING_RESULT_SUCCESS));
    CHECK(strcmp(text, "Success") == 0);
}

int main(void)
{
    void *service = NULL;
    loop = g_main_loop_new(NULL, FALSE);

    CHECK(lyn_create_service(&service, "dummy", on_state, &states) == LYN_ERROR_NONE);
    CHECK(service != NULL);
    CHECK(states == 0);
    scan(service);
    request(service);
    advertise(service);
    nodlink_only(service);
    name_results(service);
    CHECK(lyn_destroy_service(service) == LYN_ERROR_NONE);
    CHECK(lyn_destroy_service(service) == LYN_ERROR_INVALID_HANDLE);

    g_main_loop_unref(loop);
    return failures == 0 ? 0 : 1;
}
