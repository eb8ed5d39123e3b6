// SPDX-License-Identifier: Apache-2.0
//
// main() of every GoogleTest program. A critical message of GLib is a defect of the code that caused it
// (a source removed twice, a null object) and ends the test.
#include <glib.h>
#include <gmock/gmock.h>

int main(int argc, char** argv)
{
    g_log_set_always_fatal(static_cast<GLogLevelFlags>(G_LOG_FATAL_MASK | G_LOG_LEVEL_CRITICAL));
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
