/* SPDX-License-Identifier: Apache-2.0 */
/*
 * An application of its own, as somebody would write it who has read nothing but lyn_service.h: it goes through
 * what can be done with a phone and through what can go wrong, and prints what it sees.
 *
 * usage: vm_stages FEATURE ADDRESS-OF-NO-PHONE
 *
 * The phone is to answer "Success" first, then nothing, then "NotTap". SIGUSR1 says that it has the second
 * message.
 */
#include <glib-unix.h>
#include <lyn_service.h>
#include <signal.h>
#include <stdio.h>
#include <string.h>

static GMainLoop *loop;
static lyn_service_h service;
static char phone[32];

static void on_state(lyn_state_e state, void *user_data)
{
    static const char *const names[] = {"READY", "SCANNING", "REQUESTING", "NOT_READY"};
    printf("  state %s for %s\n", names[state], (const char *)user_data);
}

static void on_result(lyn_request_initiating_result_e result, void *user_data)
{
    printf("  result %d %s for %s\n", (int)result, lyn_get_request_initiating_error_string(service, result),
           (const char *)user_data);
    g_main_loop_quit(loop);
}

/* A phone advertises several times a second: the first time does. */
static void on_found(const lyn_device_info_t *found, void *user_data)
{
    if (*phone != '\0')
        return;
    printf("  found %s, %s for %s\n", found->name, found->unique_id, (const char *)user_data);
    snprintf(phone, sizeof phone, "%s", found->address);
    g_main_loop_quit(loop);
}

static gboolean on_signal(gpointer user_data)
{
    (void)user_data;
    g_main_loop_quit(loop);
    return G_SOURCE_REMOVE;
}

static void show(const char *what, lyn_error_e returned)
{
    printf("%s: %d\n", what, (int)returned);
    fflush(stdout);
}

static void ask(const char *address, const char *reason)
{
    show(reason, lyn_request_initiating(service, address, on_result, (void *)reason));
}

static void wrong_arguments(const char *feature)
{
    lyn_service_h second = NULL;
    int nobody = 0;
    show("create a second one", lyn_create_service(&second, feature, on_state, "nobody"));
    show("scan without a service", lyn_start_scan(NULL, on_found, "nobody"));
    show("scan with another's handle", lyn_start_scan(&nobody, on_found, "nobody"));
    ask(NULL, "ask nobody");
    show("advertise too often", lyn_start_advertise(service, (lyn_adv_interval_e)99));
    show("a function of NodLink", lyn_set_nodlink_version(service, "3.0"));
    show("stop what does not run", lyn_stop_scan(service));
}

static void find_and_ask(void)
{
    show("scan", lyn_start_scan(service, on_found, "the scan"));
    show("scan once more", lyn_start_scan(service, on_found, "the scan"));
    g_main_loop_run(loop);
    ask(phone, "ask");
    show("scan while asking", lyn_start_scan(service, on_found, "nobody"));
    show("stop the scan while asking", lyn_stop_scan(service));
    /* The last callback is called, also that of a call that was refused. */
    ask(phone, "ask while asking");
    g_main_loop_run(loop);
}

static void destroy_in_the_middle(const char *feature)
{
    ask(phone, "ask a silent phone");
    g_main_loop_run(loop);
    show("destroy while asking", lyn_destroy_service(service));
    show("destroy once more", lyn_destroy_service(service));
    show("scan with what was destroyed", lyn_start_scan(service, on_found, "nobody"));
    service = NULL;
    show("create again", lyn_create_service(&service, feature, on_state, "the second"));
    ask(phone, "ask at once");
    g_main_loop_run(loop);
}

int main(int argc, char **argv)
{
    if (argc != 3)
        return 2;
    loop = g_main_loop_new(NULL, FALSE);
    g_unix_signal_add(SIGUSR1, on_signal, NULL);
    show("create what there is not", lyn_create_service(&service, "teleport", on_state, "nobody"));
    show("create", lyn_create_service(&service, argv[1], on_state, "the first"));
    wrong_arguments(argv[1]);
    find_and_ask();
    destroy_in_the_middle(argv[1]);
    ask(argv[2], "ask a phone that is not there");
    g_main_loop_run(loop);
    show("destroy", lyn_destroy_service(service));
    g_main_loop_unref(loop);
    return 0;
}
