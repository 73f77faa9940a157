/* The public headers compile as C, and the shared library resolves the platform and
   browser-core functions from the host program at load time. */

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "tesmo_hbbtv/bindings.h"
#include "tesmo_hbbtv/browser_core.h"
#include "tesmo_hbbtv/platform.h"
#include "tesmo_hbbtv/tesmo_hbbtv.h"

#include "fake_world_c.h"

static int failures;
static int checks;

static void check(int condition, const char* what)
{
    ++checks;
    if (!condition) {
        ++failures;
        printf("FAILED: %s\n", what);
    }
}

int main(void)
{
    HBBTV_EventData* data;

    fake_world_reset();
    tesmo_hbbtv_init(NULL);
    check(fake_world_call_count("hbbtv_ait_start") == 1, "init starts AIT acquisition in the host");
    check(fake_world_call_count("dsmcc_start") == 1, "init starts the carousel client in the host");

    data = (HBBTV_EventData*)calloc(1, sizeof *data);
    data->terminal_identity.version = 2;
    data->terminal_identity.strings[0] = strdup("C host");
    tesmo_hbbtv_send_event(HBBTV_EVENT_TERMINAL_IDENTITY, data);
    tesmo_hbbtv_tick();
    check(fake_world_call_count("tm_set_uastring_extension") == 1, "tick runs the event through the host");

    /* Any int may arrive as an event type from C; unknown ones are dropped and freed. */
    tesmo_hbbtv_send_event((HBBTV_EventType)200, (HBBTV_EventData*)calloc(1, sizeof *data));
    tesmo_hbbtv_send_event((HBBTV_EventType)-1, NULL);
    tesmo_hbbtv_tick();
    tesmo_hbbtv_tick();
    check(fake_world_call_count("tm_set_uastring_extension") == 1, "unknown event types do nothing");

    check(tesmo_hbbtv_add_log_output(4, "/nonexistent-dir/log") == false, "an unopenable log file is refused");

    tesmo_hbbtv_shutdown();
    check(fake_world_call_count("dsmcc_stop") == 1, "shutdown stops the carousel client");

    printf("%d passed, %d failed\n", checks - failures, failures);
    return failures ? 1 : 0;
}
